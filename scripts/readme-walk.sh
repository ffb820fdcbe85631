#!/usr/bin/env bash
# Prints a walk-through section of the README as a shell script: its indented
# lines, unindented. The demo runs it, and an end-to-end test runs each walk
# and compares what it prints with the "#> " lines.
#   scripts/readme-walk.sh [README] [SECTION]   (default: the 802.1x walk)
set -euo pipefail
readme=${1:-"$(dirname "$0")/../README.md"}
section=${2:-"802.1x with certificates, step by step"}
awk -v heading="## $section" '$0 == heading { inside = 1; next }
     /^##+ / { inside = 0 }
     inside && /^    / { print substr($0, 5) }' "$readme"
