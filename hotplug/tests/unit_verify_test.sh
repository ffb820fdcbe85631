#!/usr/bin/env bash
# systemd-analyze verify on corvelctl-provision@.service, as instances: the
# template copied into a folder of its own with ExecStart pointing at the
# corvelctl just built (the installed path does not exist here), and the
# manual page it names found through MANPATH. A warning fails the test as an
# error does: systemd-analyze exits 0 for unknown keys and bad values.
#   unit_verify_test.sh UNIT_FILE CORVELCTL MAN_PAGE
set -euo pipefail
unit=$1 corvelctl=$2 page=$3
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
template=$(basename "$unit")
grep -q '^ExecStart=/usr/bin/corvelctl ' "$unit" || { echo "$unit: ExecStart does not run /usr/bin/corvelctl" >&2; exit 1; }
sed "s|^ExecStart=/usr/bin/corvelctl |ExecStart=$corvelctl |" "$unit" >"$scratch/$template"
mkdir -p "$scratch/man/man1"
ln -s "$page" "$scratch/man/man1/corvelctl.1"

failures=0
# The simulated printer's serial, and one with the other characters the rule
# lets through as an instance ("-", "_", "."; systemd-analyze cannot load a
# unit file whose name has a ":", which systemd itself takes).
for instance in CVSIM0001 'AB-12_x.y'; do
  name=${template/@/@$instance}
  status=0
  output=$(cd "$scratch" && MANPATH="$scratch/man" systemd-analyze verify "./$name" 2>&1) || status=$?
  echo "systemd-analyze verify $name: exit $status"
  [ -n "$output" ] && printf '%s\n' "$output"
  if [ "$status" -ne 0 ] || [ -n "$output" ]; then
    failures=$((failures + 1))
  fi
done

# The template is never enabled: it has no [Install] section.
if grep -q '^\[Install\]' "$unit"; then
  echo "$unit has an [Install] section; udev alone is to start it" >&2
  failures=$((failures + 1))
fi
exit $((failures > 0))
