#!/usr/bin/env python3
"""Makes large recordings for the benchmark by repeating the tags of a small FLV clip.

usage: make_input.py KIND CLIP OUT MEGABYTES
  flv       H.264 + AAC, video frames stretched to 8 Mbit/s at 25 frames a second
  audio     AAC only, a tag about every 23 ms, stretched to 128 kbit/s
  short     small frames, a key frame every 0.5 s: for long recordings of many fragments
  mp4       the samples of flv in a plain MP4 file, moov in front
  fmp4      the same, a fragment a second
"""
import struct
import sys

FRAME_BYTES = 40000
AUDIO_BYTES = 370
SHORT_BYTES = 300  # so that ten hours are about half a gigabyte


def read_tags(path):
    data = open(path, "rb").read()
    at = struct.unpack(">I", data[5:9])[0] + 4
    tags = []
    while at + 11 <= len(data):
        kind = data[at]
        size = int.from_bytes(data[at + 1:at + 4], "big")
        time = int.from_bytes(data[at + 4:at + 7], "big") | data[at + 7] << 24
        tags.append((kind, time, data[at + 11:at + 11 + size]))
        at += 11 + size + 4
    return tags


def stretched(body, size):
    """An AVC tag body brought to `size` bytes by a filler NAL unit behind its own."""
    missing = size - len(body) - 5
    if missing < 1:
        return body
    return body + struct.pack(">I", missing + 1) + b"\x0c" + b"\xff" * missing


def recording(clip, kind, size):
    """Sequence headers, then (type, ms, body) until `size` bytes are reached."""
    tags = read_tags(clip)
    wanted = {8} if kind == "audio" else {8, 9}
    tags = [t for t in tags if t[0] in wanted]
    headers = [t for t in tags if t[2][1:2] == b"\0" and (t[0] == 9 or t[2][0] >> 4 == 10)]
    rest = [t for t in tags if t not in headers]
    if kind == "short":
        yield from headers
        yield from short_groups(rest, size)
        return
    if kind != "audio":
        rest = [(k, ms, stretched(b, FRAME_BYTES) if k == 9 else b) for k, ms, b in rest]
    if kind == "audio":
        rest = [(k, ms, b.ljust(AUDIO_BYTES, b"\0")) for k, ms, b in rest]
    rest.sort(key=lambda t: t[1])
    length = 20000 if kind != "audio" else rest[-1][1] + 23
    yield from headers
    done, start = 0, 0
    while done < size:
        for k, ms, body in rest:
            if ms < length:
                yield k, start + ms, body
                done += len(body) + 15
        start += length


def short_groups(tags, size):
    """30 frames a second in groups of 15, and audio every 23 ms."""
    video = [b for k, _, b in tags if k == 9 and b[1] == 1]
    key = next(b for b in video if b[0] >> 4 == 1)
    other = min((b for b in video if b[0] >> 4 != 1), key=len)
    audio = next(b for k, _, b in tags if k == 8)[:100]
    key, other = stretched(key, SHORT_BYTES), stretched(other, SHORT_BYTES)
    done, number, heard = 0, 0, 0
    while done < size:
        ms = number * 1000 // 30
        while heard * 23 < ms:
            yield 8, heard * 23, audio
            heard += 1
            done += len(audio) + 15
        body = key if number % 15 == 0 else other
        yield 9, ms, body
        number += 1
        done += len(body) + 15


def write_flv(out, tags, flags):
    out.write(b"FLV\x01" + bytes([flags]) + b"\0\0\0\x09\0\0\0\0")
    for kind, ms, body in tags:
        out.write(bytes([kind]) + len(body).to_bytes(3, "big") + (ms & 0xFFFFFF).to_bytes(3, "big")
                  + bytes([ms >> 24 & 0xFF]) + b"\0\0\0")
        out.write(body)
        out.write(struct.pack(">I", len(body) + 11))


def box(kind, *parts):
    body = b"".join(parts)
    return struct.pack(">I", len(body) + 8) + kind + body


def full(kind, version, flags, *parts):
    return box(kind, struct.pack(">I", version << 24 | flags), *parts)


