#!/usr/bin/env bash
# Tries to break the packager for a while and prints a table: what was tried, how often, what
# failed. Status 1 if anything did. Inputs that failed are in build/stress.
# usage: stress.sh [SECONDS]     600 by default; building comes on top, and what has its own length:
#                                every allocation, the load
#        stress.sh --short       about three minutes
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

seconds=600
short=false
case "${1:-}" in
    --short) short=true; seconds=135 ;;
    '') ;;
    *[!0-9]*) echo "usage: $0 [SECONDS] | --short" >&2; exit 2 ;;
    *) seconds=$1 ;;
esac

build() {
    scripts/dependencies.sh stress
    cmake --preset release -DKZ_TESTS=ON >/dev/null
    cmake --build --preset release --target kzspackager make_corpus check_presentation fault \
        memory_fault -- --quiet
    cmake --preset asan -DKZ_TESTS=ON >/dev/null
    cmake --build --preset asan --target kzspackager -- --quiet
    cmake --preset fuzz -DKZ_TESTS=ON >/dev/null
    local targets=(tests/fuzz/corpus/*)
    cmake --build --preset fuzz --target "${targets[@]/#*\//fuzz_}" -- --quiet
    $short || for kind in O0:g++:-O0 O3:g++:-O3 clang:clang++:-O2; do
        build_other "${kind%%:*}" "$(cut -d: -f2 <<<"$kind")" "${kind##*:}"
    done
}

# The program from another compiler or at another optimisation.
build_other() {
    cmake -S . -B "build/other/$1" -G Ninja -DCMAKE_CXX_COMPILER="$2" -DCMAKE_BUILD_TYPE=None \
        -DCMAKE_CXX_FLAGS="$3" -DKZ_TESTS=OFF >/dev/null
    cmake --build "build/other/$1" --target kzspackager -- --quiet
}

build >&2

work=build/stress
tools=build/release/stress
packager=build/release/kzspackager
mkdir -p "$work"
rm -rf "$work/corpus" "$work/protection" "$work/damaged"
"$tools/make_corpus" damage "$work/corpus"
"$tools/make_corpus" protect "$work/protection"

failed=0
row() { python3 -B "tests/stress/$1.py" "${@:2}" || failed=1; }
share() { echo $((seconds * $1 / 100)); }

printf '%-48s %8s %8s\n' 'what' 'tried' 'failed'
row fuzz build/fuzz/tests/fuzz --seconds "$(share 32)" --keep "$work/fuzz"
row damage "$packager" "$work/corpus" --check "$tools/check_presentation" \
    --seconds "$(share 38)" --keep "$work/damaged" --jobs "$(nproc)"
row faults "$packager" "$tools/fault.so" "$work/protection" --seconds "$(share 20)"
row full "$packager"
memory() {
    row memory "$1" "$tools/memory_fault.so" "$work/corpus" "$work/protection" \
        --check "$tools/check_presentation" "${@:2}"
}
if $short; then
    memory "$packager" --most 150
    memory build/asan/kzspackager --leaks --most 50
else
    memory "$packager"
    memory build/asan/kzspackager --leaks --most 3000
fi
row death "$packager" --seconds "$(share 10)"
row names "$packager" "$work/protection"
if $short; then
    row load "$packager" --runs 50
    row same "$packager"
else
    row load "$packager" --long
    row same "$packager" build/other/*/kzspackager
fi
[ "$failed" -eq 0 ] && echo "nothing failed" || echo "something failed: see above"
exit "$failed"
