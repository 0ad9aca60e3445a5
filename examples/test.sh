#!/usr/bin/env bash
# Installs what the examples need, and tests them all.
# usage: test.sh [EXAMPLE...]      default: inspect batch web-player
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
examples=("$@")
[ ${#examples[@]} -gt 0 ] || examples=(inspect batch web-player)
for example in "${examples[@]}"; do
    echo "== $example"
    "$here/$example/test.sh"
done
echo "examples: all tests passed"
