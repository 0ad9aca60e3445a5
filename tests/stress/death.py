#!/usr/bin/env python3
"""Kills runs at random moments and looks at what they leave.

usage: death.py BINARY [--seconds N] [--seed N]

After a kill: no manifest unless its segments are complete; every index on disk parses and points
into bytes that exist; the same command run again gives the bytes of a run that was never killed.
An older manifest that the run adds its own rendition to, under another name, is untouched.
"""
import argparse
import os
import random
import shutil
import signal
import struct
import subprocess
import sys
import time

from common import absolute, digest, EPOCH, Folder, MEDIA, run, Tally

CASES = {
    "flv": ("audio_5min.flv", ["--fragment-duration=0.2", "--segment-duration=60"]),
    "mp4": ("long_gop_9s.mp4", ["--fragment-duration=0.2", "--segment-duration=3"]),
}
NO_DATA = 0xFFFFFFFFFFFFFFFF


def index_complaint(folder, file):
    data = file.read_bytes()
    if len(data) < 21 or data[4:8] != b"afra":
        return f"{file.name} is no index"
    # It may be longer than its box says: entries come before the box tells of them.
    if struct.unpack(">I", data[:4])[0] > len(data):
        return f"{file.name} is cut"
    (local,) = struct.unpack(">I", data[17:21])
    if not data[12] & 0x20:
        return None
    (count,) = struct.unpack(">I", data[21 + 16 * local:25 + 16 * local])
    stem = file.name.rsplit("Seg", 1)[0]
    for i in range(count):
        at = 25 + 16 * local + 32 * i
        _, segment, fragment, offset, _ = struct.unpack(">QIIQQ", data[at:at + 32])
        if offset in (NO_DATA, 0):
            continue
        path = folder / f"{stem}Seg{segment}.kzs"
        if offset > path.stat().st_size:
            return f"{file.name}: fragment {fragment} lies behind the end of {path.name}"
    return None


class Case:
    """Runs that are all killed, and the run that isn't."""

    def __init__(self, binary, name, clip, options):
        self.binary, self.name, self.clip, self.options = binary, name, clip, options
        self.base = clip.rsplit(".", 1)[0]

    def command(self, old, out):
        return [self.binary, f"--input-file={MEDIA / self.clip}", f"--manifest-file={old}", f"--output-path={out}",
                "--external-bootstrap", *self.options]

    def complaint(self, out, whole, was_killed):
        """What is wrong with what a killed run has left."""
        manifest = out / f"{self.base}.kzd"
        if was_killed and manifest.exists():
            # Killed while the manifest was written: everything else must be there.
            mine = set(digest(out).splitlines())
            missing = [line for line in whole.splitlines() if ".kzd" not in line and line not in mine]
            if missing:
                return f"a manifest without {missing[0]}"
        found = (index_complaint(out, file) for file in sorted(out.glob("*.kzx")))
        return next((complaint for complaint in found if complaint), None)

    def show(self, chance, seconds):
        tally = Tally(f"killed at a random moment: {self.name}")
        with Folder() as work:
            run([self.binary, f"--input-file={MEDIA / 'short_3s.flv'}", f"--output-path={work}", "--bitrate=300"])
            old = work / "short_3s.kzd"
            before = old.read_bytes()
            start = time.monotonic()
            if run(self.command(old, work / "whole"), timeout=60).status != 0:
                sys.exit(f"the run of {self.name} fails without being killed")
            length = time.monotonic() - start
            whole = digest(work / "whole")
            end = time.monotonic() + seconds
            while time.monotonic() < end:
                out = work / f"out{tally.tried}"
                child = subprocess.Popen(self.command(old, out), env=dict(os.environ, **EPOCH),
                                         stderr=subprocess.DEVNULL)
                time.sleep(chance.uniform(0, length * 1.1))
                child.send_signal(signal.SIGKILL)
                child.wait()
                complaint = self.complaint(out, whole, child.returncode != 0) if out.exists() else None
                if not complaint and run(self.command(old, out), timeout=60).status != 0:
                    complaint = "the same command fails afterwards"
                if not complaint and digest(out) != whole:
                    complaint = "the same command gives other bytes afterwards"
                if not complaint and old.read_bytes() != before:
                    complaint = "the older manifest changed"
                tally.record(complaint, f"kill {tally.tried + 1}")
                shutil.rmtree(out, ignore_errors=True)
        return tally.show()


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("binary", type=absolute)
    parser.add_argument("--seconds", type=float, default=60)
    parser.add_argument("--seed", type=int, default=int(time.time()))
    options = parser.parse_args()
    print(f"death: seed {options.seed}")
    chance, begin = random.Random(options.seed), time.monotonic()
    good = True
    for place, (name, what) in enumerate(CASES.items()):
        stop = (options.seconds - (time.monotonic() - begin)) / (len(CASES) - place)
        good = Case(options.binary, name, *what).show(chance, stop) and good
    sys.exit(0 if good else 1)


if __name__ == "__main__":
    main()
