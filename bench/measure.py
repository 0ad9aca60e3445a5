#!/usr/bin/env python3
"""Times the packager beside plain copies of the same bytes, all in one run.

usage: measure.py [--quick] [--rows NAME,...] BINARY CLIP WORK_FOLDER

Rows are measured in turns, five times each (--quick: three, on inputs of a tenth of the size).
Times are told as seconds and as ratios to `cp` of the same run: best against best, and median
against median in brackets. Nothing is asserted: timings are noisy.
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


def folder_bytes(folder):
    return sum(f.stat().st_size for f in folder.rglob("*") if f.is_file())


def system_calls(argv):
    """How many system calls a command makes, and how many of them moved data."""
    report = subprocess.run(["strace", "-f", "-c", "-o", "/dev/stderr", *argv], stdout=subprocess.DEVNULL,
                            stderr=subprocess.PIPE, text=True, check=True).stderr
    match = re.search(r"^100\.00\s+\S+\s+\S*\s*(\d+)\s+(?:\d+\s+)?total", report, re.M)
    return int(match.group(1)) if match else 0


class Bench:
    def __init__(self, options):
        self.binary, self.clip = options.binary, options.clip
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

    def row(self, name, kind, megabytes, options=()):
        size = max(5.0, megabytes * self.scale)
        path = self.make(kind, size)
        copy = str(self.work / "copy")
        commands = {
            "cp": ["cp", str(path), copy],
            "cat > null": ["cat", str(path)],
            "dd": ["dd", f"if={path}", f"of={copy}", "bs=1M", "status=none"],
            "packager": self.package(path, *options),
        }
        runs = {label: [] for label in commands}
        written = 0
        for _ in range(self.rounds):
            for label, argv in commands.items():
                self.fresh()
                runs[label].append(timed(argv))
                if label == "packager":
                    written = folder_bytes(self.work / "out")
        self.fresh()
        small = self.make(kind, min(size, 100.0))
        calls = system_calls(self.package(small, *options))
        self.fresh()
        self.print_row(name, path.stat().st_size, small.stat().st_size, runs, written, calls)

    def protected_row(self, name, kind, megabytes):
        """A protected run beside a clear one and what encrypting the same bytes costs by itself."""
        path = self.make(kind, max(5.0, megabytes * self.scale))
        options = protection_options(self.work / "keys")
        copy = str(self.work / "copy")
        commands = {
            "cp": ["cp", str(path), copy],
            "openssl enc": ["openssl", "enc", "-aes-128-cbc", "-K", "00" * 16, "-iv", "00" * 16,
                            "-in", str(path), "-out", copy],
            "clear": self.package(path),
            "protected": self.package(path, *options),
        }
        runs = {label: [] for label in commands}
        for _ in range(self.rounds):
            for label, argv in commands.items():
                self.fresh()
                runs[label].append(timed(argv))
        self.fresh()
        best = {k: min(r.wall for r in v) for k, v in runs.items()}
        print(f"\n{name}: {path.stat().st_size / 1e6:.0f} MB")
        for label, all_runs in runs.items():
            fastest = min(all_runs, key=lambda r: r.wall)
            print(f"  {label:12} {best[label]:8.3f} s wall, {fastest.user:.3f} user, {fastest.system:.3f} sys,"
                  f" peak {max(r.peak_mb for r in all_runs):.1f} MB")
        allowed = best["clear"] + 1.1 * (best["openssl enc"] - best["cp"])
        print(f"  clear + 1.1 x (openssl enc - cp) = {allowed:.3f} s; protected takes {best['protected'] / allowed:.2f}"
              " of it")

    def print_row(self, name, size, small_size, runs, written, calls):
        best = {k: min(r.wall for r in v) for k, v in runs.items()}
        middle = {k: statistics.median(r.wall for r in v) for k, v in runs.items()}
        print(f"\n{name}: {size / 1e6:.0f} MB")
        print(f"  {'':12} {'wall s':>8} {'median':>8} {'user':>7} {'sys':>7} {'peak MB':>8} {'x cp':>6} {'(median)':>9}")
        for label, all_runs in runs.items():
            fastest = min(all_runs, key=lambda r: r.wall)
            print(f"  {label:12} {best[label]:8.3f} {middle[label]:8.3f} {fastest.user:7.3f} {fastest.system:7.3f}"
                  f" {max(r.peak_mb for r in all_runs):8.1f} {best[label] / best['cp']:6.2f}"
                  f" {'(%.2f)' % (middle[label] / middle['cp']):>9}")
        # time(1) counts hundredths, and a small copy takes none.
        cpu = min(r.cpu for r in runs["packager"]) / max(0.01, min(r.cpu for r in runs["cp"]))
        print(f"  packager: CPU {cpu:.2f} x cp, {calls / (small_size / 1e6):.1f} system calls per MB,"
              f" {written / size:.4f} bytes written per byte of input")


ROWS = {
    "flv": ("FLV, H.264 8 Mbit/s + AAC", "flv", 1000, ()),
    "audio": ("FLV, AAC only", "audio", 200, ()),
    "short": ("FLV, 0.5 s fragments, long", "frames", 200, ("--fragment-duration=0.5",)),
    "mp4": ("MP4", "mp4", 1000, ()),
    "fmp4": ("MP4, fragmented", "fmp4", 1000, ()),
    "edit": ("MP4 through its edit lists", "mp4", 1000, ("--edit-list",)),
}


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--quick", action="store_true")
    parser.add_argument("--rows", default=",".join([*ROWS, "protected"]))
    parser.add_argument("binary", type=pathlib.Path)
    parser.add_argument("clip", type=pathlib.Path)
    parser.add_argument("work")
    options = parser.parse_args()
    pathlib.Path(options.work).mkdir(parents=True, exist_ok=True)
    bench = Bench(options)
    for name in options.rows.split(","):
        if name == "protected":
            bench.protected_row("FLV, protected", "flv", 1000)
        else:
            bench.row(*ROWS[name])


if __name__ == "__main__":
    main()
