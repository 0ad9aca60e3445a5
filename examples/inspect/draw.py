#!/usr/bin/env python3
"""Draws a packaged presentation as an SVG picture, from its files alone.

Segments, fragments, key frames, sizes over time and the runs of the bootstrap, above one time axis.
"""

import argparse
import math
import sys
from pathlib import Path
from xml.sax.saxutils import escape

from presentation import AUDIO, VIDEO, Broken, numbers_of, read_presentation

WIDTH, LEFT, RIGHT = 1200, 110, 20
COLOURS = {"video": "#4a7fd6", "audio": "#e0943a", "data": "#8f8f8f"}
STYLE = """
text { font: 12px sans-serif; fill: #223; }
.name { font-weight: bold; }
.faint { fill: #667; font-size: 11px; }
.inside { text-anchor: middle; font-size: 11px; }
.segment { fill: #d9ead3; stroke: #7aa56b; }
.fragment { fill: #cfdef7; stroke: #4a7fd6; }
.fragment.odd { fill: #e3ecfb; }
.run { fill: #f6ead2; stroke: #c19a3f; }
.gap { fill: url(#hatching); stroke: #c0392b; }
.key { stroke: #1d4fa3; stroke-width: 1.5; }
.key.inner { stroke: #8fb0e6; }
.mean { fill: none; stroke: #223; stroke-dasharray: 4 3; }
.grid { stroke: #e4e6ec; }
""".strip()


def nice_step(span, most):
    """The smallest of 1, 2, 5 times a power of ten that cuts `span` into at most `most` steps."""
    step = 10 ** math.floor(math.log10(max(span / most, 1e-9)))
    return next(step * factor for factor in (1, 2, 5, 10) if span / (step * factor) <= most)


def seconds(ms):
    return f"{ms / 1000:.3f}".rstrip("0").rstrip(".")


class Drawing:
    def __init__(self, first, last):
        self.first, self.last = first, max(last, first + 1)
        self.parts = []

    def x(self, ms):
        place = (ms - self.first) / (self.last - self.first)
        return round(LEFT + place * (WIDTH - LEFT - RIGHT), 2)

    def text(self, x, y, words, kind=""):
        self.parts.append(f'<text x="{x:g}" y="{y:g}" class="{kind}">{escape(words)}</text>')

    def lane(self, y, name, note=""):
        self.text(8, y + 16, name, "name")
        if note:
            self.text(8, y + 31, note, "faint")

    def block(self, kind, start, end, y, height, label, tip):
        """A rectangle over a stretch of time; the label stands in it where there is room."""
        x, width = self.x(start), round(self.x(end) - self.x(start), 2)
        self.parts.append(
            f'<rect class="{kind}" x="{x:g}" y="{y:g}" width="{width:g}" height="{height:g}">'
            f"<title>{escape(tip)}</title></rect>"
        )
        if width > 6.2 * len(label):
            self.text(round(x + width / 2, 2), y + height / 2 + 4, label, "inside")

    def line(self, kind, x1, y1, x2, y2, tip=""):
        title = f"<title>{escape(tip)}</title>" if tip else ""
        self.parts.append(
            f'<line class="{kind}" x1="{x1:g}" y1="{y1:g}" x2="{x2:g}" y2="{y2:g}">{title}</line>'
        )

    def svg(self, height):
        return "\n".join(
            [
                f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {WIDTH} {height}" '
                f'width="{WIDTH}" height="{height}">',
                f"<style>\n{STYLE}\n</style>",
                '<defs><pattern id="hatching" width="6" height="6" patternUnits="userSpaceOnUse" '
                'patternTransform="rotate(45)"><rect width="6" height="6" fill="#fdf1ef"/>'
                '<rect width="2" height="6" fill="#e9a59c"/></pattern></defs>',
                f'<rect width="{WIDTH}" height="{height}" fill="#ffffff"/>',
                *self.parts,
                "</svg>\n",
            ]
        )


def draw_segments(drawing, presentation, y):
    drawing.lane(y, "segments")
    for segment, size in presentation.segment_sizes.items():
        own = [one for one in presentation.fragments if one.segment == segment]
        if own:
            name = f"{presentation.name}Seg{segment}.kzs"
            drawing.block("segment", own[0].start, own[-1].end, y, 24, f"{name}, {size:,} bytes",
                          f"{name}: {size} bytes, {len(own)} fragments")


def draw_fragments(drawing, presentation, y):
    drawing.lane(y, "fragments")
    for i, one in enumerate(presentation.fragments):
        drawing.block(
            "fragment odd" if i % 2 else "fragment", one.start, one.end, y, 30, str(one.number),
            f"fragment {one.number}, segment {one.segment}: {seconds(one.start)} to "
            f"{seconds(one.end)} s, {one.size} bytes at {one.offset}",
        )


def draw_key_frames(drawing, presentation, y):
    drawing.lane(y, "key frames")
    for one in presentation.fragments:
        pictures = [tag for tag in one.tags if tag.is_picture]
        for tag in pictures:
            if tag.is_key_frame:
                opens = tag is pictures[0]
                drawing.line("key" if opens else "key inner", drawing.x(tag.time),
                             y if opens else y + 8, drawing.x(tag.time), y + 24,
                             f"key frame at {seconds(tag.time)} s")


