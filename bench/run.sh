#!/usr/bin/env bash
# Builds the release program and measures it beside plain copies; prints one table.
# usage: run.sh [--quick] [--rows flv,audio,short,mp4,fmp4,edit,protected]
# The inputs are made in KZ_BENCH_DIR (default: build/bench) and stay there.
set -euo pipefail
top=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
"$top/scripts/dependencies.sh" bench
"$top/scripts/run.sh" --version >/dev/null
(cd "$top" && cmake --preset release -DKZ_BENCH=ON &&
    cmake --build --preset release --target held_copy) >&2
exec python3 "$top/bench/measure.py" "$@" "$top/build/release" \
    "$top/tests/data/media/h264_aac_20s.flv" "${KZ_BENCH_DIR:-$top/build/bench}"
