#!/usr/bin/env python3
"""Times the packager beside plain copies of the same bytes, all in one run.

usage: measure.py [--quick] [--rows NAME,...] BUILD_FOLDER CLIP WORK_FOLDER

The commands of a row are run in turns, five times each (--quick: three, on inputs of a tenth of
the size). Times are told as seconds and as ratios to `cp` of the same run: best against best, and
median against median in brackets. Nothing is asserted: timings are noisy.
"""
import argparse
import pathlib
import re
import shutil
import statistics
import subprocess
import sys
import time

sys.dont_write_bytecode = True  # the tree stays clean
from protection import protection_options  # noqa: E402

HERE = pathlib.Path(__file__).resolve().parent


class Run:
    def __init__(self, wall, user, system, peak_mb):
        self.wall, self.user, self.system, self.peak_mb = wall, user, system, peak_mb

    @property
    def cpu(self):
        return self.user + self.system


def timed(argv):
    """Through time(1): a child of this process would be charged with this process's own peak."""
    start = time.perf_counter()
    done = subprocess.run(["/usr/bin/time", "-f", "%U %S %M", *argv], stdout=subprocess.DEVNULL,
                          stderr=subprocess.PIPE, text=True)
    wall = time.perf_counter() - start
    if done.returncode != 0:
        sys.exit(f"failed with {done.returncode}: {' '.join(argv)}: {done.stderr}")
    user, system, peak = done.stderr.split()
    return Run(wall, float(user), float(system), int(peak) / 1024)


def bytes_in(path):
    if path.is_file():
        return path.stat().st_size
    return sum(f.stat().st_size for f in path.rglob("*") if f.is_file())


def system_calls(argv):
    report = subprocess.run(["strace", "-f", "-c", "-o", "/dev/stderr", *argv], stdout=subprocess.DEVNULL,
                            stderr=subprocess.PIPE, text=True, check=True).stderr
    match = re.search(r"^100\.00\s+\S+\s+\S*\s*(\d+)\s+(?:\d+\s+)?total", report, re.M)
    return int(match.group(1)) if match else 0


def cipher_seconds(size):
    """How long the library's cipher by itself takes for `size` bytes, without reading or writing any."""
    report = subprocess.run(["openssl", "speed", "-elapsed", "-seconds", "2", "-bytes", "16384", "-evp", "aes-128-cbc"],
                            capture_output=True, text=True, check=True).stdout
    kilobytes = float(re.search(r"^AES-128-CBC\s+([\d.]+)k", report, re.M | re.I).group(1))
    return size / (kilobytes * 1000)


