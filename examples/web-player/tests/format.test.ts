import { describe, expect, it } from 'vitest';

import { parseBootstrap } from '../src/format/bootstrap';
import { parseIndex } from '../src/format/fragmentIndex';
import {
    checkCodecs,
    flvOf,
    isSequenceHeader,
    mediaOf,
    tagsOf,
} from '../src/format/tags';
import { expandTimetable } from '../src/format/timetable';
import * as b from './bytes';

describe('bootstrap', () => {
    const runs: b.Runs = {
        segments: [
            [1, 2],
            [2, 2],
        ],
        fragments: [
            [1, 0, 4000],
            [3, 8000, 0, 1],
            [4, 13300, 6900],
            [0, 0, 0, 0],
        ],
    };

    it('reads the run tables behind all the texts', () => {
        const bootstrap = parseBootstrap(b.abst(runs), 'x');
        expect(bootstrap.version).toBe(3);
        expect(bootstrap.currentMediaTimeMs).toBe(16000);
        expect(bootstrap.segmentRuns).toEqual([
            { firstSegment: 1, fragmentsPerSegment: 2 },
            { firstSegment: 2, fragmentsPerSegment: 2 },
        ]);
        expect(bootstrap.fragmentRuns[0]).toEqual({
            firstFragment: 1,
            startMs: 0,
            durationMs: 4000,
        });
        expect(bootstrap.fragmentRuns[1]).toEqual({
            firstFragment: 3,
            startMs: 8000,
            durationMs: 0,
            discontinuity: 1,
        });
    });

    it('is refused when it is cut anywhere', () => {
        const whole = b.abst(runs);
        for (let size = 0; size < whole.length; ++size) {
            expect(() => parseBootstrap(whole.slice(0, size), 'x')).toThrow(/x is damaged/);
        }
    });

    it('is refused with another version or another type', () => {
        expect(() => parseBootstrap(b.abst(runs, 1), 'x')).toThrow(/unknown version 1/);
        expect(() => parseBootstrap(b.afra([]), 'x')).toThrow(/no abst box/);
    });

    it('is refused when a table claims more rows than there are bytes', () => {
        const claiming = b.bytes(b.abst({ segments: [], fragments: [] }));
        claiming.set(b.u32(0xffffffff), claiming.length - 4);
        expect(() => parseBootstrap(claiming, 'x')).toThrow(/longer than the file/);
    });
});

describe('timetable', () => {
    const table = (runs: b.Runs) => expandTimetable(parseBootstrap(b.abst(runs), 'x'));

    it('gives every number of a run its time, and the last run the numbers of the segments', () => {
        const cells = table({
            segments: [
                [1, 3],
                [2, 1],
            ],
            fragments: [
                [1, 0, 4000],
                [4, 12000, 1040],
                [0, 0, 0, 0],
            ],
        });
        expect(cells.map((cell) => [cell.fragment, cell.segment, cell.startMs])).toEqual([
            [1, 1, 0],
            [2, 1, 4000],
            [3, 1, 8000],
            [4, 2, 12000],
        ]);
        expect(cells[3]?.durationMs).toBe(1040);
        expect(cells.every((cell) => cell.hasData)).toBe(true);
    });

    it('marks numbers without data up to the next fragment', () => {
        const cells = table({
            segments: [[1, 4]],
            fragments: [
                [1, 0, 4000],
                [2, 4000, 0, 1],
                [4, 13000, 3000],
            ],
        });
        expect(cells.map((cell) => [cell.fragment, cell.hasData, cell.startMs, cell.durationMs]))
            .toEqual([
                [1, true, 0, 4000],
                [2, false, 4000, 4500],
                [3, false, 8500, 4500],
                [4, true, 13000, 3000],
            ]);
    });

    it('places skipped numbers, which have no time, behind the fragment before them', () => {
        const cells = table({
            segments: [[1, 3]],
            fragments: [
                [5, 20000, 2000],
                [6, 0, 0, 2],
                [7, 26000, 2000],
            ],
        });
        expect(cells[1]).toMatchObject({ fragment: 6, startMs: 22000, durationMs: 4000 });
    });

    it('counts from the first number, which need not be 1', () => {
        expect(table({ segments: [[1, 2]], fragments: [[7, 28000, 4000]] }).map((c) => c.fragment))
            .toEqual([7, 8]);
    });

    it('gives an empty segment no number', () => {
        const cells = table({
            segments: [
                [1, 1],
                [2, 0],
                [3, 1],
            ],
            fragments: [[1, 0, 4000]],
        });
        expect(cells.map((cell) => cell.segment)).toEqual([1, 3]);
    });

    it('is empty for a bootstrap without fragments', () => {
        expect(table({ segments: [], fragments: [[0, 0, 0, 0]] })).toEqual([]);
    });

    it('does not expand billions of numbers', () => {
        const cells = table({ segments: [[1, 0xffffffff]], fragments: [[1, 0, 1]] });
        expect(cells.length).toBe(1_000_000);
    });
});

