#!/usr/bin/env bash
# Loads the completion scripts into a bash without start-up files, types
# command lines at them the way readline hands them over, and compares the
# words offered with the expected ones.
#   completion/completion_test.sh
set -o pipefail  # no -u: completion functions run in the user's interactive shell, where it is off
here=$(cd "$(dirname "$0")" && pwd)
helpers=/usr/share/bash-completion/bash_completion
if [ ! -r "$helpers" ]; then
  echo "completion test: $helpers is missing (scripts/setup.sh installs bash-completion)" >&2
  exit 1
fi
source "$helpers"
source "$here/corvelcfg"
source "$here/corvelsim"

# A fake machine: two usblp nodes, and on the bus a printer (bus 1, device
# 4) beside a storage device (class 08) that is no printer.
fake=$(mktemp -d)
trap 'rm -rf "$fake"' EXIT
mkdir -p "$fake/dev" "$fake/sys/1-1" "$fake/sys/1-1:1.0" "$fake/sys/2-3" "$fake/sys/2-3:1.0" "$fake/work"
touch "$fake/dev/lp0" "$fake/dev/lp1"
echo 1 >"$fake/sys/1-1/busnum"; echo 4 >"$fake/sys/1-1/devnum"; echo 07 >"$fake/sys/1-1:1.0/bInterfaceClass"
echo 2 >"$fake/sys/2-3/busnum"; echo 17 >"$fake/sys/2-3/devnum"; echo 08 >"$fake/sys/2-3:1.0/bInterfaceClass"
touch "$fake/work/office.conf" "$fake/work/ca.pem"
_corvelcfg_lp_dir=$fake/dev
_corvelcfg_usb_devices=$fake/sys
cd "$fake/work" || exit 1

failures=0
cases=0

# check LINE EXPECTED: completes LINE (cursor at its end) and compares the
# sorted words offered with EXPECTED. Readline makes "=" and ":" words of
# their own, and a trailing blank starts an empty word.
check() {
  local line=$1 expected=$2 spaced actual
  spaced=${line//=/ = }
  spaced=${spaced//:/ : }
  read -ra COMP_WORDS <<<"$spaced"
  [[ $line == *' ' ]] && COMP_WORDS+=("")
  COMP_CWORD=$((${#COMP_WORDS[@]} - 1))
  COMP_LINE=$line
  COMP_POINT=${#line}
  COMPREPLY=()
  local program=${COMP_WORDS[0]}
  "_$program" "$program" "${COMP_WORDS[COMP_CWORD]}" "${COMP_WORDS[COMP_CWORD - 1]}" 2>/dev/null
  actual=$(printf '%s\n' "${COMPREPLY[@]}" | LC_ALL=C sort | paste -sd ' ')
  cases=$((cases + 1))
  if [[ $actual != "$expected" ]]; then
    printf 'FAIL "%s"\n  expected: %s\n  offered:  %s\n' "$line" "$expected" "$actual" >&2
    failures=$((failures + 1))
  fi
}

# corvelcfg: the modes first, then what each mode reads.
check "corvelcfg " "-802s -a -c -ca -cer -csr -h -icer -ip -npa -r -rcerdefs -s -t"
check "corvelcfg -i" "-icer -ip"
check "corvelcfg -s " "$fake/dev/lp0 $fake/dev/lp1 001:004"
check "corvelcfg -ip 001:" "004"
check "corvelcfg -h " ""
check "corvelcfg --ssid=Home " ""
check "corvelcfg -c -f" "-file"
check "corvelcfg -c --se" "--security="
check "corvelcfg -ca --ssid=Lab --WEP-k" "--WEP-key1= --WEP-key2= --WEP-key3= --WEP-key4="
check "corvelcfg -c --security=WPA" "WPA WPA-ENT WPA-PER WPA/WPA2 WPA2"
check "corvelcfg -ca --encryption=WEP" "WEP WEP-DYNAMIC WEP-STATIC"
check "corvelcfg -c --mode=" "Ad-Hoc Managed"
check "corvelcfg -ca --802-auth-ext=EAP-T" "EAP-TLS EAP-TTLS"
check "corvelcfg -ca --802-auth-inner=MS" "MSCHAP MSCHAPv2"
check "corvelcfg -icer --802-CA-cer-file=c" "ca.pem"
check "corvelcfg -c -file o" "office.conf"
check "corvelcfg -c -file office.conf /dev/usb/lp1 " ""
check "corvelcfg -c -file office.conf " "$fake/dev/lp0 $fake/dev/lp1 001:004"
check "corvelcfg -npa " "-file"
check "corvelcfg -npa --s" ""

# corvelsim: its options, their values, the faults, and the command after --.
check "corvelsim --usb-" "--usb-layout --usb-packet --usb-trace"
check "corvelsim --v" "--vendor-id --version"
check "corvelsim --pro" "--product --product-id"
check "corvelsim --fault d" "drip="
check "corvelsim --usb-layout no-" "no-bulk-in no-printer"
check "corvelsim --fault cert-" "cert-e0 cert-e0= cert-no-envelope cert-silent cert-status="
check "corvelsim --fault=bit7=i" "instead"
check "corvelsim --fault cert-status=gen" "generateNewCert:"
check "corvelsim --state p" ""
check "corvelsim --log o" "office.conf"
check "corvelsim --speed 20 -- corvelcfg -rc" "-rcerdefs"
check "corvelsim -- corvelcfg -c --security=802" "802.1x"

if ((failures > 0)); then
  echo "completion test: $failures of $cases cases failed" >&2
  exit 1
fi
echo "completion test: $cases cases passed"
