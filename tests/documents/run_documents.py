#!/usr/bin/env python3
"""Runs every command of the documents and compares what it prints with what the document says.

usage: run_documents.py BINARY TOP_FOLDER [DOCUMENT...]

A command is a line "$ ..." of a fenced block; lines "> ..." belong to it. The lines behind it are what
it prints; where there are none, what it prints isn't looked at. Each document runs in a folder of its
own with the clips that the cookbook names. A command ends with status 0, except where the line behind
it is an error line of the program.
"""
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

CLIPS = {"clip.flv": "h264_aac_20s.flv", "low.flv": "mbr_60k.flv", "high.flv": "mbr_240k.flv",
         "talk.flv": "aac_only.flv", "film.mp4": "h264_aac_bframes.mp4"}
# What builds and tests this tree is what runs this program; it would run itself.
BUILDING = re.compile(r"^(\(cd build|scripts/test\.sh|scripts/stress\.sh|scripts/coverage\.sh|cmake |examples/|bench/|apt )")


def commands(text):
    """(command, lines that it prints) of each fenced block, in order."""
    for block in re.findall(r"^```[a-z]*\n(.*?)^```", text, re.M | re.S):
        command, printed = None, []
        for line in block.splitlines():
            if line.startswith("$ "):
                if command:
                    yield command, printed
                command, printed = line[2:], []
            elif command and line.startswith("> "):
                command += "\n" + line[2:]
            elif command:
                printed.append(line)
        if command:
            yield command, printed


class Document:
    def __init__(self, binary, top, path, folder):
        self.path, self.folder = path, pathlib.Path(folder)
        for name, clip in CLIPS.items():
            shutil.copy(top / "tests/data/media" / clip, self.folder / name)
        tools = self.folder / ".tools"
        (tools / "scripts").mkdir(parents=True)
        # The installed name, and what scripts/run.sh does once everything is built.
        (tools / "kzspackager").symlink_to(binary)
        (self.folder / "scripts").mkdir()
        (self.folder / "scripts" / "run.sh").symlink_to(binary)
        (self.folder / "build" / "release").mkdir(parents=True)
        (self.folder / "build" / "release" / "kzspackager").symlink_to(binary)
        self.env = dict(os.environ, PATH=f"{tools}:{os.environ['PATH']}", LC_ALL="C")

    def run(self):
        """How many commands ran; prints what went wrong."""
        ran = failed = 0
        for command, printed in commands(self.path.read_text()):
            if BUILDING.match(command) or command.strip() == "scripts/run.sh":
                continue
            ran += 1
            done = subprocess.run(["bash", "-o", "pipefail", "-c", command], cwd=self.folder, env=self.env,
                                  stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                                  timeout=120)
            complaint = self.complaint(done, printed)
            if complaint:
                failed += 1
                print(f"{self.path.name}: {command.splitlines()[0]}\n    {complaint}")
        return ran, failed

    @staticmethod
    def complaint(done, printed):
        expected = "\n".join(printed).strip()
        out = done.stdout.decode("utf-8", "replace").strip()
        err = done.stderr.decode("utf-8", "replace").strip()
        if expected.startswith("Error "):
            return None if done.returncode != 0 and err == expected else f"status {done.returncode}: {err!r}"
        if done.returncode != 0:
            return f"status {done.returncode}: {err!r}"
        if expected and out != expected:
            return f"printed {out!r} instead of {expected!r}"
        return None


def main():
    binary, top = pathlib.Path(sys.argv[1]).resolve(), pathlib.Path(sys.argv[2]).resolve()
    paths = [pathlib.Path(p) for p in sys.argv[3:]] or [top / "README.md", *sorted((top / "docs").glob("*.md"))]
    ran = failed = 0
    for path in paths:
        with tempfile.TemporaryDirectory() as folder:
            counts = Document(binary, top, path, folder).run()
            ran, failed = ran + counts[0], failed + counts[1]
    print(f"{ran} commands of {len(paths)} documents, {failed} failed")
    sys.exit(1 if failed or ran < 10 else 0)


if __name__ == "__main__":
    main()
