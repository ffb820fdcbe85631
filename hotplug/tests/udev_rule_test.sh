#!/usr/bin/env bash
# 70-corvelctl-provision.rules against the simulated printer's USB device as
# libudev sees it under corvelsim (its properties are those udev's usb_id
# gives a real one), and against devices it must leave alone. The rule's
# match keys are evaluated here as udev evaluates them (== and != with glob
# patterns, as fnmatch), its assignments applied with $env{} substituted; a
# key this test does not know fails it, so that the rule cannot outgrow what
# is checked.
#   udev_rule_test.sh RULES_FILE CORVELSIM UDEV_PROPERTIES
set -euo pipefail
rules=$1 corvelsim=$2 properties=$3
failures=0
fail() {
  echo "udev rule test: $*" >&2
  failures=$((failures + 1))
}

# The rule: its one line that is not a comment.
rule=$(grep -v '^[[:space:]]*\(#\|$\)' "$rules")
[ "$(wc -l <<<"$rule")" -eq 1 ] || { echo "$rules: expected one rule line" >&2; exit 1; }

# The rule's items as KEY, OPERATOR and VALUE in three arrays.
keys=() operators=() values=()
rest=$rule
item='^[[:space:]]*([A-Z_]+(\{[A-Za-z_]+\})?)[[:space:]]*(==|!=|\+=|=)[[:space:]]*"([^"]*)"[[:space:]]*(,|$)'
while [ -n "${rest//[[:space:]]/}" ]; do
  [[ $rest =~ $item ]] || { echo "$rules: cannot read the rule at: $rest" >&2; exit 1; }
  keys+=("${BASH_REMATCH[1]}") operators+=("${BASH_REMATCH[3]}") values+=("${BASH_REMATCH[4]}")
  rest=${rest:${#BASH_REMATCH[0]}}
done

# substitute TEXT: $env{KEY} replaced by the property.
substitute() {
  local text=$1 name
  while [[ $text =~ \$env\{([A-Za-z_]+)\} ]]; do
    name=${BASH_REMATCH[1]}
    text=${text//"\$env{$name}"/${device[$name]-}}
  done
  printf '%s' "$text"
}

# matches ACTUAL OPERATOR PATTERN: whether an == or != key matches; the
# pattern is a glob, as for udev.
matches() {
  local equal=0
  # shellcheck disable=SC2053
  [[ $1 == $3 ]] && equal=1
  if [ "$2" = "==" ]; then [ $equal -eq 1 ]; else [ $equal -eq 0 ]; fi
}

# evaluate ACTION: applies the rule to the properties in `device`; sets
# `matched` (1 when every match key matched), `tags`, and the properties the
# rule assigns in `device`.
evaluate() {
  local action=$1 i key operator value name
  matched=0 tags=""
  for i in "${!keys[@]}"; do
    key=${keys[i]} operator=${operators[i]} value=${values[i]}
    name=${key#ENV\{} && name=${name%\}}
    case $operator:$key in
      ==:ACTION | !=:ACTION) matches "$action" "$operator" "$value" || return 0 ;;
      ==:SUBSYSTEM | !=:SUBSYSTEM) matches "${device[SUBSYSTEM]-}" "$operator" "$value" || return 0 ;;
      ==:ENV\{*\} | !=:ENV\{*\}) matches "${device[$name]-}" "$operator" "$value" || return 0 ;;
      +=:TAG) tags+=" $value" ;;
      +=:ENV\{*\}) device[$name]="${device[$name]:+${device[$name]} }$(substitute "$value")" ;;
      =:ENV\{*\}) device[$name]=$(substitute "$value") ;;
      *) fail "the rule has $key$operator, which this test does not know" && return 0 ;;
    esac
  done
  matched=1
}

# The properties of each simulated USB device, as the blocks UDEV_PROPERTIES
# prints, in files of their own: devices/N.
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
# simulated NAME CORVELSIM_OPTIONS...: the blocks of the devices corvelsim
# attaches with those options, in $scratch/NAME.N.
simulated() {
  local name=$1
  shift
  ASAN_OPTIONS=${ASAN_OPTIONS:-verify_asan_link_order=0} "$corvelsim" "$@" -- "$properties" >"$scratch/$name.out" ||
    { fail "corvelsim $* failed" && return; }
  awk -v prefix="$scratch/$name." '/^device /{ n++ } NF { print > (prefix n) }' "$scratch/$name.out"
}

