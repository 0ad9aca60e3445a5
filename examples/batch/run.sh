#!/usr/bin/env bash
# Packages every title of a folder; run it again after a failure or a kill, and it goes on.
# usage: run.sh TITLES OUT [SNAKEMAKE_OPTION...]
#
# TITLES has a folder for each title, with a recording for each rendition; the number before a "k" at
# the end of a name is its bitrate (240k.flv). KZS_OPTIONS holds more options for the packager.
# Jobs run on all cores; --cores 4, or --cluster "qsub" --jobs 100, go to Snakemake.
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
[ $# -ge 2 ] && [ -d "$1" ] || { echo "usage: $0 TITLES OUT [SNAKEMAKE_OPTION...]" >&2; exit 2; }
titles=$(cd "$1" && pwd)
mkdir -p "$2"
out=$(cd "$2" && pwd)
shift 2
packager=$("$here/../packager.sh")

# One run at a time in one output folder. A run that was killed leaves Snakemake's own lock behind;
# with this one in hand nobody can hold it.
exec 9>"$out/.lock"
flock -n 9 || { echo "$0: another run works in $out" >&2; exit 1; }

# As JSON, since names may hold anything.
python3 -c 'import json, sys; print(json.dumps(dict(zip(sys.argv[1::2], sys.argv[2::2]))))' \
    titles "$titles" out "$out" packager "$packager" options "${KZS_OPTIONS:-}" >"$out/.config.json"
snakemake=(snakemake --snakefile "$here/Snakefile" --directory "$out" --configfile "$out/.config.json")
"${snakemake[@]}" --unlock >/dev/null 2>&1 || true

status=0
"${snakemake[@]}" --cores all --keep-going --rerun-incomplete --rerun-triggers mtime input --quiet \
    "$@" 9>&- >"$out/snakemake.log" 2>&1 || status=$?

for folder in "$titles"/*/; do
    title=$(basename "$folder")
    [ ! -f "$out/$title/status" ] || echo "$title: $(cat "$out/$title/status")"
done
[ "$status" -eq 0 ] || echo "see $out/snakemake.log and the logs of the titles" >&2
exit "$status"
