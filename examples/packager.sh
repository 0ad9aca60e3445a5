#!/usr/bin/env bash
# Prints the path of the packager that the examples run: $KZSPACKAGER, or this tree's, built if need be.
set -euo pipefail
top=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
if [ -z "${KZSPACKAGER:-}" ]; then
    "$top/scripts/run.sh" --version >/dev/null
    KZSPACKAGER="$top/build/release/kzspackager"
fi
echo "$KZSPACKAGER"
