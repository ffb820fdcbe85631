#!/usr/bin/env bash
# Wall time of corvelctl --all on 1, 4 and 8 simulated printers at real speed:
# `status` and `wifi` (wpa2-psk), with answers at once and with every answer
# a second late (--fault late=1000). The printers run at once, so eight should
# take at most 1.5 times as long as one. A benchmark, not a test: it prints
# the times and the ratios and asserts nothing.
#   bench/corvelctl-several-bench.sh [BUILD_DIR] [REPEATS]
#     BUILD_DIR default build/release (built if needed); REPEATS default 5,
#     the median of which is shown for the answers at once (once when late).
# corvelsim --printers N (independent printers) is used when corvelsim has it,
# else --lp 0 ... --lp N-1 (separate printers in sysfs sharing one state).
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build/release}
repeats=${2:-5}
if [ ! -x "$build/ctl/corvelctl" ] || [ ! -x "$build/sim/corvelsim" ]; then
  cmake -S . -B "$build" -DCMAKE_BUILD_TYPE=Release -DBUILD_TESTING=OFF >/dev/null
  cmake --build "$build" -j"$(nproc)" --target corvelctl corvelsim >/dev/null
fi
sim=$(realpath "$build/sim/corvelsim")
ctl=$(realpath "$build/ctl/corvelctl")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
(umask 077 && printf 'bench-passphrase\n' >"$work/passphrase")

if [[ "$("$sim" --help)" == *--printers* ]]; then
  kind="--printers N (independent printers)"
  printers() { echo "--printers $1"; }
else
  kind="--lp 0 ... --lp N-1 (printers sharing one state)"
  printers() {
    local i
    for ((i = 0; i < $1; i++)); do printf -- '--lp %d ' "$i"; done
  }
fi

# Times `corvelctl --all wifi` then `corvelctl --all status` REPEATS times
# inside the simulator's child, one line "command microseconds" each; a
# failed run (not every printer done) is shown as such. The clock is bash's
# own EPOCHREALTIME: a `date` run per reading would add a process start of
# its own (milliseconds under the simulator's preload) to every figure.
cat >"$work/run.sh" <<SCRIPT
set -u
for ((r = 0; r < \$1; r++)); do
  t=\${EPOCHREALTIME/./}
  "$ctl" --all wifi --ssid BenchNet --security wpa2-psk --passphrase-file "$work/passphrase" >/dev/null \
    || echo "failed wifi \$?"
  e=\${EPOCHREALTIME/./}
  echo "wifi \$((e - t))"
  t=\${EPOCHREALTIME/./}
  "$ctl" --all status >/dev/null || echo "failed status \$?"
  e=\${EPOCHREALTIME/./}
  echo "status \$((e - t))"
done
SCRIPT

median() { sort -n | awk '{ v[NR] = $1 } END { print (NR ? v[int((NR + 1) / 2)] : 0) }'; }

# measure N LABEL REPEATS [corvelsim options]: sets wifi_us and status_us (medians).
measure() {
  local n=$1 label=$2 runs=$3
  shift 3
  # shellcheck disable=SC2046
  "$sim" $(printers "$n") "$@" -- bash "$work/run.sh" "$runs" >"$work/times-$label-$n"
  if grep -q '^failed' "$work/times-$label-$n"; then
    echo "  ($label, $n printers: $(grep '^failed' "$work/times-$label-$n" | sort | uniq -c | tr -s ' ' | paste -sd,))"
  fi
  wifi_us=$(sed -n 's/^wifi //p' "$work/times-$label-$n" | median)
  status_us=$(sed -n 's/^status //p' "$work/times-$label-$n" | median)
}

echo "corvelctl --all at real speed; simulated printers by $kind"
for label in at-once late; do
  if [ "$label" = late ]; then options=(--fault late=1000) runs=1; else options=() runs=$repeats; fi
  echo "answers ${label/-/ }${options[*]:+ (${options[*]})}, median of $runs:"
  declare -A base=()
  for n in 1 4 8; do
    measure "$n" "$label" "$runs" "${options[@]}"
    [ "$n" = 1 ] && base=([wifi]=$wifi_us [status]=$status_us)
    for command in status wifi; do
      us=$([ "$command" = wifi ] && echo "$wifi_us" || echo "$status_us")
      awk -v c="$command" -v n="$n" -v us="$us" -v one="${base[$command]}" 'BEGIN {
        ratio = (one > 0 ? us / one : 0)
        printf "  %-6s %d printer%s %10.4f s   %5.2fx one printer%s\n", c, n, (n == 1 ? " " : "s"), us / 1e6,
          ratio, (n == 8 ? (ratio <= 1.5 ? "   (at most 1.5x: met)" : "   (at most 1.5x: NOT met)") : "") }'
    done
  done
done
