"""Tests of the drawing against bundled clips, packaged here, and against hand-made bytes."""

import os
import re
import shutil
import subprocess
import sys
import tempfile
import unittest
import xml.etree.ElementTree as ElementTree
from pathlib import Path

HERE = Path(__file__).resolve().parent
TOP = HERE.parent.parent
PACKAGER = os.environ["KZSPACKAGER"]
MEDIA = TOP / "tests/data/media"

sys.path.insert(0, str(HERE))
sys.path.insert(0, str(TOP / "bench"))
import presentation  # noqa: E402
from protection import protection_options  # noqa: E402

SVG = "{http://www.w3.org/2000/svg}"


def package(folder, clip, *options):
    subprocess.run([PACKAGER, f"--input-file={MEDIA / clip}", f"--output-path={folder}", *options],
                   check=True)
    return Path(folder) / f"{Path(clip).stem}.kzd"


def draw(*arguments):
    return subprocess.run([sys.executable, str(HERE / "draw.py"), *map(str, arguments)],
                          capture_output=True, text=True)


def flv_tags(clip):
    """Type, time, size with header and trailer, and body of each tag of a recording."""
    data, at = (MEDIA / clip).read_bytes(), 13
    while at < len(data):
        size = int.from_bytes(data[at + 1 : at + 4], "big")
        time = int.from_bytes(data[at + 4 : at + 7], "big") | data[at + 7] << 24
        yield data[at], time, size + 15, data[at + 11 : at + 11 + size]
        at += size + 15


class Picture:
    def __init__(self, *arguments):
        done = draw(*arguments)
        assert done.returncode == 0, done.stderr
        self.text = done.stdout
        self.root = ElementTree.fromstring(done.stdout)

    def tips(self, kind):
        """The tooltips of all shapes of a kind."""
        return [one.find(f"{SVG}title").text for one in self.root.iter()
                if kind in one.get("class", "").split() and one.find(f"{SVG}title") is not None]


class DrawingTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.mkdtemp()
        cls.cuts = package(cls.folder, "scene_cuts.flv", "--segment-duration=10")

    @classmethod
    def tearDownClass(cls):
        shutil.rmtree(cls.folder)

    def test_every_fragment_of_the_index_is_drawn_at_its_place(self):
        index = sorted(Path(self.folder).glob("scene_cutsSeg*.kzx"))[-1]
        dump = subprocess.run([PACKAGER, "--inspect-index", f"--input-file={index}"],
                              capture_output=True, text=True, check=True).stdout
        rows = re.findall(r"time = (\d+), segment = (\d+), fragment = (\d+), afra-offset = (\d+)",
                          dump)
        stored = [row for row in rows if int(row[3]) != presentation.NO_DATA]
        self.assertGreater(len(stored), 3)
        tips = Picture(self.cuts).tips("fragment")
        self.assertEqual(len(tips), len(stored))
        for tip, (time, segment, number, offset) in zip(tips, stored):
            self.assertTrue(tip.startswith(f"fragment {number}, segment {segment}: "), tip)
            self.assertIn(f": {int(time) / 1000:g} to ", tip)
            self.assertTrue(tip.endswith(f" bytes at {offset}"), tip)

    def test_key_frames_are_those_of_the_recording(self):
        wanted = [time for kind, time, _, body in flv_tags("scene_cuts.flv")
                  if kind == 9 and body[0] >> 4 == 1 and body[1] == 1]
        self.assertEqual(len(wanted), 10)
        tips = Picture(self.cuts).tips("key")
        self.assertEqual(tips, [f"key frame at {time / 1000:g} s" for time in wanted])

    def test_sizes_add_up_to_those_of_the_recording(self):
        picture = Picture(self.cuts)
        for kind, name in ((9, "video"), (8, "audio")):
            wanted = sum(size for tag, _, size, _ in flv_tags("scene_cuts.flv") if tag == kind)
            # A tooltip names all kinds of its half second; each kind has a bar of its own.
            drawn = sum(int(re.search(rf"{name} (\d+) bytes", tip).group(1))
                        for tip in picture.tips(name))
            self.assertEqual(drawn, wanted)

    def test_runs_are_those_of_the_bootstrap(self):
        package(self.folder, "long_gop_9s.flv", "--external-bootstrap")
        dump = subprocess.run(
            [PACKAGER, "--inspect-bootstrap", f"--input-file={self.folder}/long_gop_9s.bootstrap"],
            capture_output=True, text=True, check=True).stdout
        rows = re.findall(r"fragment = (\d+), timestamp = (\d+), duration = (\d+)", dump)
        rows = [row for row in rows if row[0] != "0"]
        picture = Picture(f"{self.folder}/long_gop_9s.kzd")
        self.assertEqual(len(picture.tips("run")), sum(row[2] != "0" for row in rows))
        self.assertEqual(len(picture.tips("gap")), sum(row[2] == "0" for row in rows))
        self.assertIn("no data of its own", picture.tips("gap")[0])

    def test_every_segment_with_fragments_is_drawn(self):
        names = [tip.split(":")[0] for tip in Picture(self.cuts).tips("segment")]
        self.assertEqual(names, ["scene_cutsSeg1.kzs", "scene_cutsSeg2.kzs"])

    def test_a_rendition_is_chosen_by_its_name(self):
        first = package(self.folder, "mbr_60k.flv", "--bitrate=60")
        both = package(self.folder, "mbr_120k.flv", "--bitrate=120", f"--manifest-file={first}")
        self.assertIn("mbr_60kSeg1.kzs", Picture(both).text)
        self.assertIn("mbr_120kSeg1.kzs", Picture(both, "--rendition", "mbr_120k").text)
        refused = draw(both, "--rendition", "other")
        self.assertEqual(refused.returncode, 1)
        self.assertIn("no such rendition; it has: mbr_60k, mbr_120k", refused.stderr)

    def test_audio_alone_has_no_key_frames(self):
        picture = Picture(package(self.folder, "aac_only.flv"))
        self.assertEqual(picture.tips("key"), [])
        self.assertGreater(len(picture.tips("fragment")), 2)

    def test_a_protected_presentation_shows_the_same_key_frames(self):
        folder = Path(self.folder) / "protected"
        manifest = package(folder, "scene_cuts.flv", *protection_options(folder / "keys"))
        picture = Picture(manifest)
        self.assertIn("samples protected", picture.text)
        self.assertEqual(picture.tips("key"), Picture(self.cuts).tips("key"))

    def test_the_picture_in_the_documents_is_of_this_program(self):
        self.assertEqual(Picture(self.cuts).text,
                         (TOP / "docs/presentation.svg").read_text(encoding="utf-8"),
                         "draw it anew with: examples/inspect/refresh.sh")

    def test_what_is_wrong_is_told_in_one_line(self):
        broken = Path(self.folder) / "broken"
        broken.mkdir()
        manifest = package(broken, "short_3s.flv")
        segment, index = broken / "short_3sSeg1.kzs", broken / "short_3sSeg1.kzx"
        whole = segment.read_bytes()
        cases = [
            (segment, whole[:-5], "short_3sSeg1.kzs ends too early"),
            (segment, None, "short_3sSeg1.kzs: No such file or directory"),
            (index, index.read_bytes()[:30], "short_3sSeg1.kzx ends too early"),
            (index, b"\0\0\0\x0cabst\0\0\0\0", "a abst box where afra should stand"),
            (manifest, b"<manifest>", "isn't well-formed"),
        ]
        for path, content, message in cases:
            kept = path.read_bytes()
            path.unlink() if content is None else path.write_bytes(content)
            done = draw(manifest)
            path.write_bytes(kept)
            self.assertEqual(done.returncode, 1)
            self.assertIn(message, done.stderr)
            self.assertEqual(done.stderr.count("\n"), 1)


class ReadingTest(unittest.TestCase):
    def test_a_table_cannot_claim_more_rows_than_there_are_bytes(self):
        index = bytes.fromhex("00000019 61667261 00000000 e0 000003e8 00000000 ffffffff")
        with self.assertRaisesRegex(presentation.Broken, "longer than the file"):
            presentation.read_index(index, "x")

    def test_an_index_of_short_numbers_is_read(self):
        index = bytes.fromhex("""
            00000041 61667261 00000000 20 000003e8 00000000 00000002
            0000000000000000 0001 0001 00000258 00000000
            0000000000000fa0 0001 0002 ffffffff 00000000
        """)
        entries = presentation.read_index(index, "x")
        self.assertEqual([(e.time, e.number, e.offset) for e in entries],
                         [(0, 1, 600), (4000, 2, None)])

    def test_key_frames_of_encrypted_tags_are_told_by_the_hint_samples(self):
        body = bytes.fromhex("01 53 45 00 000000")
        tag = lambda kind, time: (bytes([kind]) + len(body).to_bytes(3, "big")
                                  + time.to_bytes(3, "big") + bytes(4) + body
                                  + (len(body) + 11).to_bytes(4, "big"))
        mdat = presentation.Reader(tag(0x29, 0) + tag(0x29, 40) + tag(0x28, 41), "x")
        tags = presentation.read_tags(mdat, [0x02000000, 0x01010000, 0x01010000])
        self.assertEqual([(t.kind, t.time, t.is_key_frame, t.is_encrypted) for t in tags],
                         [(9, 0, True, True), (9, 40, False, True), (8, 41, False, True)])


if __name__ == "__main__":
    unittest.main()
