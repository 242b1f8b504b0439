#!/usr/bin/env bash
# Every ./dev command in a document exists; links.py looks at the links.
set -euo pipefail
cd "$1"
status=0

for document in *.md docs/*.md; do
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
[ $status -eq 0 ] && echo "OK: the commands of documents are there"
exit $status
