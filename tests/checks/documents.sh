#!/usr/bin/env bash
# Every relative link in a document leads somewhere, and every ./dev command in one exists.
set -euo pipefail
cd "$1"
status=0

for document in README.md docs/*.md; do
    folder=$(dirname "$document")
    while read -r link; do
        target=${link%%#*}
        if [ -n "$target" ] && [ ! -e "$folder/$target" ]; then
            echo "$document links to $link, which is not there"
            status=1
        fi
    done < <(grep -oE '\]\([^)]+\)' "$document" | sed -E 's/^\]\((.*)\)$/\1/' | grep -vE '^[a-z]+://' || true)

    while read -r command; do
        if ! ./dev help | grep -qE "^  $command( |$)"; then
            echo "$document tells to run ./dev $command, which there is not"
            status=1
        fi
    done < <(grep -oE '\./dev [a-z]+' "$document" | sed 's/^.* //' | sort -u || true)
done

if [ "$(wc -l <README.md)" -gt 120 ]; then
    echo "README.md has more than 120 lines"
    status=1
fi
[ $status -eq 0 ] && echo "OK: links and commands lead somewhere"
exit $status
