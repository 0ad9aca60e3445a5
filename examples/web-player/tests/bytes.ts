/** Builders for inputs: every field is written out, nothing of the player's code is used. */

type Part = Uint8Array | number[];

export function bytes(...parts: Part[]): Uint8Array {
    return Uint8Array.from(parts.flatMap((part) => [...part]));
}

export function u8(value: number): number[] {
    return [value & 0xff];
}

export function u16(value: number): number[] {
    return [(value >>> 8) & 0xff, value & 0xff];
}

export function u24(value: number): number[] {
    return [(value >>> 16) & 0xff, ...u16(value)];
}

export function u32(value: number): number[] {
    return [(value >>> 24) & 0xff, ...u24(value)];
}

export function u64(value: number): number[] {
    return [...u32(Math.floor(value / 2 ** 32)), ...u32(value % 2 ** 32)];
}

export function text(value: string): number[] {
    return [...new TextEncoder().encode(value)];
}

export function box(type: string, ...content: Part[]): Uint8Array {
    const body = bytes(...content);
    return bytes(u32(body.length + 8), text(type), body);
}

export interface Runs {
    segments: [first: number, count: number][];
    /** Of duration 0: with the indicator behind it. */
    fragments: [first: number, startMs: number, durationMs: number, indicator?: number][];
}

export function abst(runs: Runs, version = 0): Uint8Array {
    return box(
        'abst',
        u8(version),
        u24(0),
        u32(3), // bootstrap version
        u8(0),
        u32(1000),
        u64(16000), // current media time
        u64(0),
        text('movie\0'),
        u8(1),
        text('server\0'),
        u8(0),
        u8(0), // no DRM data: an empty string
        u8(0), // no metadata
        u8(1),
        box(
            'asrt',
            u32(0),
            u8(0),
            u32(runs.segments.length),
            ...runs.segments.map(([first, count]) => bytes(u32(first), u32(count))),
        ),
        u8(1),
        box(
            'afrt',
            u32(0),
            u32(1000),
            u8(0),
            u32(runs.fragments.length),
            ...runs.fragments.map(([first, startMs, durationMs, indicator]) =>
                bytes(
                    u32(first),
                    u64(startMs),
                    u32(durationMs),
                    indicator === undefined ? [] : u8(indicator),
                ),
            ),
        ),
    );
}

export type Row = [fragment: number, segment: number, startMs: number, offset: number | null];

export function afra(rows: Row[]): Uint8Array {
    return box(
        'afra',
        u32(0),
        u8(0xe0),
        u32(1000),
        u32(0),
        u32(rows.length),
        ...rows.map(([fragment, segment, startMs, offset]) =>
            bytes(
                u64(startMs),
                u32(segment),
                u32(fragment),
                offset === null ? [...u32(0xffffffff), ...u32(0xffffffff)] : u64(offset),
                u64(0),
            ),
        ),
    );
}

export function tag(type: number, timeMs: number, body: number[]): Uint8Array {
    return bytes(
        u8(type),
        u24(body.length),
        u24(timeMs & 0xffffff),
        u8(timeMs >>> 24),
        u24(0),
        body,
        u32(body.length + 11),
    );
}

export const kAvcHeader = [0x17, 0, 0, 0, 0, 1, 0x64, 0, 0x0c];
export const kAvcKeyFrame = [0x17, 1, 0, 0, 0, 0xaa];
export const kAvcFrame = [0x27, 1, 0, 0, 0, 0xbb];
export const kAacHeader = [0xaf, 0, 0x12, 0x08];
export const kAacFrame = [0xaf, 1, 0xcc];

/** A fragment: what stands in front of the media, then the media in a box with a 64-bit size. */
export function fragment(...tags: Uint8Array[]): Uint8Array {
    const media = bytes(...tags);
    return bytes(
        box('afra', u32(0), u8(0xc0), u32(1000), u32(0)),
        box('abst', u32(0)),
        box('moof', box('mfhd', u32(0), u32(1))),
        u32(1),
        text('mdat'),
        u64(media.length + 16),
        media,
    );
}

export function base64(data: Uint8Array): string {
    return Buffer.from(data).toString('base64');
}
