#!/usr/bin/env bash
# What the service calls, taken from its objects, and the redirection of it to the points of this folder.
#
#   calls.sh list OBJECT...                              the symbols that the objects need from elsewhere
#   calls.sh check POINTS LEFT-OUT                       that each of the symbols on standard input has a point or a
#                                                        reason to have none
#   calls.sh sites PROGRAM                               how many places in the program call a point
#   calls.sh redirect POINTS LEFT-OUT FOLDER OBJECT...   the checked objects' copies, calling the points
#
# Objects may be archives. POINTS defines `faulty_SYMBOL` for each SYMBOL that can be made to fail; LEFT-OUT has lines
# of a pattern for whole symbols, blanks, and the reason.
set -euo pipefail

prefix=faulty_

list()
{
    nm --format=posix "$@" 2>/dev/null |
        awk 'NF >= 2 && $2 == "U" { needed[$1] = 1 }
             NF >= 3 && $2 != "U" { defined[$1] = 1 }
             END { for (symbol in needed) if (!(symbol in defined)) print symbol }' | sort
}

points()
{
    nm --format=posix --defined-only "$1" | sed -n "s/^$prefix\([^ ]*\) .*/\1/p" | sort -u
}

check()
{
    local points patterns both rest
    points=$(points "$1")
    patterns=$(grep -vE '^(#|$)' "$2" | awk '{ print $1 }')
    both=$(grep -xE -f <(echo "$patterns") <<<"$points" || true)
    rest=$(grep -vxF -f <(echo "$points") | grep -vxE -f <(echo "$patterns") || true)
    if [ -n "$both" ]; then
        echo "has an injection point and a reason to have none:" $both >&2
    fi
    if [ -n "$rest" ]; then
        echo "has no injection point:" $rest >&2
    fi
    [ -z "$both$rest" ]
}

redirect()
{
    local points=$1 left_out=$2 folder=$3 object
    shift 3
    list "$@" | check "$points" "$left_out"
    mkdir -p "$folder"
    points "$points" | sed "s/.*/& $prefix&/" >"$folder/redirected"
    for object in "$@"; do
        objcopy --redefine-syms="$folder/redirected" "$object" "$folder/${object##*/}"
    done
}

sites()
{
    objdump -d --no-show-raw-insn "$1" |
        awk -v prefix="<$prefix" '/^[0-9a-f]+ <.*>:$/ { own = index($2, prefix) == 1 }
             !own && index($0, prefix) && $0 !~ /[+]0x/ { count++ }
             END { print count + 0 }'
}

command=$1
shift
"$command" "$@"
