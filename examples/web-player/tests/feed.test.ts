import { describe, expect, it } from 'vitest';

import { Feed, flvOfStart, zeroOf } from '../src/Feed';
import { type Tag, tagsOf } from '../src/format/tags';
import { type Fragment, Rendition } from '../src/Rendition';
import * as b from './bytes';

/** A rendition whose fragments begin at these times and need no server. */
function rendition(name: string, ...startsMs: number[]): Rendition {
    const made = new Rendition(
        { streamId: name, url: name, bitrate: '', bootstrap: { url: '' }, isProtected: false },
        'http://127.0.0.1/',
    );
    made.fragments = startsMs.map((startMs, i): Fragment => ({
        number: i + 1,
        segment: 1,
        startMs,
        endMs: startsMs[i + 1] ?? startMs + 1000,
        offset: 1,
        end: null,
    }));
    made.read = () => Promise.resolve([] as Tag[]);
    return made;
}

const kNever = new AbortController().signal;

async function played(feed: Feed): Promise<string[]> {
    const names: string[] = [];
    for (;;) {
        const piece = await feed.read(kNever);
        if (piece === undefined) return names;
        names.push(`${piece.rendition.name}${piece.fragment.number}`);
        feed.advance(piece);
    }
}

function feedOf(start: Rendition, wanted: () => Rendition, fragment = 0): Feed {
    return new Feed(
        { rendition: start, fragment: start.fragments[fragment]! },
        { clockMs: () => 0, aheadMs: Infinity, wanted },
    );
}

describe('feed', () => {
    it('gives out all fragments from its start on', async () => {
        const a = rendition('a', 0, 2000, 4000);
        expect(await played(feedOf(a, () => a, 1))).toEqual(['a2', 'a3']);
    });

    it('changes the rendition at the next border that both have', async () => {
        const a = rendition('a', 0, 2000, 4000, 6000);
        const c = rendition('c', 0, 4040, 6000);
        let wanted = a;
        const feed = feedOf(a, () => wanted);
        feed.advance((await feed.read(kNever))!);
        wanted = c;
        expect(await played(feed)).toEqual(['a2', 'c2', 'c3']);
    });

    it('goes on with the old rendition where there is no common border', async () => {
        const a = rendition('a', 0, 2000);
        const c = rendition('c', 1000, 3000);
        expect(await played(feedOf(a, () => c))).toEqual(['a1', 'a2']);
    });

    it('gives the same piece again until it is taken', async () => {
        const a = rendition('a', 0, 2000);
        const feed = feedOf(a, () => a);
        await feed.read(kNever);
        expect(await played(feed)).toEqual(['a1', 'a2']);
    });

    it('waits until a fragment is close enough to the clock', async () => {
        const a = rendition('a', 0, 8000);
        let clockMs = 0;
        let waits = 0;
        const feed = new Feed(
            { rendition: a, fragment: a.fragments[1]! },
            {
                clockMs: () => clockMs,
                aheadMs: 5000,
                wanted: () => a,
                sleep: async () => {
                    ++waits;
                    clockMs += 1000;
                },
            },
        );
        expect((await feed.read(kNever))?.fragment.number).toBe(2);
        expect(waits).toBe(3);
    });

    it('stops waiting when it is told to', async () => {
        const a = rendition('a', 60000);
        const stop = new AbortController();
        const feed = new Feed(
            { rendition: a, fragment: a.fragments[0]! },
            { clockMs: () => 0, aheadMs: 1, wanted: () => a, sleep: async () => stop.abort() },
        );
        await expect(feed.read(stop.signal)).rejects.toThrow(/abort/i);
    });
});

describe('an FLV file for a start', () => {
    const headers = tagsOf(b.bytes(b.tag(9, 0, b.kAvcHeader), b.tag(8, 0, b.kAacHeader)), 'x');

    it('gets the sequence headers that its fragment lacks', () => {
        const own = b.bytes(b.tag(9, 4000, b.kAvcHeader), b.tag(9, 4000, b.kAvcKeyFrame));
        const flv = flvOfStart(headers, tagsOf(b.bytes(own, b.tag(8, 4005, b.kAacFrame)), 'x'));
        expect([...flv.subarray(13)]).toEqual([
            ...b.tag(8, 0, b.kAacHeader),
            ...own,
            ...b.tag(8, 4005, b.kAacFrame),
        ]);
    });

    it('counts its time from the first sample, not from a header', () => {
        const tags = tagsOf(
            b.bytes(
                b.tag(9, 0, b.kAvcHeader),
                b.tag(9, 4000, b.kAvcKeyFrame),
                b.tag(8, 3990, b.kAacFrame),
            ),
            'x',
        );
        expect(zeroOf(tags)).toBe(3990);
        expect(zeroOf([])).toBeUndefined();
    });
});
