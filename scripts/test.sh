#!/usr/bin/env bash
# Builds everything and runs every test: the normal build, the same suite under
# AddressSanitizer + UndefinedBehaviorSanitizer, and a short run of each fuzz target.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh

jobs=$(nproc)
passed=0
for variant in release sanitize; do
  flags=(-DCORVEL_WERROR=ON)
  if [ "$variant" = sanitize ]; then
    flags+=(-DCORVEL_SANITIZE=ON -DCMAKE_BUILD_TYPE=Debug)
  fi
  echo "== $variant build"
  cmake -S . -B "build/$variant" "${flags[@]}" >/dev/null
  cmake --build "build/$variant" -j"$jobs"
  echo "== $variant tests"
  ctest --test-dir "build/$variant" --output-on-failure -j"$jobs"
  # ctest stopped the script on any failure, so every listed test passed.
  passed=$((passed + $(ctest --test-dir "build/$variant" -N | sed -n 's/^Total Tests: //p')))
done

if [ -x scripts/fuzz.sh ]; then
  echo "== fuzz smoke runs"
  scripts/fuzz.sh "${FUZZ_SECONDS:-10}"
fi

echo "all: $passed passed, 0 failed"
