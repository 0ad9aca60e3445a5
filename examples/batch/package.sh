#!/usr/bin/env bash
# Packages one rendition of a title; the workflow calls it.
# usage: package.sh FOLDER NAME PLACE BITRATE RECORDING MANIFEST [MANIFEST_BEFORE] -- PACKAGER [OPTION...]
#
# The packager works in a folder of its own, and only what is complete is moved: who serves the
# folder never sees half a file, and a run that was killed is simply done again.
set -euo pipefail
folder=$1 name=$2 place=$3 bitrate=$4 recording=$5 manifest=$6
shift 6
before=
[ "$1" = -- ] || { before=$1; shift; }
shift
work="$folder/.work"

say() { echo "$(date -u +%FT%TZ) $place $*" >>"$folder/log"; }

mkdir -p "$folder" "$(dirname "$manifest")"
rm -rf "$work"
echo "running $place" >"$folder/status"
say "$recording"

arguments=(--input-file="$recording" --output-path="$work" --output-manifest-file="$name.kzd"
    --bitrate="$bitrate")
[ -z "$before" ] || arguments+=(--manifest-file="$before")

if error=$("$@" "${arguments[@]}" 2>&1); then
    mv "$work/$name.kzd" "$manifest.new"
    find "$work" -type f -exec mv -t "$folder" {} +
    mv "$manifest.new" "$manifest"
    rmdir "$work"
    say "done"
else
    code=$?
    rm -rf "$work"
    say "status $code: $error"
    echo "failed $place: $error" >"$folder/status"
    exit 1
fi
