#!/usr/bin/env bash
# Builds everything and runs every test. One build proves it all at once: warnings
# are errors, and the unit and end-to-end tests run under AddressSanitizer +
# UndefinedBehaviorSanitizer (a Debug build: it compiles in half the time of an
# optimized one; the demo builds optimized with warnings as errors). The fuzz
# targets (clang) and the Debian packages build at low priority while the tests
# run, since the end-to-end tests mostly wait; then each fuzz target gets a
# short run and the packages are checked.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh

# Every build of this command uses Ninja, which keeps both cores busy across
# folders; a build directory made with another generator is made afresh.
export CMAKE_GENERATOR=Ninja
for dir in build/check build/package build-fuzz; do
  if [ -f "$dir/CMakeCache.txt" ] && ! grep -qx 'CMAKE_GENERATOR:INTERNAL=Ninja' "$dir/CMakeCache.txt"; then
    rm -rf "$dir"
  fi
done

build=build/check
echo "== build (warnings as errors, AddressSanitizer + UndefinedBehaviorSanitizer)"
# Line tables are all a sanitizer report needs (-g1), and they build faster than full debug information.
cmake -S . -B "$build" -DCORVEL_WERROR=ON -DCORVEL_SANITIZE=ON -DCMAKE_BUILD_TYPE=Debug \
  -DCMAKE_CXX_FLAGS_DEBUG=-g1 -DCMAKE_C_FLAGS_DEBUG=-g1 >/dev/null
cmake --build "$build" -j"$(nproc)"

fuzz_build_log=$(mktemp)
trap 'rm -f "$fuzz_build_log"' EXIT
export FUZZ_OPTIMIZE=-O0  # the smoke runs are short: a quicker build matters more than their speed
FUZZ_BUILD_ONLY=1 nice scripts/fuzz.sh >"$fuzz_build_log" 2>&1 &
fuzz_build=$!

# >>> package test (scripts/package-test.sh): the Debian packages, built optimized at low priority beside
# the tests in their own build directory; waited for at the end.
nice scripts/package-test.sh build/package >build/package-test.log 2>&1 &
package_test=$!
# <<< package test

echo "== tests"
# Twice as many at a time as there are cores: the end-to-end tests spend most
# of their time in the simulated printer's (sped-up) fixed waits.
ctest --test-dir "$build" --output-on-failure -j"$((2 * $(nproc)))"
# ctest stopped the script on any failure, so every listed test passed.
passed=$(ctest --test-dir "$build" -N | sed -n 's/^Total Tests: //p')

if ! wait "$fuzz_build"; then
  cat "$fuzz_build_log"
  exit 1
fi
echo "== fuzz smoke runs"
scripts/fuzz.sh "${FUZZ_SECONDS:-2}"

# >>> package test
if ! wait "$package_test"; then
  cat build/package-test.log
  exit 1
fi
# <<< package test

echo "all: $passed passed, 0 failed"
