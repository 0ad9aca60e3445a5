"""Reads a packaged presentation from its files alone. Times are in milliseconds."""

import base64
import struct
import xml.etree.ElementTree as ElementTree
from dataclasses import dataclass, field
from pathlib import Path

NO_DATA = 0xFFFFFFFFFFFFFFFF
VIDEO, AUDIO = 9, 8


class Broken(Exception):
    """A file is missing or isn't what it should be; the text says which and why."""


@dataclass
class Run:
    """A row of the fragment run table: what holds from number `first` on."""

    first: int
    start: int
    duration: int
    discontinuity: int | None = None  # only where the duration is 0: 0 end, 1 no data, 2 skipped


@dataclass
class Tag:
    kind: int  # 8 audio, 9 video, others data
    time: int
    size: int
    is_picture: bool  # a video sample, not what sets up the decoder
    is_key_frame: bool
    is_encrypted: bool


@dataclass
class Fragment:
    segment: int
    offset: int  # of its first box in the segment file
    size: int
    number: int = 0
    start: int = 0
    end: int = 0
    tags: list[Tag] = field(default_factory=list)


@dataclass
class Entry:
    """A row of the index."""

    time: int
    segment: int
    number: int
    offset: int | None


@dataclass
class Presentation:
    name: str
    runs: list[Run]
    counts: list[tuple[int, int]]  # segment, fragment numbers in it
    entries: list[Entry]
    fragments: list[Fragment]
    segment_sizes: dict[int, int]


class Reader:
    """Big-endian fields from the front of some bytes."""

    def __init__(self, data, name):
        self.data, self.name, self.at = data, name, 0

    def left(self):
        return len(self.data) - self.at

    def take(self, size):
        if size > self.left():
            raise Broken(f"{self.name} ends too early")
        self.at += size
        return self.data[self.at - size : self.at]

    def number(self, size):
        return int.from_bytes(self.take(size), "big")

    def string(self):
        end = self.data.find(b"\0", self.at)
        if end < 0:
            raise Broken(f"{self.name}: a text has no end")
        text = self.take(end - self.at)
        self.at += 1
        return text.decode("utf-8", "replace")

    def box(self):
        """The type of the next box and a reader of its content."""
        size, kind = self.number(4), self.take(4).decode("latin-1")
        header = 8
        if size == 1:
            size, header = self.number(8), 16
        elif size == 0:
            size = header + self.left()
        if size < header:
            raise Broken(f"{self.name}: a {kind} box has a bad size")
        return kind, Reader(self.take(size - header), self.name)

    def expect(self, wanted):
        kind, content = self.box()
        if kind != wanted:
            raise Broken(f"{self.name}: a {kind} box where {wanted} should stand")
        content.take(4)  # version and flags
        return content

    def boxes(self):
        while self.left() >= 8:
            yield self.box()

    def rows(self, count, smallest):
        if count > self.left() // smallest:
            raise Broken(f"{self.name}: a table is longer than the file")
        return range(count)


def read_bootstrap(data, name):
    box = Reader(data, name).expect("abst")
    box.take(4 + 1 + 4 + 8 + 8)  # version, bits, timescale, current time, SMPTE offset
    box.string()
    for _ in range(2):  # servers, qualities
        for _ in range(box.number(1)):
            box.string()
    box.string(), box.string()
    counts, runs = [], []
    for _ in range(box.number(1)):
        table = box.expect("asrt")
        skip_qualities(table)
        counts += [(table.number(4), table.number(4)) for _ in table.rows(table.number(4), 8)]
    for _ in range(box.number(1)):
        table = box.expect("afrt")
        table.take(4)
        skip_qualities(table)
        for _ in table.rows(table.number(4), 16):
            run = Run(table.number(4), table.number(8), table.number(4))
            if run.duration == 0:
                run.discontinuity = table.number(1)
            runs.append(run)
    return counts, runs


def skip_qualities(table):
    for _ in range(table.number(1)):
        table.string()


def read_index(data, name):
    box = Reader(data, name).expect("afra")
    bits = box.number(1)
    ids, offsets = (4 if bits & 0x80 else 2), (8 if bits & 0x40 else 4)
    none = NO_DATA >> (64 - 8 * offsets)
    box.take(4)
    for _ in box.rows(box.number(4), 8 + offsets):
        box.take(8 + offsets)
    entries = []
    if bits & 0x20:
        for _ in box.rows(box.number(4), 8 + 2 * ids + 2 * offsets):
            time, segment, number = box.number(8), box.number(ids), box.number(ids)
            offset = box.number(offsets)
            box.take(offsets)
            entries.append(Entry(time, segment, number, None if offset == none else offset))
    return entries


def read_segment(data, name, segment):
    """The fragments of a segment file, without their numbers, which only the index knows."""
    fragments, hint, at = [], None, 0
    reader = Reader(data, name)
    start, rows = None, []
    while reader.left() >= 8:
        at = reader.at
        kind, content = reader.box()
        if kind == "moov":
            hint = hint_track(content)
        elif kind == "afra":
            start = at
        elif kind == "moof":
            start = at if start is None else start
            rows = sample_flags(content, hint)
        elif kind == "mdat":
            fragment = Fragment(segment, at if start is None else start, 0)
            fragment.size = reader.at - fragment.offset
            fragment.tags = read_tags(content, rows)
            fragments.append(fragment)
            start, rows = None, []
    return fragments


