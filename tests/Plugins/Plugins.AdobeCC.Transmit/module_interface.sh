#!/bin/bash
# What the built module shows to a loader: exactly the listed exports, exactly the libraries that it may need.
# Usage: module_interface.sh MODULE EXPORTS_LIST
set -euo pipefail
module=$1
list=$2
failed=0

differs() {
    echo "$1 differ (< wanted, > found):"
    diff <(echo "$2") <(echo "$3") && return
    failed=1
}

wanted=$(grep '^[^#]' "$list" | sort)
found=$(nm -D --defined-only "$module" | awk '{print $3}' | sort)
differs exports "$wanted" "$found"

# The C and C++ runtimes are those of the compiler; the one library beside them is the sender.
needed=$(readelf -d "$module" | sed -nE 's/.*\(NEEDED\).*\[(.*)\]/\1/p' | sort)
others=$(echo "$needed" | grep -vxE 'lib(c|m|stdc\+\+|gcc_s|c\+\+|c\+\+abi)\.so\.[0-9]+|ld-linux-x86-64\.so\.2' || true)
differs "needed libraries" libquillo.so.4 "$others"

# Of the sender exactly its five functions.
imported=$(nm -D --undefined-only "$module" | awk '{print $2}' | grep '^Quillo' | sort || true)
functions=$(printf 'Quillolib_send_%s\n' create destroy send_audio send_video send_video_async)
differs "sender functions" "$functions" "$imported"

readelf -d "$module" | grep -q 'SYMBOLIC' || { echo "calls inside the module can be diverted (no -Bsymbolic)"; failed=1; }
readelf -d "$module" | grep -q 'TEXTREL' && { echo "text relocations"; failed=1; }
readelf -lW "$module" | grep -q 'GNU_STACK.*RWE' && { echo "executable stack"; failed=1; }

# The conversion library is there as a whole: every function of the archive has its place in the module.
[ $# -gt 2 ] && {
    inside=$(nm "$module" | awk '$2 ~ /[tTW]/ {print $3}' | sort -u)
    archived=$(nm "$3" 2>/dev/null | awk '$2 ~ /[TW]/ {print $3}' | sort -u)
    [ -n "$archived" ] || { echo "no functions in $3"; failed=1; }
    missing=$(comm -23 <(echo "$archived") <(echo "$inside"))
    [ -z "$missing" ] || { echo "not in the module:"; echo "$missing"; failed=1; }
}
exit $failed
