#!/usr/bin/env python3
"""Checks that the man page and the completions name exactly the options that the program has.

usage: check_options.py BINARY TOP_FOLDER
"""
import pathlib
import re
import subprocess
import sys


def main():
    binary, top = sys.argv[1], pathlib.Path(sys.argv[2])
    text = subprocess.run([binary, "--help"], capture_output=True, check=True).stdout.decode("cp1252")
    options = set(re.findall(r"^\s+--([a-z-]+)", text, re.M))
    named = {
        "docs/man/kzspackager.1": r"\\-\\-((?:[a-z]|\\-)+)",
        "completions/kzspackager.bash": r"--([a-z-]+)",
        "completions/_kzspackager": r"^    '--([a-z-]+)",
    }
    bad = 0
    if len(options) < 30:
        print(f"--help lists only {len(options)} options")
        bad = 1
    for file, pattern in named.items():
        found = {name.replace("\\-", "-") for name in re.findall(pattern, (top / file).read_text(), re.M)}
        for name in sorted(options ^ found):
            print(f"{file}: --{name} {'is missing' if name in options else 'is no option'}")
            bad = 1
    sys.exit(bad)


if __name__ == "__main__":
    main()
