#!/usr/bin/env bash
# Tests the workflow with 12 small titles: order, parallel work, a failure, a kill, going on.
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
top="$here/../.."
"$top/scripts/dependencies.sh" examples
real=$("$here/../packager.sh")
tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT
titles="$tmp/the titles" out="$tmp/out: #1"

fail() { echo "FAILED: $*" >&2; cat "$out/snakemake.log" >&2 || true; exit 1; }
title() { printf 'title %02d' "$1"; }
done_titles() { { grep -lx done "$out"/*/status 2>/dev/null || true; } | wc -l; }

for i in $(seq 12); do
    mkdir -p "$titles/$(title "$i")"
    for kbit in 60 120 240; do
        cp "$top/tests/data/media/mbr_${kbit}k.flv" "$titles/$(title "$i")/${kbit}k.flv"
    done
done
broken="$titles/$(title 5)/120k.flv"
echo "not a recording" >"$broken"

# A packager that takes its time and writes down when it begins and ends.
cat >"$tmp/slow" <<END
#!/usr/bin/env bash
name=\$(printf '%s\n' "\$@" | sed -n 's/^--output-manifest-file=//p')
echo "\$(date +%s%N) begin \$name" >>"$tmp/runs"
sleep 0.2
status=0
"$real" "\$@" || status=\$?
echo "\$(date +%s%N) end \$name" >>"$tmp/runs"
exit \$status
END
chmod +x "$tmp/slow"
export KZSPACKAGER="$tmp/slow"

echo "== killed in the middle"
setsid "$here/run.sh" "$titles" "$out" --cores 4 >/dev/null 2>&1 &
group=$!
for _ in $(seq 600); do
    [ "$(done_titles)" -lt 2 ] || break
    sleep 0.1
done
kill -KILL -- "-$group"
wait "$group" 2>/dev/null || true
before=$(done_titles)
[ "$before" -ge 2 ] && [ "$before" -lt 11 ] || fail "$before titles were done when it was killed"
finished=$(grep -lx done "$out"/*/status)
mv "$tmp/runs" "$tmp/runs.killed"

echo "== goes on, and reports the broken title"
! "$here/run.sh" "$titles" "$out" --cores 4 >"$tmp/report" 2>&1 || fail "a failure went unnoticed"
[ "$(done_titles)" -eq 11 ] || fail "$(done_titles) titles are done instead of 11"
grep -qx 'title 05: failed 2/3: Error 3: invalid input file .*' "$tmp/report" ||
    fail "$(cat "$tmp/report")"
grep -q '2/3 status 3: Error 3: invalid input file' "$out/$(title 5)/log" || fail "log of title 05"
[ ! -e "$out/$(title 5)/$(title 5).kzd" ] || fail "a manifest of a title that isn't whole"
while read -r status; do
    name=$(basename "$(dirname "$status")")
    ! grep -q " begin ${name}_" "$tmp/runs" || fail "$name was packaged again"
done <<<"$finished"

echo "== finishes what was mended, and nothing else"
cp "$top/tests/data/media/mbr_120k.flv" "$broken"
mv "$tmp/runs" "$tmp/runs.second"
"$here/run.sh" "$titles" "$out" >"$tmp/report" || fail "the mended title"
[ "$(sed -n 's/.* begin //p' "$tmp/runs" | tr '\n' ,)" = "title 05_120k.kzd,title 05_240k.kzd," ] ||
    fail "ran: $(cat "$tmp/runs")"
[ "$(grep -c ': done$' "$tmp/report")" -eq 12 ] || fail "$(cat "$tmp/report")"

echo "== nothing to do"
rm "$tmp/runs"
"$here/run.sh" "$titles" "$out" >/dev/null
[ ! -e "$tmp/runs" ] || fail "packaged again: $(cat "$tmp/runs")"

echo "== the work of all runs, and what it left"
python3 - "$tmp" "$out" <<'END' || fail "see above"
import sys
import xml.etree.ElementTree as ElementTree
from pathlib import Path

tmp, out = map(Path, sys.argv[1:])
most = 0
for name in ("runs.killed", "runs.second"):
    open_runs = set()
    last = {}
    for line in (tmp / name).read_text().splitlines():
        _, what, run = line.split(" ", 2)
        title, rendition = run.rsplit("_", 1)
        if what == "end":
            open_runs.discard(run)
            continue
        assert not any(one.startswith(f"{title}_") for one in open_runs), f"{title}: side by side"
        kbit = int(rendition.removesuffix("k.kzd"))
        assert kbit > last.get(title, 0), f"{title}: {kbit} out of order"
        last[title] = kbit
        open_runs.add(run)
        most = max(most, len(open_runs))
assert most > 1, "titles did not run in parallel"

for i in range(1, 13):
    title = f"title {i:02}"
    folder = out / title
    root = ElementTree.parse(folder / f"{title}.kzd").getroot()
    media = [one.attrib for one in root if one.tag.endswith("}media")]
    assert [one["bitrate"] for one in media] == ["60", "120", "240"], media
    for one in media:
        for kind in ("kzs", "kzx"):
            assert (folder / f"{one['url']}Seg1.{kind}").stat().st_size > 100
    assert not (folder / ".work").exists()
    assert (folder / "log").read_text().count(" done\n") >= 3
END

echo "== one run at a time"
(flock -n 9 || exit 1
 ! "$here/run.sh" "$titles" "$out" >"$tmp/report" 2>&1 9>&- || exit 1) 9>"$out/.lock" ||
    fail "a second run was let in"
grep -q "another run works in" "$tmp/report" || fail "$(cat "$tmp/report")"
echo "batch: all tests passed"
