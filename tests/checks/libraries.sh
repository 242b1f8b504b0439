#!/usr/bin/env bash
# A program loads no library that it does not call.
set -euo pipefail
unused=$(ldd -u "$1" | grep -v '^Unused direct dependencies:$' || true)
if [ -n "${unused//[[:space:]]/}" ]; then
    echo "$1 is linked with what it does not use:"
    echo "$unused"
    exit 1
fi
echo "OK: $1 uses all the libraries that it loads"
