#!/usr/bin/env python3
"""Many runs, and large ones.

usage: load.py BINARY [--long] [--runs N]

Runs in a row and eight at once into one folder leave the same bytes as one alone, and nothing else.
A recording of 20 hours needs the memory of one fragment and the tables. With --long a segment grows
beyond 4 GiB.
"""
import argparse
import concurrent.futures
import os
import shutil
import struct
import subprocess
import sys
import tempfile

from common import absolute, digest, EPOCH, Folder, MEDIA, run, Tally

FRAGMENT_SECONDS = 4
HOURS = 20
# One fragment and the tables of 18,000 take about 20 MB, the recording 220.
MOST_MEMORY_KB = 40 * 1024
GIB = 1 << 30


def tag(kind, ms, body):
    return (bytes([kind]) + len(body).to_bytes(3, "big") + (ms & 0xFFFFFF).to_bytes(3, "big") + bytes([ms >> 24])
            + b"\0\0\0" + body + struct.pack(">I", len(body) + 11))


def avc(is_key, data):
    body = struct.pack(">I", len(data) + 1) + (b"\x65" if is_key else b"\x41") + data
    return (b"\x17" if is_key else b"\x27") + b"\x01\0\0\0" + body


def write_recording(path, seconds, frame_bytes, frames_a_second):
    """A key frame every 4 seconds."""
    with open(path, "wb") as out:
        out.write(b"FLV\x01\x05\0\0\0\x09\0\0\0\0")
        out.write(tag(9, 0, b"\x17\0\0\0\0\x01\x42\0\x1e\xff\xe1\0\x04\x67\x42\0\x1e\x01\0\x02\x68\xce"))
        out.write(tag(8, 0, b"\xaf\0\x12\x10"))
        filler, sound = b"\x5a" * frame_bytes, b"\xaf\x01" + b"\x21" * 20
        for n in range(seconds * frames_a_second):
            ms = n * 1000 // frames_a_second
            out.write(tag(9, ms, avc(n % (FRAGMENT_SECONDS * frames_a_second) == 0, filler)))
            out.write(tag(8, ms, sound))


