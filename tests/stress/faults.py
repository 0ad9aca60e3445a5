#!/usr/bin/env python3
"""Fails every file call of a packaging run in turn and looks at how the run ends.

usage: faults.py BINARY FAULT_OBJECT [--seconds N]

A call that is interrupted or comes back short must not be seen in the result; any other fault ends
the run with one error line and a status other than 0.
"""
import argparse
import random
import sys
import time

from common import MEDIA, Folder, Tally, digest, run

SILENT = ("EINTR", "SHORT")
LOUD = ("ENOSPC", "EIO", "EDQUOT")
CASES = {
    "flv": ["short_3s.flv", "--external-bootstrap", "--fragment-duration=1", "--segment-duration=2"],
    "mp4": ["ac3.mp4", "--external-bootstrap"],
    "fragmented mp4": ["frag_dbm.mp4", "--segment-duration=5"],
}


class Faults:
    def __init__(self, binary, fault_object):
        self.binary, self.fault_object = binary, fault_object

    def go(self, work, case, at, kind):
        """One run with the fault; answers its result, the name of the call that failed, and what was written."""
        clip, *options = CASES[case]
        out, report = work / "out", work / "report"
        env = {"LD_PRELOAD": str(self.fault_object), "KZ_FAULT_AT": str(at), "KZ_FAULT_KIND": kind,
               "KZ_FAULT_REPORT": str(report), "ASAN_OPTIONS": "verify_asan_link_order=0"}
        result = run([self.binary, f"--input-file={MEDIA / clip}", f"--output-path={out}", *options], env)
        count, _, name = report.read_text().partition(" ")
        return result, int(count), name.strip(), digest(out) if out.exists() else ""

    def verdict(self, result, kind, name, written, expected):
        if result.complaint():
            return result.complaint()
        if kind in SILENT:
            if result.status != 0:
                return f"{name}: status {result.status}: {result.err[:80]!r}"
            return None if written == expected else f"{name}: other bytes than without the fault"
        # Descriptors are closed without asking: all that was written was checked before.
        if result.status == 0 and name not in ("close", "lseek-at-end"):
            return f"{name} failed and the run succeeded"
        return None


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("binary")
    parser.add_argument("fault_object")
    parser.add_argument("--seconds", type=float, default=1e9)
    options = parser.parse_args()
    faults = Faults(options.binary, options.fault_object)
    good = True
    end = time.monotonic() + options.seconds
    for case in CASES:
        with Folder() as work:
            clean, calls, _, expected = faults.go(work, case, 0, "EIO")
        if clean.status != 0:
            sys.exit(f"{case} fails without a fault: {clean.err!r}")
        for kind in SILENT + LOUD:
            tally = Tally(f"fault {kind} in {case}, {calls} calls")
            places = list(range(1, calls + 1))
            random.Random(1).shuffle(places)
            budget = (end - time.monotonic()) / max(1, len(CASES) * len(SILENT + LOUD))
            stop = time.monotonic() + max(budget, 2)
            for at in places:
                if time.monotonic() > stop:
                    break
                with Folder() as work:
                    result, _, name, written = faults.go(work, case, at, kind)
                    tally.record(faults.verdict(result, kind, name, written, expected), f"call {at}")
            good = tally.show() and good
    sys.exit(0 if good else 1)


if __name__ == "__main__":
    main()
