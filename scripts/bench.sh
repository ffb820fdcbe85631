#!/usr/bin/env bash
# Builds the XML benchmark in Release and runs it; extra arguments go to the
# benchmark program (for example --benchmark_filter=XPath).
set -euo pipefail
cd "$(dirname "$0")/.."
build=${BENCH_BUILD_DIR:-build-bench}
cmake -S . -B "$build" -DCMAKE_BUILD_TYPE=Release -DCORVEL_BUILD_BENCH=ON -DBUILD_TESTING=OFF \
  -DCORVEL_WERROR=ON >/dev/null
cmake --build "$build" --target xml_bench -j2
"$build/bench/xml_bench" "$@"
