#!/usr/bin/env python3
"""Runs every fuzz target for its share of the time.

usage: fuzz.py FOLDER_OF_TARGETS [--seconds N] [--keep FOLDER]

What is found in one run is the start of the next: --keep has the inputs that reached something new,
in a folder for each target, and beside them those that failed.
"""
import argparse
import os
import re
import subprocess
import sys
import time

from common import absolute, Tally, TOP

FUZZ = TOP / "tests" / "fuzz"
# A run keeps its segment writers until the process ends, which takes memory.
RUNS = {"package": 2000}
# It would search the heap for what those writers keep after each input, and weigh inputs by how rare
# their features are, which takes longer than to package them. Leaks are looked for at the end.
OPTIONS = {"package": ["-detect_leaks=0", "-entropic=0"]}
# Slow, and with the most behind them.
SHARES = {"package": 6, "kzm": 3, "flv": 2, "manifest": 2}
LIMITS = ["-rss_limit_mb=512", "-timeout=5", "-max_len=4096", "-print_final_stats=1"]


def one_process(program, target, seconds, keep):
    """Answers the count of inputs and the complaint of the sanitizers, if any."""
    found = keep / target
    found.mkdir(parents=True, exist_ok=True)
    argv = [program, *LIMITS, f"-max_total_time={max(1, int(seconds))}", f"-artifact_prefix={keep}/failed-{target}-"]
    dictionary = FUZZ / "dictionaries" / f"{target}.dict"
    if dictionary.exists():
        argv.append(f"-dict={dictionary}")
    argv += OPTIONS.get(target, [])
    if target in RUNS:
        argv.append(f"-runs={RUNS[target]}")
    folders = [found, FUZZ / "corpus" / target, FUZZ / "regressions" / target]
    env = dict(os.environ, ASAN_OPTIONS="quarantine_size_mb=16")
    done = subprocess.run([str(a) for a in argv + [f for f in folders if f.is_dir()]], env=env, capture_output=True,
                          text=True, errors="replace")
    count = re.search(r"number_of_executed_units: *(\d+)", done.stderr)
    complaint = None
    if done.returncode != 0:
        reasons = re.findall(r"(?:SUMMARY|broken promise|runtime error|Test unit written).*", done.stderr)
        complaint = "; ".join(reasons) or done.stderr[-200:]
    return int(count.group(1)) if count else 0, complaint


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("targets", type=absolute)
    parser.add_argument("--seconds", type=float, default=60)
    parser.add_argument("--keep", type=absolute, default=TOP / "build" / "stress" / "fuzz")
    options = parser.parse_args()
    targets = sorted(f.stem for f in (FUZZ / "corpus").iterdir())
    good, end = True, time.monotonic() + options.seconds
    for place, target in enumerate(targets):
        program = options.targets / f"fuzz_{target}"
        tally = Tally(f"fuzzing: {target}")
        shares = [SHARES.get(t, 1) for t in targets[place:]]
        stop = time.monotonic() + (end - time.monotonic()) * shares[0] / sum(shares)
        while True:
            count, complaint = one_process(program, target, stop - time.monotonic(), options.keep)
            tally.tried += count
            if complaint:
                tally.failed += 1
                tally.findings.append(complaint)
            if complaint or time.monotonic() > stop - 1:
                break
        good = tally.show() and good
    sys.exit(0 if good else 1)


if __name__ == "__main__":
    main()
