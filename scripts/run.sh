#!/usr/bin/env bash
# Builds kzspackager (release) and runs it with the arguments given, in the current folder.
# Without arguments it packages a bundled clip and shows what it wrote.
set -euo pipefail
top=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
binary="$top/build/release/kzspackager"

build() {
    "$top/scripts/dependencies.sh" build
    local tests=()
    # A tree that the tests were set up in keeps them; a fresh one does without.
    [ -f "$top/build/release/CMakeCache.txt" ] || tests=(-DKZ_TESTS=OFF)
    (cd "$top" && cmake --preset release "${tests[@]}" &&
        cmake --build --preset release --target kzspackager)
}

# What the program prints is the caller's: the build only speaks when it fails.
log=$(mktemp)
trap 'rm -f "$log"' EXIT
if ! (set -e; build) >"$log" 2>&1; then
    cat "$log" >&2
    exit 1
fi

if [ $# -gt 0 ]; then
    status=0
    "$binary" "$@" || status=$?
    exit "$status"
fi

out="$top/out/demo"
rm -rf "$out"
"$binary" --input-file="$top/tests/data/media/h264_aac_20s.flv" --output-path="$out" \
    --external-bootstrap
echo "packaged h264_aac_20s.flv into $out:"
(cd "$out" && ls -l | tail -n +2 | awk '{printf "%10d  %s\n", $5, $9}')
echo
echo "h264_aac_20s.kzd:"
cut -c1-100 "$out/h264_aac_20s.kzd"
echo
"$binary" --inspect-bootstrap --input-file="$out/h264_aac_20s.bootstrap"
