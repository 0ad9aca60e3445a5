import { type BoxHeader, ByteReader, readBoxHeader } from './ByteReader';

export interface SegmentRun {
    firstSegment: number;
    fragmentsPerSegment: number;
}

/** What a fragment run of duration 0 means. */
export enum Discontinuity {
    End = 0,
    NoData = 1,
    Skipped = 2,
    NoDataSkipped = 3,
}

export interface FragmentRun {
    firstFragment: number;
    startMs: number;
    durationMs: number;
    /** Only where the duration is 0. */
    discontinuity?: Discontinuity;
}

/** The timetable of all fragments, as it stands in an `abst` box. Times are in milliseconds. */
export interface Bootstrap {
    version: number;
    currentMediaTimeMs: number;
    segmentRuns: SegmentRun[];
    fragmentRuns: FragmentRun[];
}

/**
 * Decodes a whole `abst` box.
 *
 * Of several run tables the first of each kind is taken. Throws a PlayerError that names `what`.
 */
export function parseBootstrap(bytes: Uint8Array, what: string): Bootstrap {
    const reader = new ByteReader(bytes, what);
    openBox(reader, 'abst');
    const version = reader.u32();
    reader.skip(1); // profile, live, update
    reader.skip(4); // timescale: times are in milliseconds whatever it says
    const currentMediaTimeMs = reader.u64();
    reader.skip(8); // SMPTE offset
    reader.string(); // movie identifier
    skipStrings(reader); // servers
    skipStrings(reader); // qualities
    reader.string(); // DRM data
    reader.string(); // metadata
    const segmentTables = repeat(reader.u8(), () => readSegmentRuns(reader));
    const fragmentTables = repeat(reader.u8(), () => readFragmentRuns(reader));
    return {
        version,
        currentMediaTimeMs,
        segmentRuns: segmentTables[0] ?? [],
        fragmentRuns: fragmentTables[0] ?? [],
    };
}

/** Reads the header of a full box; only version 0 of `abst` exists. */
function openBox(reader: ByteReader, type: string): void {
    const header: BoxHeader = readBoxHeader(reader);
    if (header.type !== type) throw reader.broken(`no ${type} box where one should stand`);
    const version = reader.u8();
    if (type === 'abst' && version !== 0) throw reader.broken(`unknown version ${version}`);
    reader.skip(3);
}

function skipStrings(reader: ByteReader): void {
    repeat(reader.u8(), () => reader.string());
}

function readSegmentRuns(reader: ByteReader): SegmentRun[] {
    openBox(reader, 'asrt');
    skipStrings(reader);
    return repeat(reader.count(reader.u32(), 8), () => ({
        firstSegment: reader.u32(),
        fragmentsPerSegment: reader.u32(),
    }));
}

function readFragmentRuns(reader: ByteReader): FragmentRun[] {
    openBox(reader, 'afrt');
    reader.skip(4); // timescale
    skipStrings(reader);
    return repeat(reader.count(reader.u32(), 16), () => {
        const run: FragmentRun = {
            firstFragment: reader.u32(),
            startMs: reader.u64(),
            durationMs: reader.u32(),
        };
        if (run.durationMs === 0) run.discontinuity = reader.u8();
        return run;
    });
}

function repeat<T>(count: number, read: () => T): T[] {
    const list: T[] = [];
    for (let i = 0; i < count; ++i) list.push(read());
    return list;
}
