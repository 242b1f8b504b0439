#!/usr/bin/env bash
# Who may include whom: service -> common -> platform headers <- platform sources; appliance -> platform headers.
# One program of the appliance's is a service itself: it drives the controller that the service has no route to.
set -euo pipefail
cd "$1"

# forbid FOLDER WHERE-THE-HEADER-MUST-NOT-LIE... : prints each include that points there. A header that the folder
# has itself is its own, whoever else has one of that name.
forbid()
{
    local folder=$1
    {
        find "$folder" -type f -printf 'own %f\n'
        local place
        for place in "${@:2}"; do
            find "$place" -type f -printf "foreign %f $place\n"
        done
        grep -rnoE '^ *#include ["<][^">]+' "$folder" --include='*.cpp' --include='*.h' |
            sed -E 's/^([^:]+):[0-9]+: *#include ["<](.*)$/include \2 \1/'
    } | awk '
        $1 == "own" { own[$2] = 1 }
        $1 == "foreign" { places[$2] = places[$2] " " $3 }
        $1 == "include" {
            name = $2
            sub(/.*\//, "", name)
            if (name in own)
                next
            count = split(places[name], lies)
            for (i = 1; i <= count; ++i)
                print $3 " must not include " $2 ", which lies in " lies[i]
        }'
}

from_carvoy_retailer='^appliance/carvoy-retailer/[^ ]+ must not include '
its_headers='(SearchEmartControl\.h, which lies in service|(AppControl|Log|Singleton)\.h, which lies in common)$'

found=$(
    forbid platform service common appliance
    forbid common service appliance platform/src
    forbid service appliance platform/src
    forbid appliance service common platform/src | grep -vE "$from_carvoy_retailer$its_headers" || true
    grep -rnE '#include .*(sdbus|systemd|dbus)' service common || true
    grep -rnE '#if(def)?.*(TIZEN|HOST|DESKTOP)' service common || true
)
if [ -n "$found" ]; then
    echo "$found"
    exit 1
fi
echo "OK: every include goes in an allowed direction"
