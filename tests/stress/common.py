"""What the stress programs share: running the packager and telling what it ended with."""
import hashlib
import os
import pathlib
import shutil
import subprocess
import tempfile

TOP = pathlib.Path(__file__).resolve().parents[2]
MEDIA = TOP / "tests" / "data" / "media"
# Every exit status that the program documents; 231 is what is left of 999.
DOCUMENTED = {0, 1, 2, 3, 4, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 23, 231}
EPOCH = {"SOURCE_DATE_EPOCH": "1700000000"}


def absolute(path):
    """For command lines: runs have a working folder of their own."""
    return pathlib.Path(path).resolve()


class Result:
    def __init__(self, status, out, err, timed_out=False):
        self.status, self.out, self.err, self.timed_out = status, out, err, timed_out

    def complaint(self):
        """What is wrong with how the program ended, or None."""
        if self.timed_out:
            return "took too long"
        if self.status < 0:
            return f"ended by signal {-self.status}"
        if self.status not in DOCUMENTED:
            return f"status {self.status}"
        lines = self.err.splitlines()
        if self.status == 0 and lines:
            return f"succeeded and said {lines[0][:100]!r}"
        if self.status != 0 and (len(lines) != 1 or not lines[0].startswith(b"Error ")):
            return f"status {self.status} with {len(lines)} lines on standard error"
        return None


def run(argv, env=None, timeout=5, cwd=None):
    full = {**os.environ, **EPOCH, **(env or {})}
    try:
        done = subprocess.run([a if isinstance(a, bytes) else str(a) for a in argv], env=full,
                              stdin=subprocess.DEVNULL, capture_output=True,
                              timeout=timeout, cwd=cwd)
        return Result(done.returncode, done.stdout, done.stderr)
    except subprocess.TimeoutExpired:
        return Result(0, b"", b"", timed_out=True)


def digest(folder):
    """Name and hash of each file below a folder, as one text."""
    lines = []
    for file in sorted(pathlib.Path(folder).rglob("*")):
        if file.is_file():
            lines.append(f"{file.relative_to(folder)} {hashlib.sha256(file.read_bytes()).hexdigest()}")
    return "\n".join(lines)


class Folder:
    """A folder in memory, where there is one, for as long as the with-block runs."""

    def __init__(self):
        self.base = "/dev/shm" if os.access("/dev/shm", os.W_OK) else None

    def __enter__(self):
        self.path = pathlib.Path(tempfile.mkdtemp(prefix="kzs", dir=self.base))
        return self.path

    def __exit__(self, *_):
        shutil.rmtree(self.path, ignore_errors=True)


class Tally:
    """Counts tries and keeps the first findings of one row of the table."""

    def __init__(self, name):
        self.name, self.tried, self.failed, self.findings, self.left_out = name, 0, 0, [], ""

    def record(self, complaint, what):
        self.tried += 1
        if complaint:
            self.failed += 1
            if len(self.findings) < 20:
                self.findings.append(f"{what}: {complaint}")

    def show(self):
        note = f"  ({self.left_out})" if self.left_out else ""
        print(f"{self.name:48} {self.tried:8} {self.failed:8}{note}", flush=True)
        for finding in self.findings:
            print(f"    {finding}", flush=True)
        return self.failed == 0
