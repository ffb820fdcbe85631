#!/usr/bin/env bash
# Checks manual pages with mandoc's linter: any message at all (error,
# warning or style) fails, so the pages stay clean. A source line longer
# than 80 bytes fails too, so that the pages stay readable in any editor.
#   scripts/man-lint.sh PAGE...
set -uo pipefail
if ! command -v mandoc >/dev/null; then
  echo "man-lint: mandoc is missing (scripts/setup.sh installs it)" >&2
  exit 1
fi
status=0
for page in "$@"; do
  messages=$(mandoc -Tlint "$page" 2>&1)
  if [ $? -ne 0 ] || [ -n "$messages" ]; then
    echo "$page:" >&2
    echo "$messages" >&2
    status=1
  fi
  long=$(LC_ALL=C awk 'length > 80 { print FILENAME ":" FNR ": " length " bytes" }' "$page")
  if [ -n "$long" ]; then
    echo "$long" >&2
    status=1
  fi
done
exit $status
