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
source "$here/corvelctl"

# A fake machine: two usblp nodes, and on the bus a printer (bus 1, device
# 4) beside a storage device (class 08) that is no printer.
fake=$(mktemp -d)
trap 'rm -rf "$fake"' EXIT
mkdir -p "$fake/dev" "$fake/sys/1-1" "$fake/sys/1-1:1.0" "$fake/sys/2-3" "$fake/sys/2-3:1.0" "$fake/work"
touch "$fake/dev/lp0" "$fake/dev/lp1"
echo 1 >"$fake/sys/1-1/busnum"; echo 4 >"$fake/sys/1-1/devnum"; echo 07 >"$fake/sys/1-1:1.0/bInterfaceClass"
echo 2 >"$fake/sys/2-3/busnum"; echo 17 >"$fake/sys/2-3/devnum"; echo 08 >"$fake/sys/2-3:1.0/bInterfaceClass"
touch "$fake/work/office.conf" "$fake/work/ca.pem"
# corvelctl's printers come from "corvelctl list --json": a stand-in on the
# PATH prints a fixed list, so no printer is needed. The second
# printer has no node, the third no bus:device; the serials with a blank or
# an escape, and the "serial" hidden in a product's text, are not offered.
mkdir -p "$fake/bin" "$fake/failing"
tr -d '\n' >"$fake/list.json" <<'JSON'
{"printers": [{"node": "/dev/usb/lp0", "bus_device": "001:004", "vendor_id": "04b8",
 "product_id": "0005", "manufacturer": "Acme", "product": "Laser 5", "serial": "X1"},
 {"node": null, "bus_device": "1:7", "vendor_id": "04b8", "product_id": "0007",
 "manufacturer": null, "product": "x\", \"serial\": \"evil", "serial": "Q 7"},
 {"node": "/dev/usb/lp1", "bus_device": null, "vendor_id": "1234", "product_id": "abcd",
 "manufacturer": null, "product": null, "serial": "a\"b"}]}
JSON
echo >>"$fake/list.json"
printf '#!/bin/sh\n[ "$*" = "list --json" ] || exit 64\ncat "%s"\n' "$fake/list.json" >"$fake/bin/corvelctl"
# One that fails after printing a list: its exit status is what counts.
printf '#!/bin/sh\ncat "%s"\nexit 69\n' "$fake/list.json" >"$fake/failing/corvelctl"
chmod +x "$fake/bin/corvelctl" "$fake/failing/corvelctl"
original_path=$PATH
PATH=$fake/bin:$PATH
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
check "corvelsim --usb 1:4 --n" "--no-lp"
check "corvelsim --v" "--vendor-id --version"
check "corvelsim --pro" "--product --product-id"
check "corvelsim --printer" "--printer-fault --printers"
check "corvelsim --fault d" "drip="
check "corvelsim --usb-layout no-" "no-bulk-in no-printer"
check "corvelsim --fault cert-" "cert-e0 cert-e0= cert-no-envelope cert-silent cert-status="
check "corvelsim --fault=bit7=i" "instead"
check "corvelsim --fault cert-status=gen" "generateNewCert:"
check "corvelsim --state p" ""
check "corvelsim --log o" "office.conf"
check "corvelsim --speed 20 -- corvelcfg -rc" "-rcerdefs"
check "corvelsim -- corvelcfg -c --security=802" "802.1x"

# corvelctl: commands and cert subcommands; option values skipped when the
# command is looked for; global options anywhere, a command's own after it.
check "corvelctl " "cert list provision reset status wifi"
check "corvelctl --json -v --timeout 2 --printer 1:4 s" "status"
check "corvelctl --printer=lp0 r" "reset"
check "corvelctl cert " "defaults install install-ca request"
check "corvelctl -j cert install" "install install-ca"
check "corvelctl cert install-ca c" "ca.pem"
check "corvelctl cert install ca.pem " ""
check "corvelctl status " ""
check "corvelctl --v" "--verbose --version"
check "corvelctl status --p" "--printer"
check "corvelctl list --p" ""
check "corvelctl status --a" "--all"
check "corvelctl list --a" ""
check "corvelctl --all status --" "--help --json --timeout --verbose --version"
check "corvelctl --printer lp0 status --" "--help --json --printer --timeout --verbose --version"
check "corvelctl cert request --a" "--altname"
check "corvelctl cert install-ca --a" "--all"
check "corvelctl cert install --a" ""
check "corvelctl cert request --o" "--org --out"
check "corvelctl cert request --force --out o" "office.conf"
check "corvelctl -v wifi --ssid Lab --w" "--wait --wait= --wep-tx-key"
check "corvelctl wifi --passphrase-" "--passphrase-file --passphrase-stdin"
check "corvelctl wifi --passphrase-file=o" "office.conf"
check "corvelctl wifi --wait=" ""
check "corvelctl provision --set" "--settings --settings-dir"
check "corvelctl provision --settings o" "office.conf"
check "corvelctl --printer serial:X1 provision --settings-dir=o" ""
# The values of wifi's options.
check "corvelctl wifi --security wpa" "wpa-wpa2-psk wpa2-psk"
check "corvelctl wifi --ssid Lab --security=8" "802.1x"
check "corvelctl wifi --security wpa2-psk --encryption " "aes tkip"
check "corvelctl wifi --security=802.1x --encryption=" "aes tkip wep-dynamic"
check "corvelctl wifi --security wep-open --encryption " ""
check "corvelctl wifi --mode " "ad-hoc managed"
check "corvelctl wifi --channel 1" "1 10 11"
check "corvelctl wifi --inner ms" "mschap mschapv2"
check "corvelctl wifi --eap " "leap md5 mschapv2 peap tls ttls"
check "corvelctl wifi --eap peap,t" "peap,tls peap,ttls"
check "corvelctl wifi --eap=tls,peap,m" "tls,peap,md5 tls,peap,mschapv2"
# --printer: from "corvelctl list --json"; nothing when it fails or is missing.
check "corvelctl --printer " "/dev/usb/lp0 /dev/usb/lp1 001:004 1:7 serial:X1"
check "corvelctl status --printer=001:" "004"
check "corvelctl --printer serial:" "X1"
PATH=$fake/failing:$original_path
check "corvelctl --printer " ""
PATH=$original_path
check "corvelctl --printer " ""

if ((failures > 0)); then
  echo "completion test: $failures of $cases cases failed" >&2
  exit 1
fi
echo "completion test: $cases cases passed"
