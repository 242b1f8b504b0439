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
    shift
    local file header place
    while IFS=: read -r file header; do
        [ -z "$(find "$folder" -name "${header##*/}")" ] || continue
        for place in "$@"; do
            if find "$place" -name "${header##*/}" | grep -q .; then
                echo "$file must not include $header, which lies in $place"
            fi
        done
    done < <(grep -rnoE '^ *#include ["<][^">]+' "$folder" --include='*.cpp' --include='*.h' |
        sed -E 's/^([^:]+):[0-9]+: *#include ["<](.*)$/\1:\2/')
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