class Load:
    def __init__(self, options):
        self.options = options

    def clip(self, out, base, timeout=60):
        return run([self.options.binary, f"--input-file={MEDIA / 'short_3s.flv'}", f"--output-path={out}",
                    f"--output-manifest-file={base}", "--external-bootstrap"], timeout=timeout)

    @staticmethod
    def files_of(out, base):
        return {f.name.replace(base, "x"): f.read_bytes().replace(base.encode(), b"x")
                for f in out.iterdir() if f.name.startswith(base)}

    def in_a_row(self):
        tally = Tally("runs in a row into one folder")
        with Folder() as work:
            self.clip(work / "out", "first")
            first = digest(work / "out")
            for number in range(self.options.runs):
                result = self.clip(work / "out", "first")
                complaint = result.complaint() or (f"status {result.status}" if result.status else None)
                if not complaint and digest(work / "out") != first:
                    complaint = "other bytes, or a file too many"
                tally.record(complaint, f"run {number}")
        return tally.show()

    def at_once(self):
        tally = Tally("eight at once into one folder")
        with Folder() as work:
            self.clip(work / "alone", "alone")
            alone = self.files_of(work / "alone", "alone")
            with concurrent.futures.ThreadPoolExecutor(8) as pool:
                for turn in range(max(1, self.options.runs // 40)):
                    out = work / f"out{turn}"
                    names = [f"name{n}" for n in range(8)]
                    results = list(pool.map(lambda base: self.clip(out, base), names))
                    for base, result in zip(names, results):
                        complaint = result.complaint() or (f"status {result.status}" if result.status else None)
                        if not complaint and self.files_of(out, base) != alone:
                            complaint = "other bytes than alone"
                        tally.record(complaint, f"turn {turn} {base}")
                    if len(list(out.iterdir())) != 8 * len(alone):
                        tally.record("files too many", f"turn {turn}")
                    shutil.rmtree(out)
        return tally.show()

    def measured(self, argv, cwd):
        """Runs a program; answers its status, its error line and its largest memory in KB."""
        with subprocess.Popen([str(a) for a in argv], cwd=cwd, env=dict(os.environ, **EPOCH),
                              stderr=subprocess.PIPE) as child:
            err = child.stderr.read()
            _, status, usage = os.wait4(child.pid, 0)
            child.returncode = os.waitstatus_to_exitcode(status)
        return child.returncode, err, usage.ru_maxrss

    def long_recording(self):
        tally = Tally(f"a recording of {HOURS} hours")
        with tempfile.TemporaryDirectory() as work:
            clip = os.path.join(work, "long.flv")
            write_recording(clip, HOURS * 3600, 1500, 2)
            status, err, memory = self.measured([self.options.binary, f"--input-file={clip}", f"--output-path={work}"],
                                                work)
            complaint = f"status {status}: {err[:80]!r}" if status else None
            if not complaint and memory > MOST_MEMORY_KB:
                complaint = f"took {memory} KB"
            tally.left_out = f"{HOURS * 3600 // FRAGMENT_SECONDS} fragments, {memory // 1024} MB of memory"
            tally.record(complaint, "long")
        return tally.show()

    def large_segment(self):
        tally = Tally("a segment beyond 4 GiB")
        folder = tempfile.gettempdir()
        if shutil.disk_usage(folder).free < 14 * GIB:
            tally.left_out = "left out: needs 14 GB of disk"
            return tally.show()
        with tempfile.TemporaryDirectory(dir=folder) as work:
            clip = os.path.join(work, "large.flv")
            write_recording(clip, 640, 360_000, 20)  # 4.6 GB
            status, err, memory = self.measured([self.options.binary, f"--input-file={clip}", f"--output-path={work}"],
                                                work)
            complaint = f"status {status}: {err[:80]!r}" if status else self.large_complaint(work, clip)
            tally.left_out = f"{os.path.getsize(os.path.join(work, 'largeSeg1.kzs')):,} bytes, {memory // 1024} MB"
            tally.record(complaint, "large")
        return tally.show()

    @staticmethod
    def large_complaint(work, clip):
        """The last fragments lie beyond 4 GiB; every index row must lead to an afra box with an mdat
        behind it, up to the end of the file."""
        index = open(os.path.join(work, "largeSeg1.kzx"), "rb").read()
        path = os.path.join(work, "largeSeg1.kzs")
        (local,) = struct.unpack(">I", index[17:21])
        at = 21 + 16 * local
        (count,) = struct.unpack(">I", index[at:at + 4])
        rows = [struct.unpack(">QIIQQ", index[at + 4 + 32 * i:at + 36 + 32 * i]) for i in range(count)]
        beyond = 0
        with open(path, "rb") as file:
            for _, _, fragment, offset, _ in rows:
                if offset == 0xFFFFFFFFFFFFFFFF:
                    continue
                beyond += offset > 1 << 32
                file.seek(offset)
                end = offset
                for _ in range(4):
                    size, kind = struct.unpack(">I4s", file.read(8))
                    if size == 1:
                        (size,) = struct.unpack(">Q", file.read(8))
                    if end == offset and kind != b"afra":
                        return f"no afra box at {offset} of fragment {fragment}"
                    end += size
                    file.seek(end)
                    if kind == b"mdat":
                        break
                else:
                    return f"no mdat box in fragment {fragment}"
        if end != os.path.getsize(path):
            return f"the last fragment ends at {end}"
        return None if beyond > 3 else f"{beyond} fragments beyond 4 GiB"


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("binary", type=absolute)
    parser.add_argument("--long", action="store_true")
    parser.add_argument("--runs", type=int, default=1000)
    options = parser.parse_args()
    load = Load(options)
    good = [load.in_a_row(), load.at_once()]
    if options.runs >= 200:
        good.append(load.long_recording())
    if options.long:
        good.append(load.large_segment())
    sys.exit(0 if all(good) else 1)


if __name__ == "__main__":
    main()
