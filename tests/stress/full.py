#!/usr/bin/env python3
"""Packages into real file systems that are too small.

usage: full.py BINARY

Mounts small file systems in memory, where the system lets it, and fills them up to every page. The
run ends in an error line and leaves no manifest of what isn't there; with enough room it succeeds.
"""
import argparse
import subprocess
import sys

from common import absolute, digest, Folder, MEDIA, run, Tally

PAGE = 4096
CLIP = MEDIA / "short_3s.flv"


class SmallDisk:
    """A file system of some pages, mounted for as long as the with-block runs."""

    def __init__(self, folder, pages):
        self.folder, self.pages = folder, pages

    def __enter__(self):
        self.folder.mkdir(exist_ok=True)
        subprocess.run(["mount", "-t", "tmpfs", "-o", f"size={self.pages * PAGE}", "tmpfs", self.folder],
                       check=True, capture_output=True)
        return self.folder

    def __exit__(self, *_):
        subprocess.run(["umount", self.folder], check=False)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("binary", type=absolute)
    binary = parser.parse_args().binary
    tally = Tally("real file systems that are full")

    def package(out):
        return run([binary, f"--input-file={CLIP}", f"--output-path={out}", "--external-bootstrap",
                    "--fragment-duration=1"])

    with Folder() as work:
        package(work / "whole")
        whole = digest(work / "whole")
        needed = sum((f.stat().st_size + PAGE - 1) // PAGE for f in (work / "whole").iterdir())
        for pages in range(1, needed + 3):
            try:
                with SmallDisk(work / "disk", pages) as disk:
                    result = package(disk)
                    complaint = result.complaint()
                    if not complaint and result.status == 0 and digest(disk) != whole:
                        complaint = "succeeded with other bytes"
                    if not complaint and pages > needed and result.status != 0:
                        complaint = "fails with room enough"
                    manifest = disk / "short_3s.kzd"
                    if not complaint and result.status != 0 and manifest.exists() and manifest.stat().st_size:
                        complaint = "failed and left a manifest"
                    tally.record(complaint, f"{pages} pages of {needed}")
            except (subprocess.CalledProcessError, FileNotFoundError):
                tally.left_out = "left out: no right to mount"
                break
    sys.exit(0 if tally.show() else 1)


if __name__ == "__main__":
    main()
