#!/usr/bin/env bash
# Installs what the examples need, and tests them all.
# usage: test.sh [EXAMPLE...]      default: inspect batch protect web-player
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
examples=("$@")
[ ${#examples[@]} -gt 0 ] || examples=(inspect batch protect web-player)
for example in "${examples[@]}"; do
    echo "== $example"
    if [ "$example" = protect ]; then
        "$here/../scripts/dependencies.sh" examples
        KZSPACKAGER='' "$here/protect.sh"    # compares what it decrypts by itself
    else
        "$here/$example/test.sh"
    fi
done
echo "examples: all tests passed"
