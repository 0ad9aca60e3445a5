#!/usr/bin/env python3
"""Kills runs at random moments and looks at what they leave.

usage: death.py BINARY [--seconds N] [--seed N]

After a kill: no manifest unless its segments are complete; every index on disk parses and points
into bytes that exist; the same command run again gives the bytes of a run that was never killed.
An older manifest of another name that the run was given is untouched.
"""
import argparse
import os
import random
import signal
import struct
import subprocess
import sys
import time

from common import absolute, digest, EPOCH, Folder, MEDIA, run, Tally

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


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("binary", type=absolute)
    parser.add_argument("--seconds", type=float, default=60)
    parser.add_argument("--seed", type=int, default=int(time.time()))
    options = parser.parse_args()
    print(f"death: seed {options.seed}")
    chance = random.Random(options.seed)
    tally = Tally("killed at a random moment")
    argv = [options.binary, f"--input-file={MEDIA / 'audio_5min.flv'}", "--fragment-duration=0.2",
            "--segment-duration=60"]
    with Folder() as work:
        start = time.monotonic()
        if run(argv + [f"--output-path={work / 'whole'}"], timeout=60).status != 0:
            sys.exit("the run fails without being killed")
        length = time.monotonic() - start
        whole = digest(work / "whole")
        old = work / "old.kzd"
        old.write_bytes((work / "whole" / "audio_5min.kzd").read_bytes())
        before = old.read_bytes()
        end = time.monotonic() + options.seconds
        number = 0
        while time.monotonic() < end:
            number += 1
            out = work / f"out{number}"
            child = subprocess.Popen(argv + [f"--output-path={out}"], env=dict(os.environ, **EPOCH),
                                     stderr=subprocess.DEVNULL)
            time.sleep(chance.uniform(0, length * 1.1))
            child.send_signal(signal.SIGKILL)
            child.wait()
            complaint = None
            if (out / "audio_5min.kzd").exists() and child.returncode != 0:
                # Killed while the manifest was written: everything else must be there.
                mine = set(digest(out).splitlines())
                missing = [l for l in whole.splitlines() if ".kzd" not in l and l not in mine]
                complaint = f"a manifest without {missing[0]}" if missing else None
            for file in sorted(out.glob("*.kzx")) if out.exists() else []:
                complaint = complaint or index_complaint(out, file)
            if not complaint and run(argv + [f"--output-path={out}"], timeout=60).status != 0:
                complaint = "the same command fails afterwards"
            if not complaint and digest(out) != whole:
                complaint = "the same command gives other bytes afterwards"
            if not complaint and old.read_bytes() != before:
                complaint = "an older manifest changed"
            tally.record(complaint, f"kill {number}")
            subprocess.run(["rm", "-rf", str(out)], check=True)
    sys.exit(0 if tally.show() else 1)


if __name__ == "__main__":
    main()
