#!/usr/bin/env bash
# Prints the README's section "802.1x with certificates, step by step" as a
# shell script: its indented lines, unindented. The demo runs it, and an
# end-to-end test runs it and compares what it prints with the "#> " lines.
set -euo pipefail
readme=${1:-"$(dirname "$0")/../README.md"}
awk '/^## 802.1x with certificates, step by step/ { inside = 1; next }
     /^## / { inside = 0 }
     inside && /^    / { print substr($0, 5) }' "$readme"
