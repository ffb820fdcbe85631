#!/usr/bin/env bash
# Wall time of corvelctl against corvelcfg for the same facts and settings,
# at real speed against the simulated printer (no --speed: corvelcfg's fixed
# waits are real seconds). Prints each time and the ratio. A benchmark, not a
# test: it asserts nothing and takes about a minute, most of it corvelcfg's waits.
#   bench/corvelctl-bench.sh [BUILD_DIR]    (default build/release, built if needed)
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build/release}
if [ ! -x "$build/ctl/corvelctl" ]; then
  cmake -S . -B "$build" -DCMAKE_BUILD_TYPE=Release -DBUILD_TESTING=OFF >/dev/null
  cmake --build "$build" -j"$(nproc)" --target corvelcfg corvelctl corvelsim >/dev/null
fi
sim=$(realpath "$build/sim/corvelsim")
cfg=$(realpath "$build/app/corvelcfg")
ctl=$(realpath "$build/ctl/corvelctl")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
(umask 077 && printf 'bench-passphrase\n' >"$work/passphrase")

# One simulated printer for the whole run, its state kept between the
# commands; each command is timed inside the simulator's child. The settings
# go first, so the printer has joined when the status is read.
cat >"$work/run.sh" <<SCRIPT
set -e
now() { date +%s%N; }
ms() { echo \$(( (\$(now) - \$1) / 1000000 )); }
t=\$(now)
"$ctl" wifi --ssid BenchNet --security wpa2-psk --passphrase-file "$work/passphrase" >/dev/null
echo "ctl_wifi \$(ms \$t)"
t=\$(now); "$cfg" -c --ssid=BenchNet --security=WPA2 --passwd=bench-passphrase >/dev/null 2>&1; echo "cfg_wifi \$(ms \$t)"
# The printer has joined: every read below is answered at once.
t=\$(now); "$ctl" status >/dev/null; echo "ctl_status \$(ms \$t)"
t=\$(now)
for mode in -s -t -ip -802s -cer; do "$cfg" \$mode >/dev/null 2>&1 || true; done
echo "cfg_status \$(ms \$t)"
SCRIPT
"$sim" --state "$work/state" -- bash "$work/run.sh" >"$work/times"

value() { sed -n "s/^$1 //p" "$work/times"; }
row() {  # name, corvelctl ms, corvelcfg ms, target ms
  awk -v n="$1" -v a="$2" -v b="$3" -v t="$4" 'BEGIN {
    printf "%-8s corvelctl %7.3f s   corvelcfg %7.3f s   ratio %6.1fx   target < %.1f s: %s\n",
      n, a / 1000, b / 1000, (a > 0 ? b / a : 0), t / 1000, (a < t ? "met" : "NOT met") }'
}
echo "corvelctl status (one run) against corvelcfg -s, -t, -ip, -802s, -cer (five runs);"
echo "corvelctl wifi (wpa2-psk) against corvelcfg -c with the same settings:"
row status "$(value ctl_status)" "$(value cfg_status)" 500
row wifi "$(value ctl_wifi)" "$(value cfg_wifi)" 300
