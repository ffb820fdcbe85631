#!/usr/bin/env bash
# The collection's modules against the simulated printer(s), as users get
# them (built with ansible-galaxy and installed from the tarball), in four
# ansible-playbook runs: configure (and certificates), the same again (no
# change), check mode (nothing sent), a wrong passphrase (nothing sent at all).
#
# Usage: run-playbooks.sh CORVELSIM CORVELCTL [PRINTERS]
# PRINTERS > 1 needs `corvelsim --printers`; without it the test is skipped
# (exit 77), unless CORVEL_ANSIBLE_SHARED_LP=1 asks for PRINTERS lp nodes
# instead (several printers sharing one state, which the runs allow: each
# printer's status is read before any is configured).
set -euo pipefail

if [ "${1:-}" != "--inside" ]; then
  sim=$(realpath "$1")
  ctl=$(realpath "$2")
  printers=${3:-1}
  work=$(mktemp -d "${TMPDIR:-/tmp}/corvel-ansible.XXXXXX")
  trap 'rm -rf "$work"' EXIT
  mkdir "$work/logs"
  if [ "$printers" -gt 1 ]; then
    # Read whole: grep -q would end the pipe early, and pipefail see SIGPIPE.
    if [[ "$("$sim" --help)" == *--printers* ]]; then
      attach=(--printers "$printers" --log-dir "$work/logs")
    elif [ "${CORVEL_ANSIBLE_SHARED_LP:-0}" = 1 ]; then
      attach=(--log "$work/logs/CVSIM0001.log")
      for ((lp = 0; lp < printers; lp++)); do attach+=(--lp "$lp"); done
    else
      echo "corvelsim has no --printers: skipped" >&2
      exit 77
    fi
  else
    attach=(--lp 0 --log "$work/logs/CVSIM0001.log")
  fi
  collection=$(cd "$(dirname "$0")/../.." && pwd)
  ansible-galaxy collection build "$collection" --output-path "$work" >/dev/null
  ansible-galaxy collection install --offline -p "$work/collections" "$work"/corvel-printer-*.tar.gz >/dev/null 2>&1 ||
    { echo "the built collection does not install" >&2; exit 1; }
  PATH="$(dirname "$ctl"):$PATH"
  export PATH
  export ASAN_OPTIONS="${ASAN_OPTIONS:-verify_asan_link_order=0}"
  exec "$sim" "${attach[@]}" -- "$0" --inside "$work" "$printers"
fi

work=$2
printers=$3
here=$(cd "$(dirname "$0")" && pwd)
export ANSIBLE_COLLECTIONS_PATH
ANSIBLE_COLLECTIONS_PATH=$work/collections
export ANSIBLE_NOCOLOR=1 ANSIBLE_LOCAL_TEMP="$work/ansible-local" ANSIBLE_REMOTE_TEMP="$work/ansible-remote"
export ANSIBLE_COLLECTIONS_SCAN_SYS_PATH=false
cd "$work"

failures=0
fail() {
  echo "FAIL: $*" >&2
  failures=$((failures + 1))
}

log_lines() { cat "$work"/logs/*.log 2>/dev/null | wc -l; }
settings_sent() { cat "$work"/logs/*.log 2>/dev/null | grep -c '"kind":"settings"' || true; }

# Runs one ansible-playbook; its output in $work/run-NAME.out. Sets $status.
playbook() {
  local name=$1
  shift
  status=0
  ansible-playbook -i "$here/inventory.ini" -e expected_printers="$printers" -e first_printer=serial:CVSIM0001 \
    -e work_dir="$work" "$@" >"$work/run-$name.out" 2>&1 || status=$?
  echo "== $name (exit $status): $(grep -E '^localhost +:' "$work/run-$name.out" || echo 'no recap')"
}

recap_changed() { sed -n -E 's/^localhost +:.* changed=([0-9]+) .*/\1/p' "$work/run-$1.out"; }

playbook configure -v "$here/configure.yml" "$here/certificates.yml"
[ "$status" -eq 0 ] || fail "configure: exit $status"
[ "$(recap_changed configure)" != 0 ] || fail "configure: nothing changed"
[ "$(settings_sent)" -eq "$printers" ] || fail "configure: $(settings_sent) settings requests for $printers printers"
! grep -q 'correct horse' "$work/run-configure.out" || fail "configure: the passphrase shows in the output"
# Each printer got its own settings, once (one log per printer with --printers).
if [ "${CORVEL_ANSIBLE_SHARED_LP:-0}" != 1 ]; then
  logs=("$work"/logs/*.log)
  [ "${#logs[@]}" -eq "$printers" ] || fail "configure: ${#logs[@]} printer logs for $printers printers"
  for log in "${logs[@]}"; do
    [ "$(grep -c '"kind":"settings"' "$log")" -eq 1 ] || fail "configure: $(basename "$log") got no settings, or twice"
  done
fi

sent=$(settings_sent)
playbook again "$here/configure.yml"
[ "$status" -eq 0 ] || fail "again: exit $status"
[ "$(recap_changed again)" = 0 ] || fail "again: changed=$(recap_changed again), not 0"
[ "$(settings_sent)" -eq "$sent" ] || fail "again: settings were sent"

playbook check --check "$here/check.yml"
[ "$status" -eq 0 ] || fail "check: exit $status"
[ "$(settings_sent)" -eq "$sent" ] || fail "check: settings were sent in check mode"

lines=$(log_lines)
playbook wrong-passphrase "$here/wrong-passphrase.yml"
[ "$status" -ne 0 ] || fail "wrong-passphrase: the playbook succeeded"
grep -q 'the passphrase has 7 characters; WPA needs 8-63' "$work/run-wrong-passphrase.out" ||
  fail "wrong-passphrase: not refused for its length"
[ "$(log_lines)" -eq "$lines" ] || fail "wrong-passphrase: the printer got $(($(log_lines) - lines)) requests"

if [ "$failures" -ne 0 ]; then
  for out in "$work"/run-*.out; do
    echo "---- $out"
    cat "$out"
  done
  exit 1
fi
echo "all four runs as expected on $printers printer(s)"