# check FILE ACTION EDIT EXPECTED: loads the properties of FILE, applies EDIT
# (KEY=VALUE or KEY= to remove KEY, or "-"), evaluates the rule for ACTION
# and compares "match TAGS WANTS" or "no match" with EXPECTED.
check() {
  local file=$1 action=$2 edit=$3 expected=$4 line result
  declare -gA device=()
  while IFS= read -r line; do
    [[ $line == device\ * ]] && continue
    device[${line%%=*}]=${line#*=}
  done <"$file"
  if [ "$edit" != - ]; then
    if [ -z "${edit#*=}" ]; then unset "device[${edit%%=*}]"; else device[${edit%%=*}]=${edit#*=}; fi
  fi
  evaluate "$action"
  if [ "$matched" -eq 1 ]; then
    result="match${tags} ${device[SYSTEMD_WANTS]-}"
  else
    result="no match"
  fi
  if [ "$result" != "$expected" ]; then
    fail "$(head -1 "$file") ($action, $edit): got '$result', expected '$expected'"
  else
    echo "ok: $(head -1 "$file" | sed "s|^device ||") $action $edit: $result"
  fi
}

simulated lp                                   # the printer over usblp: /dev/usb/lp0
simulated usb --usb 1:4 --serial 'AB-12#3'     # its USB device as libusb reaches it
simulated vendor --no-lp --usb 1:5 --usb-layout no-printer  # a vendor-class device
simulated second --usb 1:4 --usb-layout second-claims      # two printer interfaces

# The USB device is the first block, its printer interface the second.
for block in lp.1 usb.1 vendor.1 second.1 lp.2; do
  [ -f "$scratch/$block" ] || fail "corvelsim attached no device for $block"
done
if ((failures == 0)); then
  # What the rule keys on, as libudev sees it.
  grep -h '^\(device\|DEVTYPE\|ID_USB_INTERFACES\|ID_SERIAL_SHORT\)=\?' "$scratch"/lp.1 "$scratch"/usb.1 \
    "$scratch"/vendor.1 "$scratch"/lp.2
  wants=corvelctl-provision@CVSIM0001.service
  check "$scratch/lp.1" add - "match systemd $wants"
  # A serial of every character a unit's instance may hold is the instance
  # as it stands; one with any other is left to be provisioned by hand.
  check "$scratch/usb.1" add - "no match"
  check "$scratch/lp.1" add 'ID_SERIAL_SHORT=AB-12:x_y.z' 'match systemd corvelctl-provision@AB-12:x_y.z.service'
  for serial in 'AB+1' 'A=B' 'A@B' 'A B' 'A\x2dB' 'A/B'; do
    check "$scratch/lp.1" add "ID_SERIAL_SHORT=$serial" "no match"
  done
  check "$scratch/second.1" add - "match systemd $wants"
  # Another rule's wants are kept.
  check "$scratch/lp.1" add 'SYSTEMD_WANTS=other.service' "match systemd other.service $wants"
  # A printer interface among others.
  check "$scratch/lp.1" add 'ID_USB_INTERFACES=:080650:070102:' "match systemd $wants"
  # Only an added printer with a serial number.
  for action in remove change bind; do check "$scratch/lp.1" $action - "no match"; done
  check "$scratch/lp.1" add 'ID_SERIAL_SHORT=' "no match"
  check "$scratch/lp.1" add 'ID_USB_INTERFACES=' "no match"
  check "$scratch/lp.1" add 'ID_USB_INTERFACES=:030101:' "no match"
  check "$scratch/lp.1" add 'ID_USB_INTERFACES=:ff0702:' "no match"
  check "$scratch/lp.2" add - "no match"   # the printer's interface, not the device
  check "$scratch/vendor.1" add - "no match"
fi

if ((failures > 0)); then
  echo "udev rule test: $failures failure(s)" >&2
  exit 1
fi
echo "udev rule test: passed"
