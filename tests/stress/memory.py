#!/usr/bin/env python3
"""Lets every allocation of small packaging runs fail in turn and looks at how the run ends.

usage: memory.py BINARY FAULT_OBJECT CORPUS_FOLDER PROTECTION_FOLDER [--check PROGRAM] [--seconds N] [--jobs N]

The n-th allocation fails, alone or with all later ones. The run ends with one error line (with none
where memory for that is missing as well), or packages the file: then it is what the reader takes.
There is never half a manifest.
"""
import argparse
import concurrent.futures
import random
import sys
import time
import xml.etree.ElementTree

from common import absolute, Folder, run, Tally

CASES = {
    "flv": ["small.flv", "--external-bootstrap", "--fragment-duration=1"],
    "mp4": ["small.mp4", "--fragment-duration=1"],
    "fragmented mp4": ["fragmented.mp4", "--fragment-duration=1", "--edit-list"],
    "protected": ["small.flv", "--fragment-duration=1", "--conf-file={protection}/settings.xml"],
}


class Memory:
    def __init__(self, options):
        self.options = options

    def go(self, case, at, forever):
        """One run; answers what is wrong with it and how many allocations there were."""
        name, *more = CASES[case]
        with Folder() as work:
            out, report = work / "out", work / "report"
            more = [o.format(protection=self.options.protection) for o in more]
            env = {"LD_PRELOAD": str(self.options.fault_object), "KZ_MEMORY_AT": str(at),
                   "KZ_MEMORY_FOREVER": "1" if forever else "0", "KZ_MEMORY_REPORT": str(report)}
            result = run([self.options.binary, f"--input-file={self.options.corpus / name}", f"--output-path={out}",
                          *more], env, cwd=work)
            count = int(report.read_text()) if report.exists() else 0
            return self.complaint(result, out, name.split(".")[0], forever), count

    def complaint(self, result, out, base, forever):
        complaint = result.complaint()
        # With no memory at all there may be none for the line either; the status tells.
        if complaint and not (forever and result.status > 0 and not result.err):
            return complaint
        manifest = out / f"{base}.kzd"
        if manifest.exists():
            try:
                xml.etree.ElementTree.parse(manifest)
            except xml.etree.ElementTree.ParseError as failure:
                return f"half a manifest: {failure}"
        if result.status == 0 and self.options.check:
            checked = run([self.options.check, out, base], timeout=20)
            if checked.status != 0:
                return f"what was packaged is wrong: {checked.out[:120]!r}"
        return None


def main():
    parser = argparse.ArgumentParser()
    for name in ("binary", "fault_object", "corpus", "protection"):
        parser.add_argument(name, type=absolute)
    parser.add_argument("--check", type=absolute)
    parser.add_argument("--seconds", type=float, default=1e9)
    parser.add_argument("--jobs", type=int, default=2)
    options = parser.parse_args()
    memory = Memory(options)
    good, end = True, time.monotonic() + options.seconds
    rows = [(case, forever) for case in CASES for forever in (False, True)]
    with concurrent.futures.ThreadPoolExecutor(options.jobs) as pool:
        for row, (case, forever) in enumerate(rows):
            complaint, calls = memory.go(case, 0, False)
            if complaint or not calls:
                sys.exit(f"{case} fails without a fault: {complaint}")
            tally = Tally(f"no memory in {case}, {'from then on' if forever else 'once'}")
            places = list(range(1, calls + 1))
            random.Random(1).shuffle(places)
            stop = time.monotonic() + (end - time.monotonic()) / (len(rows) - row)
            for start in range(0, calls, 16):
                if time.monotonic() > stop:
                    break
                batch = places[start:start + 16]
                jobs = [pool.submit(memory.go, case, at, forever) for at in batch]
                for at, job in zip(batch, jobs):
                    tally.record(job.result()[0], f"allocation {at}")
            if tally.tried < calls:
                tally.left_out = f"of {calls}, in the time given"
            good = tally.show() and good
    sys.exit(0 if good else 1)


if __name__ == "__main__":
    main()
