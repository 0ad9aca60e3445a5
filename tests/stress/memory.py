#!/usr/bin/env python3
"""Lets every allocation of small packaging runs fail in turn and looks at how the run ends.

usage: memory.py BINARY FAULT_OBJECT CORPUS_FOLDER PROTECTION_FOLDER [--check PROGRAM] [--most N] [--jobs N] [--leaks]

The n-th allocation fails, alone or with all later ones. The run ends with one error line (with none
where memory for that is missing as well), or packages the file: then it is what the reader takes.
There is never half a manifest. With --leaks BINARY is built with the address sanitizer: nothing
leaks but what leaks.txt names. --most takes about so many allocations of each run, evenly spread;
without it all are tried.

One run serves all of its allocations: at each of them it forks, and the child is the one that
fails.
"""
import argparse
import concurrent.futures
import os
import random
import re
import shutil
import signal
import subprocess
import sys
import threading
import xml.etree.ElementTree

from common import absolute, EPOCH, Folder, Result, run, Tally, TOP

CASES = {
    "flv": ["small.flv", "--external-bootstrap", "--fragment-duration=1"],
    "mp4": ["small.mp4", "--fragment-duration=1"],
    "fragmented mp4": ["fragmented.mp4", "--fragment-duration=1", "--edit-list"],
    "protected": ["small.flv", "--fragment-duration=1", "--conf-file={protection}/settings.xml"],
}
# Functions of others that go on without the memory, and which those are.
CARELESS = {b"EVP_KDF_CTX_new": "OpenSSL 3.0 takes the memory for a key derivation without a look"}
# What a sanitizer ends with that has found something. The program hasn't this one.
SANITIZER_STATUS = 98
SANITIZERS = {"ASAN_OPTIONS": f"verify_asan_link_order=0:fast_unwind_on_malloc=0:exitcode={SANITIZER_STATUS}",
              "LSAN_OPTIONS": f"exitcode={SANITIZER_STATUS}:print_suppressions=0:suppressions={TOP / 'tests/stress/leaks.txt'}"}


class Memory:
    def __init__(self, options):
        self.options = options
        self.lock = threading.Lock()
        self.careless = set()

    def start(self, case, folder, env, **more):
        name, *arguments = CASES[case]
        arguments = [a.format(protection=self.options.protection) for a in arguments]
        folder.mkdir()
        full = {**os.environ, **EPOCH, **(SANITIZERS if self.options.leaks else {}), **env,
                "LD_PRELOAD": str(self.options.fault_object)}
        return subprocess.Popen([self.options.binary, f"--input-file={self.options.corpus / name}",
                                 "--output-path=out", *arguments], env=full, cwd=folder, stdin=subprocess.DEVNULL,
                                stderr=subprocess.PIPE, **more)

    def count(self, case):
        """How many allocations a run has that nothing happens to."""
        with Folder() as work:
            child = self.start(case, work / "run", {"KZ_MEMORY_REPORT": str(work / "report")})
            _, err = child.communicate(timeout=60)
            if child.returncode != 0 or err:
                sys.exit(f"{case} fails without a fault: {err[:200]!r}")
            return int((work / "report").read_text())

    def go(self, case, forever, first, step, tally):
        """One run that forks at every `step`-th allocation from `first` on."""
        with Folder() as work:
            ours, its = os.pipe()
            env = {"KZ_MEMORY_EACH": f"{first} {step} {its}", "KZ_MEMORY_FOREVER": "1" if forever else "0"}
            child = self.start(case, work / "run", env, pass_fds=[its])
            os.close(its)
            with os.fdopen(ours) as reports:
                for line in reports:
                    number, status = line.split()
                    complaint = self.complaint(work / number, CASES[case][0].split(".")[0], int(status), forever)
                    with self.lock:
                        tally.record(complaint, f"allocation {number}")
                    shutil.rmtree(work / number, ignore_errors=True)
            _, err = child.communicate()
            if child.returncode != 0 or err:
                with self.lock:
                    tally.record(f"the run itself ended with {child.returncode}: {err[:200]!r}", "no allocation")

    def complaint(self, folder, base, status, forever):
        if not (folder / "stderr").exists():
            return f"wait status {status}, and no copy of the folder"
        result = Result(os.waitstatus_to_exitcode(status), b"", (folder / "stderr").read_bytes())
        complaint = result.complaint()
        for function, what in CARELESS.items():
            if result.status in (-signal.SIGSEGV, SANITIZER_STATUS) and function in result.err:
                self.careless.add(what)
                return None
        if result.status == -signal.SIGSEGV:
            return f"crashed: {result.err.decode(errors='replace')}"
        if result.status == SANITIZER_STATUS:
            return "; ".join(re.findall(r"ERROR: .*|#[1-9]\d* .*?(in .*)", result.err.decode(errors="replace"))[:30])
        # With no memory at all there may be none for the line either; the status tells.
        if complaint and not (forever and result.status in (1, 12) and not result.err):
            return complaint
        manifest = folder / "out" / f"{base}.kzd"
        if manifest.exists():
            try:
                xml.etree.ElementTree.parse(manifest)
            except xml.etree.ElementTree.ParseError as failure:
                return f"half a manifest: {failure}"
        if result.status == 0 and self.options.check:
            checked = run([self.options.check, folder / "out", base], timeout=20)
            if checked.status != 0:
                return f"what was packaged is wrong: {checked.out[:120]!r}"
        return None


def main():
    parser = argparse.ArgumentParser()
    for name in ("binary", "fault_object", "corpus", "protection"):
        parser.add_argument(name, type=absolute)
    parser.add_argument("--check", type=absolute)
    parser.add_argument("--most", type=int, default=sys.maxsize)
    parser.add_argument("--jobs", type=int, default=os.cpu_count())
    parser.add_argument("--leaks", action="store_true")
    options = parser.parse_args()
    memory = Memory(options)
    good = True
    with concurrent.futures.ThreadPoolExecutor(options.jobs) as pool:
        for case in CASES:
            calls = memory.count(case)
            step = -(-calls // options.most)
            for forever in (False, True):
                what = "no memory and no leak" if options.leaks else "no memory"
                tally = Tally(f"{what} in {case}, {'from then on' if forever else 'once'}")
                # Another run takes others.
                first = random.randint(1, step)
                jobs = [pool.submit(memory.go, case, forever, first + step * job, step * options.jobs, tally)
                        for job in range(options.jobs)]
                for job in jobs:
                    job.result()
                # A run whose random numbers differ may take some more or less.
                tally.left_out = "; ".join([f"of about {calls}", *memory.careless])
                memory.careless.clear()
                if tally.tried < calls // step * 0.99:
                    tally.record(f"only {tally.tried}", "count")
                good = tally.show() and good
    sys.exit(0 if good else 1)


if __name__ == "__main__":
    main()
