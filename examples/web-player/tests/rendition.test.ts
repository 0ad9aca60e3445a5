import { afterEach, describe, expect, it, vi } from 'vitest';

import { ProtectedError } from '../src/errors';
import type { Media } from '../src/format/manifest';
import { tagsOf } from '../src/format/tags';
import { fileUrl, getRange } from '../src/http';
import { beginsWithKeyFrame, fragmentsOf, Rendition } from '../src/Rendition';
import * as b from './bytes';

const kManifest = 'http://127.0.0.1/media/clip.kzd';

/** Files by name, served with byte ranges as a web server does. */
function serve(files: Record<string, Uint8Array>): string[] {
    const requests: string[] = [];
    vi.stubGlobal('fetch', async (url: string, init: RequestInit) => {
        const name = decodeURIComponent(new URL(url).pathname.replace('/media/', ''));
        const range = (init.headers as Record<string, string> | undefined)?.Range;
        requests.push(range === undefined ? name : `${name} ${range}`);
        const file = files[name];
        if (file === undefined) return new Response('', { status: 404, statusText: 'Not Found' });
        if (range === undefined) return new Response(Buffer.from(file));
        const [, from, to] = /bytes=(\d+)-(\d*)/.exec(range)!;
        if (Number(from) >= file.length) {
            const headers = { 'Content-Range': `bytes */${file.length}` };
            return new Response('', { status: 416, headers });
        }
        const part = file.subarray(Number(from), to === '' ? undefined : Number(to) + 1);
        const last = Number(from) + part.length - 1;
        return new Response(Buffer.from(part), {
            status: 206,
            headers: { 'Content-Range': `bytes ${from}-${last}/${file.length}` },
        });
    });
    return requests;
}

afterEach(() => vi.unstubAllGlobals());

const kFirst = b.fragment(
    b.tag(9, 0, b.kAvcHeader),
    b.tag(8, 0, b.kAacHeader),
    b.tag(18, 0, [2, 0, 0]),
    b.tag(9, 0, b.kAvcKeyFrame),
);
const kSecond = b.fragment(b.tag(9, 4000, b.kAvcKeyFrame), b.tag(8, 4010, b.kAacFrame));

function clip(runs: b.Runs, rows: b.Row[]): Record<string, Uint8Array> {
    return {
        'clip.bootstrap': b.abst(runs),
        'clipSeg1.kzx': b.afra(rows),
        'clipSeg1.kzs': b.bytes(new Uint8Array(100), kFirst, kSecond),
    };
}

const kTwo: b.Runs = { segments: [[1, 2]], fragments: [[1, 0, 4000]] };
const kTwoRows: b.Row[] = [
    [1, 1, 0, 100],
    [2, 1, 4000, 100 + kFirst.length],
];

function rendition(over: Partial<Media> = {}): Rendition {
    return new Rendition(
        {
            streamId: 'clip',
            url: 'clip',
            bitrate: '',
            bootstrap: { url: 'clip.bootstrap' },
            isProtected: false,
            ...over,
        },
        kManifest,
    );
}

describe('fragments of an index', () => {
    it('end where the next one of their segment begins', () => {
        const entries = [
            { fragment: 1, segment: 1, startMs: 0, offset: 100 },
            { fragment: 2, segment: 1, startMs: 4000, offset: null },
            { fragment: 3, segment: 1, startMs: 9000, offset: 700 },
            { fragment: 4, segment: 2, startMs: 12000, offset: 100 },
        ];
        const cell = { fragment: 4, segment: 2, startMs: 12000, durationMs: 500, hasData: true };
        expect(fragmentsOf(entries, [cell])).toMatchObject([
            { number: 1, startMs: 0, endMs: 9000, offset: 100, end: 700 },
            { number: 3, startMs: 9000, endMs: 12000, offset: 700, end: null },
            { number: 4, startMs: 12000, endMs: 12500, offset: 100, end: null },
        ]);
    });

    it('leave out what holds no bytes or has not been written', () => {
        const entries = [
            { fragment: 1, segment: 1, startMs: 0, offset: 100 },
            { fragment: 2, segment: 1, startMs: 4000, offset: 700 },
            { fragment: 3, segment: 1, startMs: 8000, offset: 700 },
            { fragment: 4, segment: 1, startMs: 12000, offset: 0 },
        ];
        expect(fragmentsOf(entries, []).map((one) => one.number)).toEqual([1, 3]);
    });
});

