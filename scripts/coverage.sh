#!/usr/bin/env bash
# Builds with gcov, runs every test, and prints what of src/ was run: lines and branches of each
# file, then the whole. Branches that only exceptions take out of a line are not counted.
# usage: coverage.sh [html-folder]
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
scripts/dependencies.sh stress
build=build/coverage
cmake --preset coverage -DKZ_TESTS=ON >/dev/null
cmake --build --preset coverage -- --quiet
find "$build" -name '*.gcda' -delete
# A failed test is told, and does not keep the figures back.
ctest --preset coverage -j "$(nproc)" --no-tests=error | tail -n 15 || true

html=()
[ $# -eq 0 ] || { mkdir -p "$1"; html=(--html-details "$1/index.html"); }
common=(--root . --filter 'src/' --exclude-throw-branches --exclude-unreachable-branches
    --object-directory "$build" --json "$build/coverage.json")
gcovr "${common[@]}" "$build" --branches >"$build/branches.txt"
gcovr --root . --filter 'src/' --exclude-throw-branches --exclude-unreachable-branches \
    --add-tracefile "$build/coverage.json" --txt "${html[@]}" --print-summary
echo
grep -E '^TOTAL' "$build/branches.txt" | sed 's/^TOTAL/branches:/'
