#!/usr/bin/env bash
# Regenerates the seed corpus of fuzz_hostile_printer from real exchanges: runs
# the real corvelcfg against corvelsim for runs of the fuzzer's table and takes
# the printer's answers from corvelsim's request log, whose "answer" field holds
# the exact bytes the printer sent back for each request. Each seed is written
# in the fuzzer's script form: the run's index in the table, then every answer
# in pieces of at most 128 bytes (a control byte, the piece's length - 1,
# before each) and 0xC0 after it (the answer ends, the printer is quiet).
#   scripts/hostile-seeds.sh [build-dir]     default build/dev, with corvelcfg and corvelsim built
set -euo pipefail
cd "$(dirname "$0")/.."

build=${1:-build/dev}
cfg=$PWD/$build/app/corvelcfg
sim=$PWD/$build/sim/corvelsim
out=$PWD/fuzz/corpus/fuzz_hostile_printer
for program in "$cfg" "$sim"; do
  [ -x "$program" ] || { echo "build $program first" >&2; exit 1; }
done

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

# The same kinds of files as the fuzzer makes for its runs.
openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes -keyout ca.key -out ca.pem \
  -subj "/O=Acme/CN=Fuzz CA" -days 3650 2>/dev/null
printf '# office\n--ssid="Office Net"\n--security="WPA2"\n--passwd="horse"\n' >basic.conf
printf -- '--security=802.1x\n--ssid=Lab\n--encryption=WEP-STATIC\n--WEP-key1=0123456789\n--802-auth-ext="PEAP|EAP-TLS"\n--802-auth-inner=MSCHAPv2\n--802-user=u\n--802-pwd=p\n' >dot1x.conf
printf -- '--802-CA-cer-file=ca.pem\n' >icer.conf
printf 'A5 00 06 50 E0 D8 00 28 08\n' >read-ssid.hex

# One answer (hex) in the script form.
encode() {
  local hex=$1 piece
  while [ -n "$hex" ]; do
    piece=${hex:0:256}
    hex=${hex:256}
    printf "\\x$(printf %02x $((${#piece} / 2 - 1)))"
    printf "$(sed 's/../\\x&/g' <<<"$piece")"
  done
  printf '\xc0'
}

# seed NAME INDEX [CORVELSIM_OPTION...] -- CORVELCFG_ARGUMENT...
# The printer keeps its state (state.txt) from one seed to the next.
seed() {
  local name=$1 index=$2 options=()
  shift 2
  while [ "$1" != -- ]; do options+=("$1"); shift; done
  shift
  rm -f log.jsonl
  "$sim" --speed 20 --state state.txt --log log.jsonl "${options[@]}" -- "$cfg" "$@" </dev/null >/dev/null 2>&1 || true
  {
    printf "\\x$(printf %02x "$index")"
    { grep -o '"answer":"[0-9A-F]*"' log.jsonl 2>/dev/null || true; } | cut -d'"' -f4 | while read -r hex; do encode "$hex"; done
  } >"$work/seed"
  mv "$work/seed" "$out/$name"
}

rm -rf "$out"
mkdir -p "$out"

# Indexes as in makeRuns() of fuzz/fuzz_hostile_printer.cpp.
seed h-usage 23 -- -h
seed s-factory 10 -- -s
seed ip-factory 11 -- -ip
seed t-factory 8 -- -t
seed a-factory 9 -- -a
seed r-factory 12 -- -r
seed 802s-factory 13 -- -802s
seed cer-factory 14 -- -cer
seed npa-file 15 -- -npa -file read-ssid.hex /dev/usb/lp0
seed npa-empty 16 -- -npa
seed c-wpa2 0 -- -c --ssid=net --security=WPA2 --passwd=secret
seed c-file 1 -- -c -file basic.conf
seed s-set 10 -- -s
seed ip-joined 11 --join-after 0 -- -ip
seed t-joined 8 --join-after 0 -- -t
seed a-ready 9 --ready-after 0 -- -a
seed ca-open 2 -- -ca --security=OPEN --encryption=WEP --WEP-key1=0123456789 --ssid=Old
seed ca-shared 3 -- -ca --security=SHARED --encryption=WEP --WEP-key2=abcde --WEP-transmit=2
seed ca-wpa-per 4 -- -ca --security=WPA-PER --encryption=AES --ssid=Lab --psk=passphrase
seed ca-wpa-ent 5 -- -ca --security=WPA-ENT --encryption=TKIP --ssid=Lab --psk=passphrase
seed full 22 --join-after 0 -- --ssid=Home
# The certificate walk of the README: defaults, a signing request, the CA and
# the signed certificate installed, 802.1x with EAP-TLS and its status.
seed rcerdefs 17 -- -rcerdefs
seed csr 18 -- -csr --cer-org=Acme --cer-country=DE --cer-common=printer1 --cer-path=printer.csr
openssl x509 -req -in printer.csr -CA ca.pem -CAkey ca.key -CAcreateserial -days 365 -out printer.pem 2>/dev/null
seed icer-ca 19 -- -icer --802-CA-cer-file=ca.pem
seed icer-signed 20 -- -icer --802-signed-cer-file=printer.pem
seed icer-ca-again 21 -- -icer -file icer.conf
seed ca-8021x 6 -- -ca --security=802.1x --ssid=AcmeCorp --encryption=AES --802-auth-ext=EAP-TLS --802-user=printer1
seed ca-8021x-file 7 -- -ca -file dot1x.conf
seed 802s-authenticated 13 --join-after 0 -- -802s
seed cer-installed 14 -- -cer
# Misbehaving printers: refused envelopes, refused settings, certificate errors.
seed s-refuse-envelope 10 --fault refuse-envelope -- -s
seed c-reject 0 --fault reject-settings -- -c --ssid=net --security=WPA2 --passwd=secret
seed ip-refuse-envelope 11 --fault refuse-envelope --join-after 0 -- -ip
seed rcerdefs-failed 17 --fault 'cert-status=readCertDefaults:6:failed' -- -rcerdefs
seed csr-no-envelope 18 --fault cert-no-envelope -- -csr --cer-common=p --cer-path=printer2.csr
seed icer-e0 19 --fault cert-e0 -- -icer --802-CA-cer-file=ca.pem

echo "$(ls "$out" | wc -l) seeds in $out"
