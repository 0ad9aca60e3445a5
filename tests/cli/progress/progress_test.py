#!/usr/bin/env python3
"""Asks a run over a slow input for its progress by SIGUSR1.

usage: progress_test.py BINARY SLOW_READ_OBJECT MAKE_INPUT CLIP

The input is longer than what the reader keeps of a file, so that samples wait for it.
"""
import os
import pathlib
import re
import signal
import subprocess
import sys
import tempfile
import time

LINE = re.compile(rb"^(\d+) bytes read, (\d+\.\d) s of (\d+\.\d) s, fragments: (\d+), segments: 1, "
                  rb"\d+\.\d MB/s, \d+\.\d s left$")


def main():
    binary, slow_read, make_input, clip = sys.argv[1:]
    with tempfile.TemporaryDirectory() as folder:
        recording = f"{folder}/recording.flv"
        subprocess.run([sys.executable, make_input, "frames", clip, recording, "6"], check=True)
        size = os.path.getsize(recording)
        env = dict(os.environ, LD_PRELOAD=slow_read, KZ_READ_MS="60", ASAN_OPTIONS="verify_asan_link_order=0")
        run = subprocess.Popen([binary, f"--input-file={recording}", f"--output-path={folder}/out"], env=env,
                               stderr=subprocess.PIPE)
        # From the first fragment on, the samples are on their way.
        index = pathlib.Path(folder, "out")
        deadline = time.monotonic() + 60
        while run.poll() is None and not list(index.glob("*.kzx")) and time.monotonic() < deadline:
            time.sleep(0.01)
        while run.poll() is None and time.monotonic() < deadline:
            run.send_signal(signal.SIGUSR1)
            time.sleep(0.1)
        _, text = run.communicate(timeout=60)
    lines = text.splitlines()
    if run.returncode != 0 or not lines:
        sys.exit(f"status {run.returncode}, standard error: {text!r}")
    before = 0
    for line in lines:
        match = LINE.match(line)
        if not match or not before <= int(match.group(1)) <= size:
            sys.exit(f"unexpected line {line!r} for an input of {size} bytes")
        before = int(match.group(1))
    print(f"{len(lines)} lines, the last: {lines[-1].decode()}")


if __name__ == "__main__":
    main()