def hint_track(moov):
    """The id of the track whose samples are whole tags."""
    for kind, trak in moov.boxes():
        if kind != "trak":
            continue
        track, handler = None, None
        for kind, content in trak.boxes():
            if kind == "tkhd":
                version = content.number(4) >> 24
                content.take(16 if version == 1 else 8)
                track = content.number(4)
            elif kind == "mdia":
                for kind, child in content.boxes():
                    if kind == "hdlr":
                        child.take(8)
                        handler = child.take(4)
        if handler == b"hint":
            return track
    raise Broken(f"{moov.name} has no hint track")


def sample_flags(moof, track):
    """The flags of each sample of a track in this fragment."""
    flags = []
    for kind, traf in moof.boxes():
        if kind != "traf":
            continue
        current = None
        for kind, content in traf.boxes():
            if kind == "tfhd":
                content.take(4)
                current = content.number(4)
            elif kind == "trun" and current == track:
                if content.number(4) & 0xFFFFFF != 0xF01:
                    raise Broken(f"{moof.name}: a trun box of another kind")
                count = content.number(4)
                content.take(4)
                for _ in content.rows(count, 16):
                    flags.append(struct.unpack(">4I", content.take(16))[2])
    return flags


def read_tags(mdat, flags):
    """The tags of a fragment; which are key frames is told by the flags, also of encrypted ones."""
    tags = []
    while mdat.left() > 0:
        kind, size, low, high = (mdat.number(n) for n in (1, 3, 3, 1))
        mdat.take(3)
        body = mdat.take(size)
        if mdat.number(4) != size + 11:
            raise Broken(f"{mdat.name}: a tag has a wrong size word")
        is_encrypted, kind = bool(kind & 0x20), kind & 0x1F
        is_header = not is_encrypted and len(body) > 1 and body[0] & 0x0F == 7 and body[1] == 0
        is_key = len(tags) < len(flags) and flags[len(tags)] == 0x02000000
        is_picture = kind == VIDEO and size > 0 and not is_header
        tags.append(
            Tag(kind, high << 24 | low, size + 15, is_picture, is_picture and is_key, is_encrypted)
        )
    return tags


def read_file(path):
    try:
        return path.read_bytes()
    except OSError as error:
        raise Broken(f"{path.name}: {error.strerror}") from None


def read_presentation(manifest, rendition=None):
    """Reads all files of one rendition of a manifest: the first one, or the one of that stream id."""
    try:
        root = ElementTree.fromstring(read_file(manifest))
    except ElementTree.ParseError as error:
        raise Broken(f"{manifest.name} isn't well-formed: {error}") from None
    children = [(one.tag.split("}")[-1], one) for one in root]
    media = [one for tag, one in children if tag == "media"]
    chosen = [one for one in media if rendition in (None, one.get("streamId"))]
    if not chosen:
        names = ", ".join(one.get("streamId", "") for one in media)
        raise Broken(f"{manifest.name} has no such rendition; it has: {names}")
    base = chosen[0].get("url", "")
    counts, runs = bootstrap_of(manifest, children, chosen[0].get("bootstrapInfoId"))

    last = counts[-1][0] if counts else 1
    index = manifest.parent / f"{base}Seg{last}.kzx"
    entries = read_index(read_file(index), index.name)
    fragments, sizes = [], {}
    for segment in sorted({entry.segment for entry in entries}):
        path = manifest.parent / f"{base}Seg{segment}.kzs"
        data = read_file(path)
        sizes[segment] = len(data)
        fragments += read_segment(data, path.name, segment)
    number_fragments(fragments, entries, runs, index.name)
    return Presentation(base, runs, counts, entries, fragments, sizes)


def bootstrap_of(manifest, children, wanted):
    for tag, element in children:
        if tag == "bootstrapInfo" and element.get("id") == wanted:
            if element.get("url"):
                path = manifest.parent / element.get("url")
                return read_bootstrap(read_file(path), path.name)
            try:
                data = base64.b64decode("".join((element.text or "").split()), validate=True)
            except ValueError:
                raise Broken(f"{manifest.name}: a bootstrap isn't base64") from None
            return read_bootstrap(data, f"the bootstrap in {manifest.name}")
    raise Broken(f"{manifest.name}: the rendition has no bootstrap")


def number_fragments(fragments, entries, runs, index):
    places = {(entry.segment, entry.offset): entry for entry in entries if entry.offset}
    for fragment in fragments:
        entry = places.get((fragment.segment, fragment.offset))
        if entry is None:
            raise Broken(f"{index} doesn't know the fragment at byte {fragment.offset} "
                         f"of segment {fragment.segment}")
        fragment.number, fragment.start = entry.number, entry.time
    for fragment, following in zip(fragments, fragments[1:]):
        fragment.end = following.start
    if fragments:
        final = fragments[-1]
        final.end = max([tag.time + 1 for tag in final.tags] + [final.start + 1])


def numbers_of(presentation):
    """The fragment numbers that each run holds for: first and last, and where it ends."""
    runs = [run for run in presentation.runs if run.duration or run.discontinuity]
    total = sum(count for _, count in presentation.counts)
    end = presentation.fragments[-1].end if presentation.fragments else 0
    rows = []
    for i, run in enumerate(runs):
        following = runs[i + 1] if i + 1 < len(runs) else None
        last = following.first - 1 if following else runs[0].first + total - 1
        if following is None:
            stop = max(end, run.start + run.duration)
        elif following.discontinuity == 2:  # skipped numbers have no time in the table
            stop = run.start + run.duration * (last - run.first + 1)
        else:
            stop = following.start
        start = run.start
        if run.discontinuity == 2 and rows:
            start = rows[-1][3]
        rows.append((run, last, start, stop))
    return rows
