#!/usr/bin/env bash
# Builds the libFuzzer targets with clang (AddressSanitizer + UBSan) in
# build-fuzz and runs each for the given number of seconds (default 20), as
# many at a time as there are cores, on a scratch copy of its seed corpus so
# the committed corpus never grows. Exits non-zero when a target finds a
# crash, a leak or a sanitizer report.
#   scripts/fuzz.sh [seconds-per-target] [target...]
#   FUZZ_BUILD_ONLY=1 scripts/fuzz.sh      only builds them
#   FUZZ_OPTIMIZE=-O0 scripts/fuzz.sh 3    builds faster (default -O1)
set -euo pipefail
cd "$(dirname "$0")/.."

seconds=${1:-20}
shift || true
build=${FUZZ_BUILD_DIR:-build-fuzz}
jobs=${FUZZ_BUILD_JOBS:-$(nproc)}

# -O1 with line tables only: fast enough to fuzz, quick to compile, and enough
# for a sanitizer report to name file and line. Short smoke runs care more
# about the build than about executions per second: FUZZ_OPTIMIZE=-O0.
optimize=${FUZZ_OPTIMIZE:--O1}
cmake -S . -B "$build" -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  "-DCMAKE_CXX_FLAGS_RELWITHDEBINFO=$optimize -gline-tables-only" \
  "-DCMAKE_C_FLAGS_RELWITHDEBINFO=$optimize -gline-tables-only" \
  -DCORVEL_FUZZ=ON -DBUILD_TESTING=OFF -DCORVEL_BUILD_SIM=OFF -DCORVEL_WERROR=ON >/dev/null
targets=("$@")
if [ ${#targets[@]} -eq 0 ]; then
  targets=(fuzz_sax_parser fuzz_xpath fuzz_obj_store_response fuzz_base64_decode fuzz_cert_answer fuzz_pem_subject
           fuzz_hostile_printer)
fi
cmake --build "$build" --target "${targets[@]}" -j"$jobs"
if [ "${FUZZ_BUILD_ONLY:-0}" = 1 ]; then exit 0; fi

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

# One target's run; its outcome is its exit status, its report in its log.
fuzz_one() {
  local target=$1 corpus="$scratch/$1"
  mkdir -p "$corpus" "$scratch/artifacts-$target"
  cp fuzz/corpus/"$target"/* "$corpus"/
  "$build/fuzz/$target" -max_total_time="$seconds" -max_len=65536 -timeout=10 -rss_limit_mb=2048 \
    -print_final_stats=1 -close_fd_mask=3 -artifact_prefix="$scratch/artifacts-$target/" "$corpus" \
    >"$scratch/$target.log" 2>&1
}

declare -A pids
for target in "${targets[@]}"; do
  while [ "$(jobs -rp | wc -l)" -ge "$(nproc)" ]; do wait -n || true; done
  fuzz_one "$target" &
  pids[$target]=$!
done

failed=0
for target in "${targets[@]}"; do
  echo "== $target for ${seconds}s"
  if wait "${pids[$target]}"; then
    grep -a -E '^(stat::number_of_executed_units|stat::peak_rss_mb)|cov: ' "$scratch/$target.log" | tail -n 3 || true
  else
    failed=1
    echo "!! $target found a problem:"
    tail -n 60 "$scratch/$target.log"
    mkdir -p "$build/findings"
    cp "$scratch/artifacts-$target"/* "$build/findings/" 2>/dev/null || true
    echo "!! reproducer(s) kept in $build/findings/"
  fi
done
exit $failed
