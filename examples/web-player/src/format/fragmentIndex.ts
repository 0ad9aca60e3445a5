import { ByteReader, readBoxHeader } from './ByteReader';

/** Where one fragment lies. */
export interface IndexEntry {
    fragment: number;
    segment: number;
    startMs: number;
    /** Of its first byte in the segment file; null for a number without data of its own. */
    offset: number | null;
}

/** Decodes a `.kzx` file: one `afra` box. Throws a PlayerError that names `what`. */
export function parseIndex(bytes: Uint8Array, what: string): IndexEntry[] {
    const reader = new ByteReader(bytes, what);
    if (readBoxHeader(reader).type !== 'afra') throw reader.broken('no afra box');
    const version = reader.u8();
    if (version !== 0) throw reader.broken(`unknown version ${version}`);
    reader.skip(3);
    const bits = reader.u8();
    const longIds = (bits & 0x80) !== 0;
    const longOffsets = (bits & 0x40) !== 0;
    reader.skip(4); // timescale: times are in milliseconds whatever it says

    const localSize = longOffsets ? 16 : 12;
    reader.skip(reader.count(reader.u32(), localSize) * localSize);
    if ((bits & 0x20) === 0) return [];

    const size = 8 + (longIds ? 8 : 4) + (longOffsets ? 16 : 8);
    const count = reader.count(reader.u32(), size);
    const entries: IndexEntry[] = [];
    for (let i = 0; i < count; ++i) {
        const startMs = reader.u64();
        const segment = longIds ? reader.u32() : reader.u16();
        const fragment = longIds ? reader.u32() : reader.u16();
        const offset = reader.offset(longOffsets);
        reader.offset(longOffsets); // offset inside the fragment's own index
        entries.push({ fragment, segment, startMs, offset });
    }
    return entries;
}
