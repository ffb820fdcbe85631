#!/usr/bin/env bash
# Builds the libFuzzer targets with clang (AddressSanitizer + UBSan) in
# build-fuzz and runs each for the given number of seconds (default 20), on a
# scratch copy of its seed corpus so the committed corpus never grows.
# Exits non-zero when a target finds a crash, a leak or a sanitizer report.
#   scripts/fuzz.sh [seconds-per-target] [target...]
set -euo pipefail
cd "$(dirname "$0")/.."

seconds=${1:-20}
shift || true
build=${FUZZ_BUILD_DIR:-build-fuzz}
jobs=${FUZZ_BUILD_JOBS:-2}

cmake -S . -B "$build" -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ \
  -DCORVEL_FUZZ=ON -DCORVEL_BUILD_TESTS=OFF -DCORVEL_WERROR=ON >/dev/null
targets=("$@")
if [ ${#targets[@]} -eq 0 ]; then
  targets=(fuzz_sax_parser fuzz_xpath fuzz_obj_store_response fuzz_base64_decode fuzz_cert_answer fuzz_pem_subject)
fi
cmake --build "$build" --target "${targets[@]}" -j"$jobs"

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
failed=0
for target in "${targets[@]}"; do
  corpus="$scratch/$target"
  mkdir -p "$corpus" "$scratch/artifacts-$target"
  cp fuzz/corpus/"$target"/* "$corpus"/
  echo "== $target for ${seconds}s"
  if ! "$build/fuzz/$target" -max_total_time="$seconds" -max_len=65536 -timeout=10 -rss_limit_mb=2048 \
      -print_final_stats=1 -close_fd_mask=3 -artifact_prefix="$scratch/artifacts-$target/" "$corpus" \
      >"$scratch/$target.log" 2>&1; then
    failed=1
    echo "!! $target found a problem:"
    tail -n 60 "$scratch/$target.log"
    mkdir -p "$build/findings"
    cp "$scratch/artifacts-$target"/* "$build/findings/" 2>/dev/null || true
    echo "!! reproducer(s) kept in $build/findings/"
  else
    grep -a -E '^(stat::number_of_executed_units|stat::peak_rss_mb)|cov: ' "$scratch/$target.log" | tail -n 3 || true
  fi
done
exit $failed
