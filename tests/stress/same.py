#!/usr/bin/env python3
"""Packages the same recordings under differing circumstances: the bytes must be the same.

usage: same.py BINARY [OTHER_BINARY...]

With SOURCE_DATE_EPOCH nothing counts but the input: not the folder, the time zone, the language, the
umask, nor the compiler that built the program (OTHER_BINARY). Without it dates and ids differ and
nothing else.
"""
import argparse
import os
import re
import shutil
import sys
import time

from common import absolute, digest, Folder, MEDIA, run, Tally

CLIPS = {
    "h264_aac_bframes.flv": ["--segment-duration=4", "--external-bootstrap"],
    "audio_5min.flv": ["--fragment-duration=2.5", "--duration-precision=0.3"],
    "h264_aac_bframes.mp4": ["--edit-list", "--bitrate=1234567.5"],
    "frag_many_per_gop.mp4": ["--frame-rate=29.97", "--frames-per-keyframe-interval=30", "--content-id=a b"],
    "nellymoser_8k_h263.flv": ["--allowed-drift=0.001"],
}
CIRCUMSTANCES = {
    "again": {},
    "another time zone": {"TZ": "Pacific/Chatham"},
    "a language with commas": {"LC_ALL": "de_DE.UTF-8"},
    "a language of one byte": {"LC_ALL": "tr_TR.ISO-8859-9"},
    "no environment to speak of": {"HOME": "/nowhere", "LANG": "", "TZ": ""},
}


def package(binary, clip, out, env=None, cwd=None):
    result = run([binary, f"--input-file={clip}", f"--output-path={out}", *CLIPS[os.path.basename(clip)]], env,
                 timeout=60, cwd=cwd)
    return None if result.status == 0 else f"status {result.status}: {result.err[:80]!r}"


def without_dates_and_ids(folder):
    out = {}
    for file in folder.iterdir():
        data = file.read_bytes()
        if file.suffix == ".kzs":
            # Version 1 headers: both dates stand behind the version and flags.
            data = re.sub(rb"(mvhd|tkhd|mdhd)(\x01...).{16}", rb"\1\2", data, flags=re.DOTALL)
        elif file.suffix == ".kzd":
            data = re.sub(rb"(bootstrap|drmMetadata)\d+", rb"\1", data)
        out[file.name] = data
    return out


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("binaries", nargs="+", type=absolute)
    binaries = parser.parse_args().binaries
    tally = Tally("same input, same bytes")
    freely = Tally("without a set time only dates and ids differ")
    for name in CLIPS:
        clip = MEDIA / name
        with Folder() as work:
            complaint = package(binaries[0], clip, work / "first")
            first = digest(work / "first")

            def compare(what, out, complaint):
                tally.record(complaint or (None if digest(out) == first else "other bytes"), f"{name}: {what}")

            tally.record(complaint, name)
            for what, env in CIRCUMSTANCES.items():
                out = work / what / "deeper"
                compare(what, out, package(binaries[0], clip, out, env))
            shutil.copy(clip, work / name)
            compare("relative paths", work / "r", package(binaries[0], name, "r", cwd=work))
            former = os.umask(0o077)
            compare("another umask", work / "u", package(binaries[0], clip, work / "u"))
            os.umask(former)
            for other in binaries[1:]:
                compare(other.parent.name, work / other.parent.name,
                        package(other, clip, work / other.parent.name))

            free = {"SOURCE_DATE_EPOCH": ""}
            complaint = package(binaries[0], clip, work / "now", free)
            time.sleep(1.1)
            complaint = complaint or package(binaries[0], clip, work / "later", free)
            same = without_dates_and_ids(work / "now") == without_dates_and_ids(work / "later")
            freely.record(complaint or (None if same else "other bytes"), name)
    good = [tally.show(), freely.show()]
    sys.exit(0 if all(good) else 1)


if __name__ == "__main__":
    main()
