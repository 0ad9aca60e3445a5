import { PlayerError } from '../errors';
import { ByteReader, readBoxHeader } from './ByteReader';

export enum TagKind {
    Audio = 8,
    DataAmf3 = 15,
    Video = 9,
    DataAmf0 = 18,
}

/** Set in the type byte of a tag whose body begins with an encryption header. */
const kEncrypted = 0x20;

/** One FLV tag inside a fragment. */
export interface Tag {
    kind: number;
    isEncrypted: boolean;
    timeMs: number;
    body: Uint8Array;
    /** The whole tag, with the size word behind it. */
    image: Uint8Array;
}

/** The content of the `mdat` of a fragment. */
export function mediaOf(fragment: Uint8Array, what: string): Uint8Array {
    const reader = new ByteReader(fragment, what);
    while (reader.left > 0) {
        const header = readBoxHeader(reader);
        const size = header.size === 0 ? header.headerSize + reader.left : header.size;
        if (size < header.headerSize) throw reader.broken(`a ${header.type} box has a bad size`);
        const content = reader.take(size - header.headerSize);
        if (header.type === 'mdat') return content;
    }
    throw reader.broken('it has no mdat box');
}

/** Cuts media data into tags. */
export function tagsOf(media: Uint8Array, what: string): Tag[] {
    const reader = new ByteReader(media, what);
    const tags: Tag[] = [];
    while (reader.left > 0) {
        const start = reader.position;
        const type = reader.u8();
        const size = reader.u24();
        const low = reader.u24();
        const timeMs = reader.u8() * 0x1000000 + low;
        reader.skip(3); // stream id
        const body = reader.take(size);
        if (reader.u32() !== size + 11) throw reader.broken('a tag has a wrong size word');
        tags.push({
            kind: type & 0x1f,
            isEncrypted: (type & kEncrypted) !== 0,
            timeMs,
            body,
            image: media.subarray(start, reader.position),
        });
    }
    return tags;
}

const kAvc = 7;
const kAac = 10;
const kVideoCodecs: Record<number, string> = {
    2: 'Sorenson H.263',
    3: 'Screen video',
    4: 'VP6',
    5: 'VP6 with alpha',
    6: 'Screen video 2',
    7: 'AVC',
};
const kAudioCodecs: Record<number, string> = {
    0: 'PCM',
    1: 'ADPCM',
    2: 'MP3',
    3: 'PCM',
    4: 'Nellymoser 16 kHz',
    5: 'Nellymoser 8 kHz',
    6: 'Nellymoser',
    7: 'G.711 A-law',
    8: 'G.711 mu-law',
    10: 'AAC',
    11: 'Speex',
    12: 'Opus',
    13: 'AC-3 or DTS',
    14: 'MP3 8 kHz',
};
/** What both the library and browsers play. */
const kPlayable = new Set(['AVC', 'AAC', 'MP3']);

/** The codec of an audio or video tag; empty for a tag without body and for data. */
export function codecOf(tag: Tag): string {
    const first = tag.body[0];
    if (first === undefined) return '';
    if (tag.kind === TagKind.Video) return kVideoCodecs[first & 0x0f] ?? `codec ${first & 0x0f}`;
    if (tag.kind === TagKind.Audio) return kAudioCodecs[first >> 4] ?? `codec ${first >> 4}`;
    return '';
}

/** Throws a PlayerError for the first tag that no browser plays. */
export function checkCodecs(tags: Tag[], what: string): void {
    for (const tag of tags) {
        const codec = codecOf(tag);
        if (codec !== '' && !kPlayable.has(codec)) {
            const kind = tag.kind === TagKind.Video ? 'video' : 'audio';
            throw new PlayerError(`The ${kind} of ${what} is ${codec}, which browsers don't play.`);
        }
    }
}

/** True for a tag that sets up the decoder instead of holding a sample. */
export function isSequenceHeader(tag: Tag): boolean {
    if (tag.body.length < 2 || tag.body[1] !== 0) return false;
    if (tag.kind === TagKind.Video) return (tag.body[0]! & 0x0f) === kAvc;
    return tag.kind === TagKind.Audio && tag.body[0]! >> 4 === kAac;
}

/** The tags as they are, one behind the other. */
export function imagesOf(tags: Tag[], header: number[] = []): Uint8Array<ArrayBuffer> {
    const size = tags.reduce((sum, tag) => sum + tag.image.length, header.length);
    const bytes = new Uint8Array(size);
    bytes.set(header);
    let at = header.length;
    for (const tag of tags) {
        bytes.set(tag.image, at);
        at += tag.image.length;
    }
    return bytes;
}

/** An FLV file of these tags: the header, then the tags as they are. */
export function flvOf(tags: Tag[]): Uint8Array<ArrayBuffer> {
    const flags =
        (tags.some((tag) => tag.kind === TagKind.Audio) ? 4 : 0) |
        (tags.some((tag) => tag.kind === TagKind.Video) ? 1 : 0);
    return imagesOf(tags, [0x46, 0x4c, 0x56, 1, flags, 0, 0, 0, 9, 0, 0, 0, 0]);
}