class Bench:
    HEAD = (f"{'input':30} {'':12} {'wall s':>8} {'median':>8} {'user':>7} {'system':>7} {'peak MB':>8} {'calls/MB':>9}"
            f" {'out/in':>7} {'x cp':>6} {'(median)':>9} {'CPU x cp':>8}")

    def __init__(self, options):
        self.binary = options.build / "kzspackager"
        self.held_copy = options.build / "bench" / "held_copy"
        self.clip = options.clip
        self.work = pathlib.Path(options.work)
        self.rounds = 3 if options.quick else 5
        self.scale = 0.1 if options.quick else 1.0

    def make(self, kind, megabytes):
        path = self.work / f"{kind}_{int(megabytes)}.{'mp4' if 'mp4' in kind else 'flv'}"
        if not path.exists():
            subprocess.run([sys.executable, HERE / "make_input.py", kind, self.clip, path, str(megabytes)], check=True)
        return path

    def package(self, path, *options):
        out = self.work / "out"
        return [str(self.binary), f"--input-file={path}", f"--output-path={out}", *options]

    def fresh(self):
        for name in ("out", "copy"):
            target = self.work / name
            if target.is_dir():
                shutil.rmtree(target)
            elif target.exists():
                target.unlink()

    def written(self):
        return sum(bytes_in(self.work / name) for name in ("out", "copy") if (self.work / name).exists())

    def commands(self, path, options, protection, fragment_bytes):
        copy = str(self.work / "copy")
        commands = {"cp": ["cp", str(path), copy]}
        if protection:
            commands["openssl enc"] = ["openssl", "enc", "-aes-128-cbc", "-K", "00" * 16, "-iv", "00" * 16,
                                       "-in", str(path), "-out", copy]
            commands["clear"] = self.package(path, *options)
            commands["protected"] = self.package(path, *options, *protection)
            return commands
        # The two that are compared run behind each other: they meet the machine in the same state.
        commands["packager"] = self.package(path, *options)
        commands["held copy"] = [str(self.held_copy), str(path), copy, str(fragment_bytes)]
        commands["cat > null"] = ["cat", str(path)]
        commands["dd"] = ["dd", f"if={path}", f"of={copy}", "bs=256k", "status=none"]
        return commands

    def row(self, name, kind, megabytes, options=(), is_protected=False, fragment_bytes=4_000_000):
        size = max(5.0, megabytes * self.scale)
        path, small = self.make(kind, size), self.make(kind, min(size, 100.0))
        protection = protection_options(self.work / "keys") if is_protected else ()
        runs, written, calls = {}, {}, {}
        for _ in range(self.rounds):
            for label, argv in self.commands(path, options, protection, fragment_bytes).items():
                self.fresh()
                runs.setdefault(label, []).append(timed(argv))
                written[label] = self.written()
        for label, argv in self.commands(small, options, protection, fragment_bytes).items():
            self.fresh()
            calls[label] = system_calls(argv)
        self.fresh()
        self.print_rows(f"{name}, {bytes_in(path) / 1e6:.0f} MB", bytes_in(path), bytes_in(small), runs, written, calls)
        if is_protected:
            self.print_allowance(bytes_in(path), {k: min(r.wall for r in v) for k, v in runs.items()})

    @staticmethod
    def print_rows(name, size, small_size, runs, written, calls):
        best = {k: min(r.wall for r in v) for k, v in runs.items()}
        middle = {k: statistics.median(r.wall for r in v) for k, v in runs.items()}
        # time(1) counts hundredths, and a small copy takes none.
        cpu_of_cp = max(0.01, min(r.cpu for r in runs["cp"]))
        for label, all_runs in runs.items():
            fastest = min(all_runs, key=lambda r: r.wall)
            print(f"{name:30} {label:12} {best[label]:8.3f} {middle[label]:8.3f} {fastest.user:7.2f}"
                  f" {fastest.system:7.2f} {max(r.peak_mb for r in all_runs):8.1f}"
                  f" {calls[label] / (small_size / 1e6):9.1f} {written[label] / size:7.4f}"
                  f" {best[label] / best['cp']:6.2f} {'(%.2f)' % (middle[label] / middle['cp']):>9}"
                  f" {min(r.cpu for r in all_runs) / cpu_of_cp:8.2f}", flush=True)
            name = ""

    @staticmethod
    def print_allowance(size, best):
        enciphering = best["openssl enc"] - best["cp"]
        print(f"{'':30} openssl speed: {cipher_seconds(size):.3f} s for these bytes;"
              f" clear + 1.1 x (openssl enc - cp) = {best['clear'] + 1.1 * enciphering:.3f} s,"
              f" protected takes {best['protected'] / (best['clear'] + 1.1 * enciphering):.2f} of it", flush=True)


ROWS = {
    "flv": ("FLV, 8 Mbit/s", "flv", 1000),
    "audio": ("FLV, audio", "audio", 200, (), False, 64_000),
    "short": ("FLV, 0.5 s fragments", "short", 668, ("--fragment-duration=0.5",), False, 9_300),
    "mp4": ("MP4", "mp4", 1000),
    "fmp4": ("MP4, fragmented", "fmp4", 1000),
    "edit": ("MP4, edit lists", "mp4", 1000, ("--edit-list",)),
    "protected": ("FLV, protected", "flv", 1000, (), True),
}


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--quick", action="store_true")
    parser.add_argument("--rows", default=",".join(ROWS))
    parser.add_argument("build", type=pathlib.Path)
    parser.add_argument("clip", type=pathlib.Path)
    parser.add_argument("work")
    options = parser.parse_args()
    pathlib.Path(options.work).mkdir(parents=True, exist_ok=True)
    bench = Bench(options)
    print(bench.HEAD)
    for name in options.rows.split(","):
        bench.row(*ROWS[name])


if __name__ == "__main__":
    main()