class Track:
    def __init__(self, number, handler, scale, entry):
        self.number, self.handler, self.scale, self.entry = number, handler, scale, entry
        self.samples = []  # (size, time in scale, is key frame)

    def durations(self):
        times = [s[1] for s in self.samples]
        step = times[-1] - times[-2] if len(times) > 1 else 1
        return [b - a for a, b in zip(times, times[1:] + [times[-1] + step])]


def run_lengths(values):
    rows = []
    for value in values:
        if rows and rows[-1][1] == value:
            rows[-1][0] += 1
        else:
            rows.append([1, value])
    return rows


def movie(tracks, chunk_offsets, fragmented, duration_ms):
    matrix = struct.pack(">9I", 0x10000, 0, 0, 0, 0x10000, 0, 0, 0, 0x40000000)
    mvhd = full(b"mvhd", 0, 0, struct.pack(">4I", 0, 0, 1000, duration_ms), struct.pack(">IH", 0x10000, 0x100),
                b"\0" * 10, matrix, b"\0" * 24, struct.pack(">I", len(tracks) + 1))
    traks = []
    for track in tracks:
        plain = [] if fragmented else track.samples
        tkhd = full(b"tkhd", 0, 3, struct.pack(">5I", 0, 0, track.number, 0, duration_ms), b"\0" * 8,
                    struct.pack(">4H", 0, 0, 0, 0), matrix, struct.pack(">II", 320 << 16, 180 << 16))
        mdhd = full(b"mdhd", 0, 0, struct.pack(">4I", 0, 0, track.scale, duration_ms * track.scale // 1000),
                    struct.pack(">HH", 0x55C4, 0))
        hdlr = full(b"hdlr", 0, 0, b"\0" * 4, track.handler, b"\0" * 12, b"x\0")
        stts = run_lengths(track.durations()) if plain else []
        keys = [i + 1 for i, s in enumerate(plain) if s[2]]
        stbl = [full(b"stsd", 0, 0, struct.pack(">I", 1), track.entry),
                full(b"stts", 0, 0, struct.pack(">I", len(stts)), *[struct.pack(">II", *r) for r in stts]),
                full(b"stsc", 0, 0, struct.pack(">I", 1 if plain else 0), struct.pack(">III", 1, 1, 1) if plain else b""),
                full(b"stsz", 0, 0, struct.pack(">II", 0, len(plain)), *[struct.pack(">I", s[0]) for s in plain]),
                full(b"co64", 0, 0, struct.pack(">I", len(plain)),
                     *[struct.pack(">Q", o) for o in chunk_offsets.get(track.number, [])])]
        if track.handler == b"vide":
            stbl.append(full(b"stss", 0, 0, struct.pack(">I", len(keys)), *[struct.pack(">I", k) for k in keys]))
        media = full(b"vmhd", 0, 1, b"\0" * 8) if track.handler == b"vide" else full(b"smhd", 0, 0, b"\0" * 4)
        dinf = box(b"dinf", full(b"dref", 0, 0, struct.pack(">I", 1), full(b"url ", 0, 1)))
        minf = box(b"minf", media, dinf, box(b"stbl", *stbl))
        edts = box(b"edts", full(b"elst", 0, 0, struct.pack(">IIII", 1, duration_ms, 0, 0x10000)))
        traks.append(box(b"trak", tkhd, edts, box(b"mdia", mdhd, hdlr, minf)))
    mvex = [box(b"mvex", *[full(b"trex", 0, 0, struct.pack(">5I", t.number, 1, 0, 0, 0)) for t in tracks])] if fragmented else []
    return box(b"moov", mvhd, *traks, *mvex)


def split(tags):
    """Tracks and the samples in their order: (track, time in its scale, is key frame, data)."""
    avcc = asc = b""
    order = []
    for kind, ms, body in tags:
        if kind == 9 and body[1] == 0:
            avcc = body[5:]
        elif kind == 8 and body[1] == 0:
            asc = body[2:]
        elif kind == 9:
            order.append((1, ms * 90, body[0] >> 4 == 1, body[5:]))
        else:
            order.append((2, ms, True, body[2:]))
    video = box(b"avc1", b"\0" * 6 + struct.pack(">H", 1) + b"\0" * 16 + struct.pack(">HHIIIH", 320, 180, 72 << 16, 72 << 16, 0, 1)
                + b"\0" * 32 + struct.pack(">HH", 24, 0xFFFF), box(b"avcC", avcc))
    config = b"\x05" + bytes([len(asc)]) + asc
    decoder = b"\x04" + bytes([13 + len(config)]) + b"\x40\x15" + b"\0" * 11 + config
    esds = full(b"esds", 0, 0, b"\x03" + bytes([3 + len(decoder) + 3]) + b"\0\x02\0" + decoder + b"\x06\x01\x02")
    audio = box(b"mp4a", b"\0" * 6 + struct.pack(">H", 1) + b"\0" * 8 + struct.pack(">HHHHI", 1, 16, 0, 0, 44100 << 16), esds)
    return [Track(1, b"vide", 90000, video), Track(2, b"soun", 1000, audio)], order


FTYP = box(b"ftyp", b"isom", b"\0\0\x02\0", b"isomiso6mp41")


def write_mp4(out, tags):
    tracks, order = split(tags)
    for number, time, key, data in order:
        tracks[number - 1].samples.append((len(data), time, key))
    duration = max(t.samples[-1][1] * 1000 // t.scale for t in tracks) + 40
    def offsets(start):
        table = {1: [], 2: []}
        for number, _, _, data in order:
            table[number].append(start)
            start += len(data)
        return table
    start = len(FTYP) + len(movie(tracks, offsets(0), False, duration)) + 16
    out.write(FTYP + movie(tracks, offsets(start), False, duration))
    out.write(struct.pack(">I4sQ", 1, b"mdat", 16 + sum(len(s[3]) for s in order)))
    for sample in order:
        out.write(sample[3])


def write_fmp4(out, tags):
    tracks, order = split(tags)
    out.write(FTYP + movie(tracks, {}, True, 0))
    ends = {}
    for number, time, _, _ in order:
        ends[number] = time
    group, sequence = [], 0
    def flush():
        nonlocal group, sequence
        sequence += 1
        def moof(data_start):
            trafs = []
            for track in tracks:
                mine = [(i, s) for i, s in enumerate(group) if s[0] == track.number]
                if not mine:
                    continue
                runs, times = b"", [s[1] for _, s in mine]
                steps = [b - a for a, b in zip(times, times[1:])]
                steps.append(steps[-1] if steps else track.scale // 25)
                for (i, s), step in zip(mine, steps):
                    runs += full(b"trun", 0, 0x701, struct.pack(">IIIII", 1, data_start + places[i], step, len(s[3]),
                                 0x02000000 if s[2] else 0x01010000))
                trafs.append(box(b"traf", full(b"tfhd", 0, 0x020000, struct.pack(">I", track.number)), runs))
            return box(b"moof", full(b"mfhd", 0, 0, struct.pack(">I", sequence)), *trafs)
        places, at = [], 0
        for s in group:
            places.append(at)
            at += len(s[3])
        out.write(moof(len(moof(0)) + 8) + struct.pack(">I4s", 8 + at, b"mdat"))
        for s in group:
            out.write(s[3])
        group = []
    for sample in order:
        if group and sample[0] == 1 and sample[1] // 90000 != group[0][1] // (90000 if group[0][0] == 1 else 1000):
            flush()
        group.append(sample)
    flush()


def main():
    kind, clip, path, megabytes = sys.argv[1:5]
    size = int(float(megabytes) * 1e6)
    tags = recording(clip, "flv" if kind in ("mp4", "fmp4") else kind, size)
    with open(path, "wb", buffering=1 << 20) as out:
        if kind == "mp4":
            write_mp4(out, list(tags))
        elif kind == "fmp4":
            write_fmp4(out, list(tags))
        else:
            write_flv(out, tags, 4 if kind == "audio" else 5)


if __name__ == "__main__":
    main()
