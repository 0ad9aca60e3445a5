#!/usr/bin/env python3
"""Writes the sample tables that tests compare with: what others say of the MP4 files at hand.

usage: make_sample_tables.py [MEDIA_FOLDER OUTPUT_FOLDER]

Samples come from ffprobe, headers from the small box reader below; neither shares code with the
program. Run it again when a file of tests/data/media is added, and commit what it writes.
"""
import pathlib
import struct
import subprocess
import sys

DATA = pathlib.Path(__file__).resolve().parent.parent / "tests/data"
COMMAND = ["ffprobe", "-v", "error", "-ignore_editlist", "1", "-show_packets", "-show_entries",
           "packet=stream_index,dts,pts,size,flags,pos", "-of", "compact=p=0"]


class Box:
    def __init__(self, data, start, end):
        self.data, self.start, self.end = data, start, end

    def children(self):
        at = self.start
        while self.end - at >= 8:
            size, kind = struct.unpack_from(">I4s", self.data, at)
            body = at + 8
            if size == 1:
                size, = struct.unpack_from(">Q", self.data, body)
                body += 8
            end = self.end if size == 0 else at + size
            yield kind.decode("latin-1"), Box(self.data, body, end)
            at = end

    def find(self, *path):
        box = self
        for kind in path:
            box = next((child for name, child in box.children() if name == kind), None)
            if box is None:
                return None
        return box

    def version(self):
        return self.data[self.start]

    def unpack(self, form, at):
        return struct.unpack_from(">" + form, self.data, self.start + at)


def timescale_and_duration(box):
    return box.unpack("IQ", 20) if box.version() else box.unpack("II", 12)


def edit_rows(trak):
    box = trak.find("edts", "elst")
    if box is None:
        return []
    form, width = ("Qq", 20) if box.version() else ("Ii", 12)
    count, = box.unpack("I", 4)
    return [box.unpack(form, 8 + row * width) for row in range(count)]


def header_lines(path):
    movie = Box(path.read_bytes(), 0, path.stat().st_size).find("moov")
    timescale, duration = timescale_and_duration(movie.find("mvhd"))
    extends = movie.find("mvex")
    header = extends.find("mehd") if extends else None
    of_fragments = 0 if header is None else header.unpack("Q" if header.version() else "I", 4)[0]
    yield (f"movie timescale={timescale} duration={duration} fragmented={int(extends is not None)}"
           f" fragments_duration={of_fragments}")
    traks = [box for kind, box in movie.children() if kind == "trak"]
    for number, trak in enumerate(traks):
        tables = trak.find("mdia", "minf", "stbl")
        handler = trak.find("mdia", "hdlr").unpack("4s", 8)[0].decode()
        entry = tables.find("stsd").unpack("4s", 12)[0].decode()
        scale, _ = timescale_and_duration(trak.find("mdia", "mdhd"))
        yield (f"track number={number} handler={handler} format={entry} timescale={scale}"
               f" sync_table={int(tables.find('stss') is not None)}")
        for length, media_time in edit_rows(trak):
            yield f"edit duration={length} media_time={media_time}"


def sample_lines(path):
    report = subprocess.run([*COMMAND, path], stdout=subprocess.PIPE, check=True, text=True).stdout
    for line in report.splitlines():
        packet = dict(field.split("=", 1) for field in line.split("|") if "=" in field)
        dts = int(packet["dts"])
        yield (f"{packet['stream_index']} {dts} {int(packet['pts']) - dts} {packet['size']}"
               f" {'K' if packet['flags'].startswith('K') else '-'} {packet['pos']}")


def main():
    media, out = map(pathlib.Path, sys.argv[1:3]) if len(sys.argv) > 1 else (DATA / "media", DATA / "samples")
    for path in sorted([*media.glob("*.mp4"), *media.glob("*.m4a")]):
        lines = ["# " + " ".join([*COMMAND, path.name]), f"file {path.name}", *header_lines(path),
                 "# track, decode time, composition offset (ticks), size, K for a key frame, file offset",
                 *sample_lines(path)]
        (out / f"{path.stem}.txt").write_text("\n".join(lines) + "\n")


if __name__ == "__main__":
    main()
