#!/bin/sh
# Fails when a folder of the shared core includes a header of a folder it may
# not depend on: the core is layered common <- transport <- npa <- cert, with
# xml on common alone; the front ends (app/, ctl/) and the simulated printer
# sit outside it. Unit tests (<folder>/tests) may also use tests/support.
# Usage: check-layers.sh <source root>
set -eu
root=${1:-.}

# The folders each core folder may include from (its own included).
allowed() {
    case $1 in
    common) echo "common" ;;
    transport) echo "common transport" ;;
    xml) echo "common xml" ;;
    npa) echo "common transport npa" ;;
    cert) echo "common transport xml npa cert" ;;
    esac
}

# The project's folders; other include prefixes (sys/, openssl/, gtest/) are
# system headers.
project="app cert common ctl npa sim tests transport xml"

status=0
for folder in common transport xml npa cert; do
    [ -d "$root/$folder" ] || continue
    for file in $(find "$root/$folder" -name '*.h' -o -name '*.cpp' | sort); do
        may=$(allowed "$folder")
        case $file in */"$folder"/tests/*) may="$may tests" ;; esac
        # "#include "dir/..." or <dir/...>": the first path component.
        for used in $(sed -n 's/^[[:space:]]*#[[:space:]]*include[[:space:]]*["<]\([A-Za-z0-9_]*\)\/.*/\1/p' "$file"); do
            case " $project " in *" $used "*) ;; *) continue ;; esac
            case " $may " in
            *" $used "*) ;;
            *)
                echo "${file#"$root"/}: includes $used/, which $folder/ may not depend on (allowed: $may)"
                status=1
                ;;
            esac
        done
    done
done
exit $status
