#!/usr/bin/env bash
# A program is linked with no library that it does not call.
set -euo pipefail
if ! unused=$(ldd -u "$1"); then
    echo "$1: $unused"
    exit 1
fi
echo "OK: $1 calls all the libraries that it is linked with"