describe('rendition', () => {
    it('reads a fragment by one byte range, without its data tags', async () => {
        const requests = serve(clip(kTwo, kTwoRows));
        const one = rendition();
        await one.load();
        const tags = await one.read(one.fragments[0]!);
        expect(tags.map((tag) => tag.kind)).toEqual([9, 8, 9]);
        expect(requests).toEqual([
            'clip.bootstrap',
            'clipSeg1.kzx',
            `clipSeg1.kzs bytes=100-${99 + kFirst.length}`,
        ]);
        expect((await one.read(one.fragments[1]!)).map((tag) => tag.timeMs)).toEqual([4000, 4010]);
        expect(requests.at(-1)).toBe(`clipSeg1.kzs bytes=${100 + kFirst.length}-`);
    });

    it('finds its decoder set-up in the first fragment', async () => {
        serve(clip(kTwo, kTwoRows));
        const one = rendition();
        await one.load();
        expect((await one.sequenceHeaders()).map((tag) => tag.kind)).toEqual([9, 8]);
    });

    it('finds fragments by time', async () => {
        serve(clip(kTwo, kTwoRows));
        const one = rendition();
        await one.load();
        const at = (timeMs: number) => one.fragmentAt(timeMs).number;
        expect([at(-5), at(0), at(3999), at(4000), at(99999)]).toEqual([1, 1, 1, 2, 2]);
        expect(one.fragmentFrom(4050, 50)?.number).toBe(2);
        expect(one.fragmentFrom(4051, 50)).toBeUndefined();
    });

    it('takes the index of the last segment', async () => {
        const requests = serve({
            'clip.bootstrap': b.abst({ segments: [[1, 1], [2, 1]], fragments: [[1, 0, 4000]] }),
            'clipSeg2.kzx': b.afra([[1, 1, 0, 100], [2, 2, 4000, 100]]),
        });
        const one = rendition();
        await one.load();
        expect(requests).toContain('clipSeg2.kzx');
        expect(one.fragments.map((fragment) => fragment.segment)).toEqual([1, 2]);
    });

    it('that is protected is refused before anything is fetched', async () => {
        const requests = serve({});
        await expect(rendition({ isProtected: true }).load()).rejects.toThrow(ProtectedError);
        expect(requests).toEqual([]);
    });

    it('with encrypted tags is refused even if the manifest is silent', async () => {
        const encrypted = b.fragment(b.tag(0x29, 0, [0, 1, 2]));
        serve({
            ...clip({ segments: [[1, 1]], fragments: [[1, 0, 4000]] }, [[1, 1, 0, 0x64]]),
            'clipSeg1.kzs': b.bytes(new Uint8Array(100), encrypted),
        });
        const one = rendition();
        await one.load();
        await expect(one.read(one.fragments[0]!)).rejects.toThrow(/is protected/);
    });

    it.each([
        ['clip.bootstrap', /clip.bootstrap: the server answers 404 Not Found/],
        ['clipSeg1.kzx', /clipSeg1.kzx: the server answers 404 Not Found/],
    ])('says that %s is missing', async (name, message) => {
        const files = clip(kTwo, kTwoRows);
        delete files[name];
        serve(files);
        await expect(rendition().load()).rejects.toThrow(message);
    });

    it('says that index and bootstrap are not of one run', async () => {
        serve(clip(kTwo, kTwoRows.slice(0, 1)));
        await expect(rendition().load()).rejects.toThrow(/no place for fragment 2/);
    });

    it('says that a segment is shorter than its index', async () => {
        const files = clip(kTwo, kTwoRows);
        files['clipSeg1.kzs'] = files['clipSeg1.kzs']!.slice(0, 110);
        serve(files);
        const one = rendition();
        await one.load();
        await expect(one.read(one.fragments[0]!)).rejects.toThrow(/other bytes than asked/);
        await expect(one.read(one.fragments[1]!)).rejects.toThrow(/shorter than the index/);
    });

    it('knows whether a decoder can start', () => {
        const tags = (...images: Uint8Array[]) => tagsOf(b.bytes(...images), 'x');
        const header = b.tag(9, 0, b.kAvcHeader);
        expect(beginsWithKeyFrame(tags(header, b.tag(9, 0, b.kAvcKeyFrame)))).toBe(true);
        expect(beginsWithKeyFrame(tags(header, b.tag(9, 0, b.kAvcFrame)))).toBe(false);
        expect(beginsWithKeyFrame(tags(b.tag(8, 0, b.kAacFrame)))).toBe(true);
    });
});

describe('server', () => {
    it('that knows no byte ranges is told', async () => {
        vi.stubGlobal('fetch', async () => new Response('all of it'));
        await expect(getRange('http://127.0.0.1/a', 0, 4)).rejects.toThrow(/byte ranges/);
    });

    it('that is away is told', async () => {
        vi.stubGlobal('fetch', () => Promise.reject(new TypeError('failed')));
        await expect(getRange('http://127.0.0.1/a.kzs', 0, 4)).rejects.toThrow(
            "a.kzs: the server can't be reached.",
        );
    });

    it('gets names as they stand in the manifest', () => {
        expect(fileUrl('50% #1?Seg1.kzs', kManifest)).toBe(
            'http://127.0.0.1/media/50%25%20%231%3FSeg1.kzs',
        );
    });
});
