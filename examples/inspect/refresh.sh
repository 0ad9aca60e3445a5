#!/usr/bin/env bash
# Draws the picture in the documents anew.
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
top="$here/../.."
packager=$("$here/../packager.sh")
tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT
"$packager" --input-file="$top/tests/data/media/scene_cuts.flv" --output-path="$tmp" \
    --segment-duration=10
PYTHONDONTWRITEBYTECODE=1 "$here/draw.py" "$tmp/scene_cuts.kzd" -o "$top/docs/presentation.svg"
