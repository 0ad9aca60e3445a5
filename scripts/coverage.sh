#!/usr/bin/env bash
# Builds with gcov, runs the tests, and prints what of src/ was not run, with the reason, and the
# shares of lines and branches. Branches that only exceptions take out of a line are not counted.
# Status 1 if a test fails, if fewer than 95 % of lines or 85 % of branches were run, or if a line that
# reports a failure was not run and tests/coverage-exceptions.txt has no reason for it.
# Three minutes beside the building.
# usage: coverage.sh [html-folder]
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
scripts/dependencies.sh stress
build=build/coverage
cmake --preset coverage -DKZ_TESTS=ON >/dev/null
cmake --build --preset coverage -- --quiet
find "$build" -name '*.gcda' -delete
status=0
# Left out: a program of others that links the installed libraries knows nothing of gcov.
ctest --preset coverage -j "$(nproc)" --no-tests=error --quiet --output-log "$build/tests.log" \
    --exclude-regex '^install$' || status=1
grep -E 'tests passed|\((Failed|Timeout|SEGFAULT|Not Run)\)' "$build/tests.log" || true

html=()
[ $# -eq 0 ] || { mkdir -p "$1"; html=(--html-details "$1/index.html"); }
gcovr --root . --filter 'src/' --exclude-throw-branches --exclude-unreachable-branches \
    --exclude-directories '.*/CMakeFiles/[0-9.]+/.*' --object-directory "$build" "$build" \
    -j "$(nproc)" --json "$build/coverage.json" "${html[@]}"
python3 -B tools/coverage_report.py "$build/coverage.json" tests/coverage-exceptions.txt || status=1
exit "$status"
