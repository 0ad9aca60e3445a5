#!/usr/bin/env python3
"""Fails every file call of a packaging run in turn and looks at how the run ends.

usage: faults.py BINARY FAULT_OBJECT PROTECTION_FOLDER [--seconds N] [--jobs N]

A call that is interrupted or comes back short must not be seen in the result; any other fault ends
the run with one error line and a status other than 0. PROTECTION_FOLDER is one of make_corpus.
"""
import argparse
import concurrent.futures
import random
import sys
import time

from common import absolute, digest, Folder, MEDIA, run, Tally

SILENT = ("EINTR", "SHORT")
LOUD = ("ENOSPC", "EIO", "EDQUOT")
# Keys are drawn anew in every run, so the bytes of a protected one can't be compared.
CASES = {
    "flv": ["short_3s.flv", "--external-bootstrap", "--fragment-duration=1", "--segment-duration=2"],
    "mp4": ["ac3.mp4", "--external-bootstrap"],
    "fragmented mp4": ["frag_dbm.mp4", "--segment-duration=5"],
    "second rendition": ["mbr_60k.flv", "--manifest-file={work}/old.kzd", "--conf-file={work}/plain.xml"],
    "protected": ["short_3s.flv", "--conf-file={protection}/settings.xml", "--dump-drm-metadata",
                  "--external-bootstrap"],
}
PLAIN_SETTINGS = "<s><bitrate>300</bitrate></s>"


class Faults:
    def __init__(self, binary, fault_object, protection):
        self.binary, self.fault_object, self.protection = binary, fault_object, protection
        with Folder() as work:
            run([binary, f"--input-file={MEDIA / 'short_3s.flv'}", f"--output-path={work}"])
            self.old = (work / "short_3s.kzd").read_bytes()

    def go(self, case, at, kind):
        """One run with the fault; answers its result, the count of calls, the call that failed with its path,
        and what was written."""
        clip, *options = CASES[case]
        with Folder() as work:
            (work / "old.kzd").write_bytes(self.old)
            (work / "plain.xml").write_text(PLAIN_SETTINGS)
            options = [o.format(work=work, protection=self.protection) for o in options]
            out, report = work / "out", work / "report"
            env = {"LD_PRELOAD": str(self.fault_object), "KZ_FAULT_AT": str(at), "KZ_FAULT_KIND": kind,
                   "KZ_FAULT_REPORT": str(report)}
            result = run([self.binary, f"--input-file={MEDIA / clip}", f"--output-path={out}", *options], env,
                         cwd=work)
            report = report.read_text().strip() if report.exists() else "0 "
            count, _, call = report.partition(" ")
            written = digest(out) if out.exists() else ""
            old_stays = (work / "old.kzd").read_bytes() == self.old
        if case == "protected":
            written = "\n".join(line.split()[0] for line in written.splitlines())
        return result, int(count), call, written, old_stays

    def verdict(self, kind, outcome, expected):
        result, _, call, written, old_stays = outcome
        if result.complaint():
            return f"{call}: {result.complaint()}"
        if not old_stays:
            return f"{call}: an older manifest was changed"
        if kind in SILENT:
            if result.status != 0:
                return f"{call}: status {result.status}: {result.err[:80]!r}"
            return None if written == expected else f"{call}: other bytes than without the fault"
        # Whoever asks for a position that he doesn't use may overlook that there is none.
        if result.status == 0 and call.startswith("tell") and written == expected:
            return None
        if result.status == 0 and not self.may_pass(call):
            return f"{call} failed and the run succeeded"
        return None

    @staticmethod
    def may_pass(call):
        """The faults that change nothing of what is written."""
        name, _, path = call.partition(" ")
        # Segments and inputs are closed without asking; of a segment a copy is closed first, which is checked.
        if name in ("close", "fclose"):
            return True
        # A settings file that can't be opened counts as empty, and libraries look for files of their own.
        return name in ("open", "fopen") and (path.endswith(".xml") or path.startswith(("/etc/", "/usr/", "/proc/")))


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("binary", type=absolute)
    parser.add_argument("fault_object", type=absolute)
    parser.add_argument("protection", type=absolute)
    parser.add_argument("--seconds", type=float, default=1e9)
    parser.add_argument("--jobs", type=int, default=2)
    options = parser.parse_args()
    faults = Faults(options.binary, options.fault_object, options.protection)
    good, end = True, time.monotonic() + options.seconds
    rows = [(case, kind) for case in CASES for kind in SILENT + LOUD]
    with concurrent.futures.ThreadPoolExecutor(options.jobs) as pool:
        for row, (case, kind) in enumerate(rows):
            if kind == SILENT[0]:
                clean, calls, _, expected, _ = faults.go(case, 0, "EIO")
                if clean.status != 0:
                    sys.exit(f"{case} fails without a fault: {clean.err!r}")
            tally = Tally(f"fault {kind} in {case}")
            places = list(range(1, calls + 1))
            random.Random(1).shuffle(places)
            stop = time.monotonic() + (end - time.monotonic()) / (len(rows) - row)
            for start in range(0, calls, 8):
                if time.monotonic() > stop:
                    break
                batch = places[start:start + 8]
                jobs = [pool.submit(faults.go, case, at, kind) for at in batch]
                for at, job in zip(batch, jobs):
                    tally.record(faults.verdict(kind, job.result(), expected), f"call {at}")
            if tally.tried < calls:
                tally.left_out = f"of {calls}, in the time given"
            good = tally.show() and good
    sys.exit(0 if good else 1)


if __name__ == "__main__":
    main()
