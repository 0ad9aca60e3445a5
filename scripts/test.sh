#!/usr/bin/env bash
# Installs what is missing, builds, and runs every test.
# usage: test.sh [preset...]     presets: release asan debug fuzz; default: release asan
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
scripts/dependencies.sh test
presets=("$@")
[ ${#presets[@]} -gt 0 ] || presets=(release asan)
jobs=$(nproc)

echo "== layout of the sources"
git ls-files -- '*.h' '*.cpp' | xargs -r clang-format --dry-run -Werror

for preset in "${presets[@]}"; do
    echo "== $preset"
    cmake --preset "$preset" -DKZ_TESTS=ON -DKZ_BENCH=ON >/dev/null
    cmake --build --preset "$preset" -- -j "$jobs" --quiet
    ctest --preset "$preset" -j "$jobs" --output-on-failure --no-tests=error |
        grep -vE '^ *(Start +[0-9]|[0-9]+/[0-9]+ Test .* Passed)'
done
