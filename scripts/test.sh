#!/usr/bin/env bash
# Builds everything and runs every test. One build proves it all at once: warnings
# are errors, and the unit and end-to-end tests run under AddressSanitizer +
# UndefinedBehaviorSanitizer (a Debug build: it compiles in half the time of an
# optimized one; the demo builds optimized with warnings as errors). The fuzz
# targets (clang) and the Debian packages build at low priority beside it from
# the start; then each fuzz target gets a short run and the packages' check
# is awaited.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh

# Every build of this command uses Ninja, which keeps both cores busy across
# folders; a build directory made with another generator is made afresh.
export CMAKE_GENERATOR=Ninja
for dir in build/check build-fuzz; do
  if [ -f "$dir/CMakeCache.txt" ] && ! grep -qx 'CMAKE_GENERATOR:INTERNAL=Ninja' "$dir/CMakeCache.txt"; then
    rm -rf "$dir"
  fi
done

build=build/check
mkdir -p build

# The fuzz targets (clang) and the Debian packages are made at the lowest
# priority beside the main build and the tests: they take the time the links
# and the simulated printer's waits leave idle without slowing the main build.
# They stay in this session (a session of their own would be scheduled as an
# equal of this one, whatever their priority), and are stopped with everything
# they started if the script ends early.
stop_tree() {
  local child
  for child in $(pgrep -P "$1"); do stop_tree "$child"; done
  kill "$1" 2>/dev/null || true
}
background=()
trap 'for job in "${background[@]}"; do stop_tree "$job"; done' EXIT
# The smoke runs are short: a quicker build matters more than their speed.
# (The build and the runs must agree, or the runs would build everything again.)
export FUZZ_OPTIMIZE=-O0
FUZZ_BUILD_ONLY=1 nice -n 19 scripts/fuzz.sh >build/fuzz-build.log 2>&1 &
fuzz_build=$!
nice -n 19 scripts/package-test.sh build/package >build/package-test.log 2>&1 &
package_test=$!
background=("$fuzz_build" "$package_test")

echo "== build (warnings as errors, AddressSanitizer + UndefinedBehaviorSanitizer)"
# Line tables are all a sanitizer report needs (-g1), and they build faster than full debug information.
cmake -S . -B "$build" -DCORVEL_WERROR=ON -DCORVEL_SANITIZE=ON -DCMAKE_BUILD_TYPE=Debug \
  -DCMAKE_CXX_FLAGS_DEBUG=-g1 -DCMAKE_C_FLAGS_DEBUG=-g1 >/dev/null
cmake --build "$build" -j"$(nproc)"

echo "== tests"
# Twice as many at a time as there are cores: the end-to-end tests spend most
# of their time in the simulated printer's (sped-up) fixed waits.
ctest --test-dir "$build" --output-on-failure -j"$((2 * $(nproc)))"
# ctest stopped the script on any failure, so every listed test passed.
passed=$(ctest --test-dir "$build" -N | sed -n 's/^Total Tests: //p')

echo "== fuzz smoke runs"
wait "$fuzz_build" || { cat build/fuzz-build.log; exit 1; }
scripts/fuzz.sh "${FUZZ_SECONDS:-1}"

echo "== package test"
package_status=0
wait "$package_test" || package_status=$?
cat build/package-test.log
[ "$package_status" = 0 ] || exit 1
background=()

echo "all: $passed passed, 0 failed"
