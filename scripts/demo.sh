#!/usr/bin/env bash
# Builds corvelctl, corvelcfg and the simulated printer, then configures the
# simulated printer the way a script would configure a real one: first with
# corvelctl (the README's walk), then with corvelcfg. The utility's fixed
# waits run 20 times faster here (corvelsim --speed 20); the trace each run
# writes on standard error is kept in build/demo/.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh

# Optimized and hardened as the Debian packages are (cmake/CorvelHardening.cmake).
cmake -S . -B build/release -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCORVEL_HARDEN=ON -DCORVEL_WERROR=ON >/dev/null
cmake --build build/release -j"$(nproc)" --target corvelctl corvelcfg corvelsim
# Only failures are printed. Control-flow protection is compiled in, but no
# program linked on Debian 12 carries its mark (scripts/package-test.sh says why).
hardening-check --quiet --nocfprotection build/release/{ctl/corvelctl,app/corvelcfg,sim/corvelsim}

sim=build/release/sim/corvelsim
cfg=build/release/app/corvelcfg
demo=build/demo
mkdir -p "$demo"
rm -f "$demo/printer.state" "$demo/requests.jsonl"
printer=("$sim" --speed 20 --state "$demo/printer.state" --log "$demo/requests.jsonl" --join-after 2)

step() { printf '\n== %s\n$ %s\n' "$1" "$2"; }

step "corvelctl: the README's walk, run as written" "scripts/readme-walk.sh README.md \"corvelctl, step by step\" | bash"
rm -rf "$demo/ctl-walk"
mkdir -p "$demo/ctl-walk"
scripts/readme-walk.sh README.md "corvelctl, step by step" >"$demo/ctl-walk/walk.sh"
(cd "$demo/ctl-walk" &&
  PATH="$PWD/../../release/ctl:$PWD/../../release/sim:$PATH" bash walk.sh 2>walk.log | grep -v '^#')

step "Many printers, many hosts: four printers at once, an Ansible playbook, the hot-plug settings files" \
  "scripts/readme-walk.sh README.md \"Many printers, many hosts, step by step\" | bash"
rm -rf "$demo/fleet-walk"
mkdir -p "$demo/fleet-walk"
scripts/readme-walk.sh README.md "Many printers, many hosts, step by step" >"$demo/fleet-walk/walk.sh"
(cd "$demo/fleet-walk" &&
  PATH="$PWD/../../release/ctl:$PWD/../../release/sim:$PATH" ANSIBLE_COLLECTIONS_PATH="$PWD/../../../ansible" \
    bash walk.sh 2>walk.log | grep -v '^#')

step "A raw NPA read of the SSID field; the answer is dumped on standard error" \
  "corvelcfg -npa -file examples/read-ssid.hex"
"${printer[@]}" -- "$cfg" -npa -file examples/read-ssid.hex 2>&1 | grep -v '^D \[CVL\] Destroying'

step "Send the basic settings (exit status 0: accepted)" \
  "corvelcfg -c --ssid=\"Demo Net\" --security=WPA2 --passwd=demo-passphrase"
status=0
"${printer[@]}" -- "$cfg" -c --ssid="Demo Net" --security=WPA2 --passwd=demo-passphrase 2>"$demo/configure.log" ||
  status=$?
printf '\n(exit status %d; trace in %s)\n' "$status" "$demo/configure.log"

step "Read the SSID back in a second run: the printer kept it" "corvelcfg -s"
"${printer[@]}" -- "$cfg" -s 2>"$demo/ssid.log"

step "The full configuration: settings, wait for the join, report the address" "corvelcfg /dev/usb/lp0"
start=$(date +%s%N)
"${printer[@]}" -- "$cfg" /dev/usb/lp0 2>"$demo/full.log"
ms=$((($(date +%s%N) - start) / 1000000))
printf '(%d.%d s; trace in %s)\n' $((ms / 1000)) $((ms % 1000 / 100)) "$demo/full.log"

step "802.1x with certificates: the README's walk, run as written" "scripts/readme-walk.sh | bash"
rm -rf "$demo/walk"
mkdir -p "$demo/walk"
scripts/readme-walk.sh >"$demo/walk/walk.sh"
(cd "$demo/walk" && PATH="$PWD/../../release/app:$PWD/../../release/sim:$PATH" bash walk.sh 2>walk.log | grep -v '^#')

printf '\nThe simulated printer logged %d requests in %s; its state is in %s.\n' \
  "$(wc -l <"$demo/requests.jsonl")" "$demo/requests.jsonl" "$demo/printer.state"
echo "Against a real printer, run the same commands without corvelsim, e.g.: $cfg -s /dev/usb/lp0"