describe('index', () => {
    it('reads offsets, and null for a number without data', () => {
        const index = b.afra([
            [1, 1, 0, 41000],
            [2, 1, 4000, null],
            [3, 2, 9000, 5 * 2 ** 32],
        ]);
        expect(parseIndex(index, 'x')).toEqual([
            { fragment: 1, segment: 1, startMs: 0, offset: 41000 },
            { fragment: 2, segment: 1, startMs: 4000, offset: null },
            { fragment: 3, segment: 2, startMs: 9000, offset: 5 * 2 ** 32 },
        ]);
    });

    it('reads short ids and short offsets', () => {
        const row = (offset: number) =>
            b.bytes(b.u64(4000), b.u16(1), b.u16(2), b.u32(offset), b.u32(0));
        const index = b.box(
            'afra',
            b.u32(0),
            b.u8(0x20),
            b.u32(1000),
            b.u32(1),
            b.u64(0),
            b.u32(77), // a local entry
            b.u32(2),
            row(600),
            row(0xffffffff),
        );
        expect(parseIndex(index, 'x').map((entry) => entry.offset)).toEqual([600, null]);
    });

    it('is refused when it is cut anywhere', () => {
        const whole = b.afra([[1, 1, 0, 1]]);
        for (let size = 0; size < whole.length; ++size) {
            expect(() => parseIndex(whole.slice(0, size), 'x')).toThrow(/x is damaged/);
        }
    });
});

describe('tags', () => {
    it('are found in the media data behind the other boxes', () => {
        const time = 0x12345678;
        const tags = tagsOf(
            mediaOf(b.fragment(b.tag(9, time, b.kAvcKeyFrame), b.tag(8, 5, b.kAacFrame)), 'x'),
            'x',
        );
        expect(tags.map((tag) => [tag.kind, tag.timeMs])).toEqual([
            [9, time],
            [8, 5],
        ]);
    });

    it('say when they are encrypted, whatever their kind', () => {
        const tags = tagsOf(b.bytes(b.tag(0x29, 0, [1]), b.tag(0x2f, 0, [1])), 'x');
        expect(tags.map((tag) => [tag.kind, tag.isEncrypted])).toEqual([
            [9, true],
            [15, true],
        ]);
    });

    it('that are cut, or whose size words disagree, are refused', () => {
        const whole = b.tag(8, 0, b.kAacFrame);
        expect(() => tagsOf(whole.slice(0, -1), 'x')).toThrow(/ends too early/);
        whole[whole.length - 1]! ^= 1;
        expect(() => tagsOf(whole, 'x')).toThrow(/size word/);
    });

    it('in a fragment without media data are an error', () => {
        expect(() => mediaOf(b.box('moof', []), 'x')).toThrow(/no mdat/);
    });

    it('of codecs that no browser plays are named', () => {
        const speex = tagsOf(b.tag(8, 0, [0xb2, 0]), 'x');
        expect(() => checkCodecs(speex, '"clip"')).toThrow('The audio of "clip" is Speex');
        const h263 = tagsOf(b.tag(9, 0, [0x12, 0]), 'x');
        expect(() => checkCodecs(h263, '"clip"')).toThrow('The video of "clip" is Sorenson H.263');
        const fine = b.bytes(b.tag(9, 0, b.kAvcKeyFrame), b.tag(8, 0, [0x2f, 0]), b.tag(8, 0, []));
        expect(() => checkCodecs(tagsOf(fine, 'x'), 'x')).not.toThrow();
    });

    it('are told apart from sequence headers', () => {
        const bodies = [b.kAvcHeader, b.kAvcKeyFrame, [0x17], [0x12, 0]];
        expect(
            bodies.map((body) => isSequenceHeader(tagsOf(b.tag(9, 0, body), 'x')[0]!)),
        ).toEqual([true, false, false, false]);
        expect(isSequenceHeader(tagsOf(b.tag(8, 0, b.kAacHeader), 'x')[0]!)).toBe(true);
    });

    it('become an FLV file whose header tells their kinds', () => {
        const audio = b.tag(8, 0, b.kAacFrame);
        expect([...flvOf(tagsOf(audio, 'x'))]).toEqual([
            ...b.text('FLV'),
            1,
            4,
            0,
            0,
            0,
            9,
            0,
            0,
            0,
            0,
            ...audio,
        ]);
    });
});
