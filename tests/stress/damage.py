#!/usr/bin/env python3
"""Damages small inputs in every place and looks at how the program ends.

usage: damage.py BINARY CORPUS_FOLDER [--check PROGRAM] [--seconds N] [--jobs N] [--seed N]

Each file of the corpus is cut at every byte; each byte is set to 0x00 and 0xFF and flipped; each
32-bit word is set to 0, 1, 0x7FFFFFFF and 0xFFFFFFFF. The program ends with a documented status
within 5 seconds, or packages the file; PROGRAM then reads what was written.
"""
import argparse
import concurrent.futures
import pathlib
import random
import struct
import sys
import time

from common import absolute, Folder, MEDIA, run, Tally

WORDS = (0, 1, 0x7FFFFFFF, 0xFFFFFFFF)


def damaged(data):
    """(description, bytes) of every damage; each bytes once."""
    seen = {data}
    for what, bytes_ in all_damage(data):
        if bytes_ not in seen:
            seen.add(bytes_)
            yield what, bytes_


def all_damage(data):
    for n in range(len(data)):
        yield f"cut at {n}", data[:n]
        for name, value in (("0x00", 0), ("0xff", 0xFF), ("flipped", data[n] ^ 0xFF)):
            yield f"byte {n} {name}", data[:n] + bytes([value]) + data[n + 1:]
    for n in range(0, len(data) - 3):
        for word in WORDS:
            yield f"word {n} {word:#x}", data[:n] + struct.pack(">I", word) + data[n + 4:]


def command(binary, file, out):
    """How the program takes a file of this kind as its input."""
    kind = file.suffix
    if kind in (".flv", ".mp4"):
        return [binary, f"--input-file={file}", f"--output-path={out}", "--fragment-duration=1",
                "--external-bootstrap", "--edit-list"]
    if kind == ".kzd":
        return [binary, f"--input-file={MEDIA / 'short_3s.flv'}", f"--manifest-file={file}", f"--output-path={out}"]
    if kind == ".xml":
        return [binary, f"--conf-file={file}", f"--input-file={MEDIA / 'short_3s.flv'}", f"--output-path={out}"]
    mode = "--inspect-index" if kind == ".kzx" else "--inspect-bootstrap"
    return [binary, mode, f"--input-file={file}"]


def one(binary, checker, kind, data):
    with Folder() as work:
        file, out = work / f"input{kind}", work / "out"
        file.write_bytes(data)
        result = run(command(binary, file, out), cwd=work)
        complaint = result.complaint()
        if not complaint and result.status == 0 and checker and kind in (".flv", ".mp4") and out.is_dir():
            checked = run([checker, out, "input"], timeout=20)
            if checked.status != 0:
                complaint = f"what was packaged is wrong: {checked.out[:120]!r}"
        return complaint


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("binary", type=absolute)
    parser.add_argument("corpus", type=absolute)
    parser.add_argument("--check", type=absolute)
    parser.add_argument("--seconds", type=float, default=1e9)
    parser.add_argument("--jobs", type=int, default=2)
    parser.add_argument("--seed", type=int, default=int(time.time()))
    parser.add_argument("--keep", type=pathlib.Path, help="folder that gets the inputs with findings")
    options = parser.parse_args()
    kinds = (".flv", ".mp4", ".kzd", ".xml", ".kzx", ".bootstrap")
    files = [f for f in options.corpus.iterdir() if f.suffix in kinds]
    print(f"damage: seed {options.seed}")
    chance = random.Random(options.seed)
    good, end = True, time.monotonic() + options.seconds
    with concurrent.futures.ThreadPoolExecutor(options.jobs) as pool:
        # The small ones first: what they leave of their time goes to the others.
        for place, file in enumerate(sorted(files, key=lambda f: f.stat().st_size)):
            tally = Tally(f"damage of {file.name}")
            stop = time.monotonic() + (end - time.monotonic()) / (len(files) - place)
            cases = list(damaged(file.read_bytes()))
            chance.shuffle(cases)
            for start in range(0, len(cases), 64):
                if time.monotonic() > stop:
                    break
                batch = cases[start:start + 64]
                jobs = [pool.submit(one, options.binary, options.check, file.suffix, data) for _, data in batch]
                for (what, data), job in zip(batch, jobs):
                    complaint = job.result()
                    tally.record(complaint, what)
                    if complaint and options.keep:
                        options.keep.mkdir(exist_ok=True)
                        name = what.replace(" ", "_")
                        (options.keep / f"{file.stem}_{name}{file.suffix}").write_bytes(data)
            if tally.tried < len(cases):
                tally.left_out = f"of {len(cases)}, in the time given"
            good = tally.show() and good
    sys.exit(0 if good else 1)


if __name__ == "__main__":
    main()
