#!/usr/bin/env python3
"""Runs the packager with awkward names and awkward places, and looks at what it makes of them.

usage: names.py BINARY PROTECTION_FOLDER

No name is taken for a pattern: inputs, folders and manifests with any byte in their names are
packaged with the bytes of an ordinary run. Contents that XML can't hold, places that can't be
written and inputs that aren't files end in an error line. Nothing overwrites its own input.
PROTECTION_FOLDER is one of make_corpus.
"""
import argparse
import os
import shutil
import sys
import threading
import xml.etree.ElementTree

from common import absolute, Folder, MEDIA, run, Tally

CLIP = MEDIA / "short_3s.flv"
NAMES = [b"with blanks", b"%1% 100%s %n %%", b"it's \"quoted\"", b"a & b", b"<angle>", b"--input-file=x", b"-", b"\\back\\slash", b"$HOME `id` ;|*?[a]", b"caf\xc3\xa9", b".hidden", b"a.b.c",
         b"trailing ", b"=", b"long" + b"x" * 240]
# XML can't hold these, or not as they are, so no manifest can name them.
UNFIT = [b"line\nfeed", b"tab\there", b"bad\xff\xfeutf8", b"control\x01", b"\xc0\xaf", b"\xed\xa0\x80"]
SUFFIX = b".flv"