def draw_sizes(drawing, presentation, y, height):
    """Stacked bars of kbit/s, and the mean of each fragment."""
    step = max(1, int(nice_step(drawing.last - drawing.first, 120)))
    slots = {}
    for one in presentation.fragments:
        for tag in one.tags:
            kind = {VIDEO: "video", AUDIO: "audio"}.get(tag.kind, "data")
            slot = slots.setdefault(tag.time // step, dict.fromkeys(COLOURS, 0))
            slot[kind] += tag.size
    most = max([8 * sum(slot.values()) / step for slot in slots.values()] + [1])
    grid = nice_step(most, 4)
    drawing.lane(y, "sizes", f"kbit/s, per {seconds(step)} s")
    top = math.ceil(most / grid) * grid
    level = lambda rate: round(y + height - rate / top * height, 2)
    for i in range(int(top / grid) + 1):
        drawing.line("grid", LEFT, level(i * grid), WIDTH - RIGHT, level(i * grid))
        drawing.text(LEFT - 34, level(i * grid) + 4, f"{i * grid:g}", "faint")
    for number, slot in sorted(slots.items()):
        start, end = max(number * step, drawing.first), min((number + 1) * step, drawing.last)
        tip = ", ".join(f"{kind} {size} bytes" for kind, size in slot.items() if size)
        floor = 0
        for kind, size in slot.items():
            if size:
                rate = 8 * size / step
                high, low = level(floor + rate), level(floor)
                drawing.parts.append(
                    f'<rect class="{kind}" fill="{COLOURS[kind]}" x="{drawing.x(start):g}" '
                    f'y="{high:g}" width="{max(0.5, drawing.x(end) - drawing.x(start) - 0.5):.2f}" '
                    f'height="{low - high:.2f}"><title>{seconds(start)} s: {tip}</title></rect>'
                )
                floor += rate
    for one in presentation.fragments:
        rate = 8 * sum(tag.size for tag in one.tags) / max(1, one.end - one.start)
        if rate <= top:
            drawing.line("mean", drawing.x(one.start), level(rate), drawing.x(one.end), level(rate),
                         f"fragment {one.number}: {rate:.0f} kbit/s on average")


def draw_runs(drawing, presentation, y):
    drawing.lane(y, "bootstrap", "runs")
    for run, last, start, end in numbers_of(presentation):
        numbers = str(run.first) if run.first == last else f"{run.first}-{last}"
        if run.duration:
            label = f"{numbers}: {run.duration} ms"
            tip = f"fragments {numbers} from {seconds(start)} s, {run.duration} ms each"
            drawing.block("run", start, start + run.duration * (last - run.first + 1), y, 26,
                          label, tip)
        else:
            what = "skipped" if run.discontinuity == 2 else "no data of its own"
            drawing.block("gap", start, end, y, 26, numbers, f"number {numbers}: {what}")


def draw_axis(drawing, y, bottom):
    step = nice_step((drawing.last - drawing.first) / 1000, 12) * 1000
    tick = math.ceil(drawing.first / step) * step
    while tick <= drawing.last:
        drawing.line("grid", drawing.x(tick), y, drawing.x(tick), bottom)
        drawing.text(drawing.x(tick), bottom + 16, f"{seconds(tick)} s", "inside faint")
        tick += step


def draw_legend(drawing, y):
    items = [*COLOURS.items()]
    for i, (kind, colour) in enumerate(items):
        x = WIDTH - RIGHT - 70 * (len(items) - i)
        drawing.parts.append(f'<rect x="{x}" y="{y - 10}" width="12" height="12" fill="{colour}"/>')
        drawing.text(x + 17, y, kind)


def draw(presentation):
    fragments = presentation.fragments
    if not fragments:
        raise Broken(f"{presentation.name} has no fragment")
    first = min([fragments[0].start] + [tag.time for tag in fragments[0].tags])
    drawing = Drawing(first, max(one.end for one in fragments))
    tags = [tag for one in fragments for tag in one.tags]
    hatched = sum(1 for entry in presentation.entries if entry.offset is None)
    note = f"{seconds(drawing.last - first)} s, {len(fragments)} fragments"
    if hatched:
        note += f", {hatched} number{'s' * (hatched > 1)} without data (hatched)"
    if any(tag.is_encrypted for tag in tags):
        note += f", {sum(tag.is_encrypted for tag in tags)} of {len(tags)} samples protected"
    drawing.text(8, 24, presentation.name, "name")
    drawing.text(LEFT, 24, note)
    draw_legend(drawing, 24)
    draw_axis(drawing, 44, 396)
    draw_segments(drawing, presentation, 48)
    draw_fragments(drawing, presentation, 86)
    draw_key_frames(drawing, presentation, 130)
    draw_sizes(drawing, presentation, 172, 160)
    draw_runs(drawing, presentation, 360)
    return drawing.svg(424)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("manifest", type=Path, help="a .kzd file; its segments stand beside it")
    parser.add_argument("--rendition", help="stream id; the first rendition without it")
    parser.add_argument("-o", "--output", type=Path, help="SVG file; standard output without it")
    arguments = parser.parse_args()
    try:
        picture = draw(read_presentation(arguments.manifest, arguments.rendition))
    except Broken as error:
        print(f"{parser.prog}: {error}", file=sys.stderr)
        return 1
    if arguments.output:
        arguments.output.write_text(picture, encoding="utf-8")
    else:
        sys.stdout.write(picture)
    return 0


if __name__ == "__main__":
    sys.exit(main())
