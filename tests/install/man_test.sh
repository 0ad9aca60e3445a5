#!/usr/bin/env bash
# Formats each man page without a warning and finds its name and summary.
# usage: man_test.sh SOURCE_FOLDER
set -euo pipefail
for page in "$1"/docs/man/*; do
    warnings=$(man --warnings -E UTF-8 -l -Tutf8 -Z "$page" 2>&1 >/dev/null)
    [ -z "$warnings" ] || { echo "$page: $warnings"; exit 1; }
    lexgrog "$page" >/dev/null
done