class Names:
    def __init__(self, options):
        self.options = options
        with Folder() as work:
            shutil.copy(CLIP, work / "plain.flv")
            self.go(work, b"plain.flv", b"out")
            self.plain = (work / "out" / "plainSeg1.kzs").read_bytes()

    def go(self, work, name, out, *more):
        argv = [os.fsencode(self.options.binary), b"--input-file=" + name, b"--output-path=" + out, *more]
        return run(argv, cwd=work)

    def packaged(self, result, work, out, base):
        """What is wrong with a run that should have gone well."""
        if result.status != 0:
            return f"status {result.status}: {result.err[:80]!r}"
        folder = os.path.join(os.fsencode(work), out)
        with open(os.path.join(folder, base + b"Seg1.kzs"), "rb") as file:
            if file.read() != self.plain:
                return "other bytes than under an ordinary name"
        manifest = os.path.join(folder, base + b".kzd")
        root = xml.etree.ElementTree.parse(manifest).getroot()
        media = root.find("{*}media")
        if media is None or media.get("streamId") != base.decode():
            return f"the manifest names {media.get('streamId') if media is not None else None!r}"
        return None

    @staticmethod
    def refused(result):
        """What is wrong with a run that should have ended in an error. A path's own line feeds
        are in its line."""
        if result.timed_out or result.status <= 0:
            return f"status {result.status}, timed out {result.timed_out}"
        return None if result.err.startswith(b"Error ") else f"said {result.err[:80]!r}"

    def inputs(self):
        tally = Tally("names of inputs")
        for name in NAMES:
            with Folder() as work:
                shutil.copy(CLIP, os.path.join(os.fsencode(work), name + SUFFIX))
                # The longest name leaves no room for "Seg1.kzs" on most file systems, but this one does.
                tally.record(self.packaged(self.go(work, name + SUFFIX, b"out"), work, b"out", name), repr(name))
        for name in UNFIT:
            with Folder() as work:
                shutil.copy(CLIP, os.path.join(os.fsencode(work), name + SUFFIX))
                result = self.go(work, name + SUFFIX, b"out")
                tally.record(self.refused(result), repr(name))
        with Folder() as work:
            longest = b"y" * 251 + SUFFIX
            shutil.copy(CLIP, os.path.join(os.fsencode(work), longest))
            tally.record(self.refused(self.go(work, longest, b"out")), "255 bytes, no room for what is added")
        return tally.show()

    def folders(self):
        tally = Tally("names of output folders and manifests")
        for name in NAMES + UNFIT + [b"deep/" * 20 + b"er"]:
            with Folder() as work:
                shutil.copy(CLIP, work / "plain.flv")
                tally.record(self.packaged(self.go(work, b"plain.flv", name), work, name, b"plain"), repr(name))
        for name in NAMES:
            with Folder() as work:
                shutil.copy(CLIP, work / "plain.flv")
                file = name + b".kzd"
                result = self.go(work, b"plain.flv", b"out", b"--output-manifest-file=" + file)
                tally.record(self.packaged(result, work, b"out", name), f"manifest {name!r}")
        return tally.show()

    def texts(self):
        tally = Tally("content ids")
        for text in NAMES + UNFIT:
            with Folder() as work:
                shutil.copy(CLIP, work / "plain.flv")
                result = self.go(work, b"plain.flv", b"out", b"--content-id=" + text)
                if text in UNFIT:
                    tally.record(self.refused(result), repr(text))
                    continue
                complaint = self.packaged(result, work, b"out", b"plain")
                if not complaint:
                    root = xml.etree.ElementTree.parse(work / "out" / "plain.kzd").getroot()
                    found = root.find("{*}drmAdditionalHeader").get("drmContentId")
                    complaint = None if found == text.decode() else f"comes back as {found!r}"
                tally.record(complaint, repr(text))
        return tally.show()

    def urls(self):
        """No XML names the license server, so that its URL may be any text."""
        tally = Tally("URLs of license servers")
        for text in NAMES + UNFIT:
            with Folder() as work:
                shutil.copy(CLIP, work / "plain.flv")
                settings = os.fsencode(self.options.protection / "settings.xml")
                result = self.go(work, b"plain.flv", b"out", b"--conf-file=" + settings,
                                 b"--license-server-url=" + text)
                complaint = result.complaint()
                if not complaint and result.status == 0:
                    xml.etree.ElementTree.parse(work / "out" / "plain.kzd")
                tally.record(complaint or (f"status {result.status}" if result.status else None), repr(text))
        return tally.show()

    def places(self):
        tally = Tally("places of inputs and outputs")
        for complaint, what in (self.link(), self.fifo(), self.device(), self.same_folder(), self.onto_input(),
                                self.onto_manifest(), self.folder_in_the_way(), self.read_only(), self.missing()):
            tally.record(complaint, what)
        return tally.show()

    def link(self):
        with Folder() as work:
            shutil.copy(CLIP, work / "plain.flv")
            (work / "real").mkdir()
            (work / "link").symlink_to(work / "real")
            return self.packaged(self.go(work, b"plain.flv", b"link"), work, b"real", b"plain"), "output is a link"

    def fifo(self):
        with Folder() as work:
            os.mkfifo(work / "pipe.flv")

            def feed():
                try:
                    with open(work / "pipe.flv", "wb") as pipe:
                        pipe.write(CLIP.read_bytes())
                except OSError:
                    pass
            threading.Thread(target=feed, daemon=True).start()
            return self.refused(self.go(work, b"pipe.flv", b"out")), "input is a FIFO"

    def device(self):
        with Folder() as work:
            for device in (b"/dev/null", b"/dev/zero", b"/dev/stdin"):
                complaint = self.refused(self.go(work, device, b"out"))
                if complaint:
                    return f"{device.decode()}: {complaint}", "input is a device"
        return None, "input is a device"

    def same_folder(self):
        with Folder() as work:
            shutil.copy(CLIP, work / "plain.flv")
            complaint = self.packaged(self.go(work, b"plain.flv", b"."), work, b".", b"plain")
            if not complaint and (work / "plain.flv").read_bytes() != CLIP.read_bytes():
                complaint = "the input changed"
            return complaint, "output beside the input"

    def onto_input(self):
        """Every output in turn is the input itself, by name and by link."""
        for suffix in ("Seg1.kzs", "Seg1.kzx", ".kzd", ".bootstrap"):
            for linked in (False, True):
                with Folder() as work:
                    name = "plain.flv" if linked else f"plain{suffix}"
                    shutil.copy(CLIP, work / name)
                    if linked:
                        (work / f"plain{suffix}").symlink_to(work / name)
                        base_input = name
                    else:
                        # An input whose base name makes the output's name its own.
                        base_input = f"plain{suffix}"
                        os.rename(work / name, work / base_input)
                        name = base_input
                    before = (work / name).read_bytes()
                    result = self.go(work, os.fsencode(base_input), b".", b"--external-bootstrap")
                    kept = (work / name).read_bytes() == before
                    if result.status == 0 and not kept:
                        return f"{suffix}, link {linked}: the input was overwritten", "output onto its input"
        return None, "output onto its input"

    def onto_manifest(self):
        with Folder() as work:
            for clip in ("mbr_60k.flv", "mbr_120k.flv"):
                result = self.go(work, os.fsencode(MEDIA / clip), b".", b"--output-manifest-file=all.kzd",
                                 *([b"--manifest-file=all.kzd"] if clip == "mbr_120k.flv" else []))
                if result.status != 0:
                    return f"status {result.status}", "manifest onto itself"
            count = (work / "all.kzd").read_bytes().count(b"<media")
            return None if count == 2 else f"{count} renditions", "manifest onto itself"

    def folder_in_the_way(self):
        for suffix in ("Seg1.kzs", "Seg1.kzx", ".kzd", ".bootstrap"):
            with Folder() as work:
                shutil.copy(CLIP, work / "plain.flv")
                (work / f"plain{suffix}").mkdir()
                complaint = self.refused(self.go(work, b"plain.flv", b".", b"--external-bootstrap"))
                if complaint:
                    return f"{suffix}: {complaint}", "a folder in the place of an output"
        return None, "a folder in the place of an output"

    def read_only(self):
        with Folder() as work:
            shutil.copy(CLIP, work / "plain.flv")
            return self.refused(self.go(work, b"plain.flv", b"/proc/kz")), "output can't be made"

    def missing(self):
        with Folder() as work:
            (work / "file").write_bytes(b"x")
            shutil.copy(CLIP, work / "plain.flv")
            return self.refused(self.go(work, b"plain.flv", b"file")), "output folder is a file"


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("binary", type=absolute)
    parser.add_argument("protection", type=absolute)
    names = Names(parser.parse_args())
    good = [names.inputs(), names.folders(), names.texts(), names.urls(), names.places()]
    sys.exit(0 if all(good) else 1)


if __name__ == "__main__":
    main()
