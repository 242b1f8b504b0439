#!/usr/bin/env bash
# Every source is as clang-format leaves it.
set -euo pipefail
cd "$1"
find platform common service appliance tests fuzz benchmarks \( -name '*.cpp' -o -name '*.h' \) -print0 |
    xargs -0 clang-format --dry-run --Werror
echo "OK: all sources are formatted"
