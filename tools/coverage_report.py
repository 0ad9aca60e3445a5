#!/usr/bin/env python3
"""Holds what the tests run of src/ against what is asked of them.

usage: coverage_report.py GCOVR_JSON EXCEPTIONS

Prints every line of src/ that was not run, with the reason that EXCEPTIONS gives for it, and the
shares of lines and branches. Fails when a share is too small, or when a line that reports a failure
was not run and has no reason.

Each line of EXCEPTIONS is "FILE | CODE | REASON": CODE is how the line's text begins. "REASON" may
be a word for a reason that stands above: "NAME = REASON".
"""
import json
import pathlib
import re
import sys

LEAST_LINES, LEAST_BRANCHES = 95.0, 85.0
# How this source reports failures: throws, the functions that throw, error results, lines for users.
FAILURE = re.compile(r"\bthrow\b|\bcatch\b|\braise\(|\bfail\(|\brefuse\w*\(|\brequire\w*\(|Exception\(|Failure\b"
                     r"|\b(HLX_(ERROR|CERT)|kQlixFLV(?!Ok))\w*|\bErrorCode::|\bcerr\b|return false;|return -1;")
TOP = pathlib.Path(__file__).resolve().parents[1]


class Exceptions:
    """The lines that needn't be run, and why."""

    def __init__(self, path):
        self.rows, reasons = [], {}
        for number, line in enumerate(path.read_text().splitlines(), 1):
            if not line.strip() or line.startswith("#"):
                continue
            parts = [part.strip() for part in line.split(" | ")]
            if len(parts) == 1 and " = " in line:
                name, reason = line.split(" = ", 1)
                reasons[name.strip()] = reason.strip()
            elif len(parts) == 3:
                self.rows.append((parts[0], parts[1], reasons.get(parts[2], parts[2])))
            else:
                sys.exit(f"{path}:{number}: neither FILE | CODE | REASON nor NAME = REASON")

    def reason(self, file, code):
        return next((reason for name, start, reason in self.rows if name == file and code.startswith(start)), None)

    def lost(self):
        """Rows that no line of the source answers to."""
        return [f"{name} | {start}" for name, start, _ in self.rows
                if not (TOP / name).is_file()
                or not any(line.strip().startswith(start) for line in (TOP / name).read_text().splitlines())]


def shares(files):
    lines = [line for file in files for line in file["lines"] if not line.get("gcovr/noncode")]
    branches = [branch for line in lines for branch in line["branches"]]
    return ((sum(line["count"] > 0 for line in lines), len(lines)),
            (sum(branch["count"] > 0 for branch in branches), len(branches)))


def unrun(files):
    """(file, number, text) of each line that was not run."""
    for file in files:
        source = (TOP / file["file"]).read_text().splitlines()
        for line in file["lines"]:
            if line["count"] == 0 and not line.get("gcovr/noncode"):
                yield file["file"], line["line_number"], source[line["line_number"] - 1].strip()


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    files = json.loads(pathlib.Path(sys.argv[1]).read_text())["files"]
    exceptions = Exceptions(pathlib.Path(sys.argv[2]))
    complaints = [f"no line begins so: {row}" for row in exceptions.lost()]
    print("lines that were not run:")
    for file, number, code in sorted(unrun(files)):
        reason = exceptions.reason(file, code)
        print(f"  {file}:{number}: {code}\n      {reason or 'no reason is given'}")
        if not reason and FAILURE.search(code):
            complaints.append(f"{file}:{number} reports a failure, was not run, and no reason is given: {code}")
    print()
    for name, least, (run, total) in zip(("lines", "branches"), (LEAST_LINES, LEAST_BRANCHES), shares(files)):
        share = 100 * run / total
        print(f"{name}: {share:.1f} % ({run:,} of {total:,})")
        if share < least:
            complaints.append(f"{least:.0f} % of {name} are asked for")
    for complaint in complaints:
        print(f"failed: {complaint}")
    sys.exit(1 if complaints else 0)


if __name__ == "__main__":
    main()
