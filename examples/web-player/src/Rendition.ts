import { PlayerError, ProtectedError } from './errors';
import { type Bootstrap, parseBootstrap } from './format/bootstrap';
import { type IndexEntry, parseIndex } from './format/fragmentIndex';
import type { Media } from './format/manifest';
import { checkCodecs, isSequenceHeader, mediaOf, type Tag, TagKind, tagsOf } from './format/tags';
import { type Cell, expandTimetable } from './format/timetable';
import { fileUrl, getBytes, getRange, nameOf } from './http';

/** A fragment with media of its own. Times are in milliseconds on the clock of the presentation. */
export interface Fragment {
    number: number;
    segment: number;
    startMs: number;
    /** Where the next fragment begins; of the last one, what the timetable says. */
    endMs: number;
    /** Bytes from `offset` up to `end` of the segment file; null: up to its end. */
    offset: number;
    end: number | null;
}

/**
 * The fragments that an index holds, in order.
 *
 * Numbers without data are left out, and so are fragments of no bytes.
 */
export function fragmentsOf(entries: IndexEntry[], cells: Cell[]): Fragment[] {
    const stored = entries.filter((entry) => entry.offset !== null && entry.offset > 0);
    const last = cells.at(-1);
    const fragments: Fragment[] = [];
    stored.forEach((entry, i) => {
        const next = stored[i + 1];
        const end = next !== undefined && next.segment === entry.segment ? next.offset : null;
        if (end === entry.offset) return;
        fragments.push({
            number: entry.fragment,
            segment: entry.segment,
            startMs: entry.startMs,
            endMs:
                next?.startMs ??
                Math.max(entry.startMs, last === undefined ? 0 : last.startMs + last.durationMs),
            offset: entry.offset!,
            end,
        });
    });
    return fragments;
}

/** One rendition of a presentation: its timetable, and its media by fragment. */
export class Rendition {
    cells: Cell[] = [];
    fragments: Fragment[] = [];
    private loading: Promise<void> | undefined;
    /** The fragment read last: a start looks at it before it is played. */
    private readLast: { number: number; tags: Tag[] } | undefined;

    constructor(
        readonly media: Media,
        private readonly manifestUrl: string,
    ) {}

    get name(): string {
        return this.media.streamId || this.media.url;
    }

    /** How it is called in lists. */
    get label(): string {
        return this.media.bitrate === '' ? this.name : `${this.name} (${this.media.bitrate} kbit/s)`;
    }

    get isProtected(): boolean {
        return this.media.isProtected;
    }

    get endMs(): number {
        return this.fragments.at(-1)?.endMs ?? 0;
    }

    /** Reads bootstrap and index, once. Throws a PlayerError, and ProtectedError for protected media. */
    load(): Promise<void> {
        this.loading ??= this.loadTables().catch((error: unknown) => {
            this.loading = undefined;
            throw error;
        });
        return this.loading;
    }

    private async loadTables(): Promise<void> {
        if (this.isProtected) throw new ProtectedError(`"${this.name}"`);
        const bootstrap = await this.loadBootstrap();
        this.cells = expandTimetable(bootstrap);
        // The index of the last segment names the fragments of all segments.
        const segment = bootstrap.segmentRuns.at(-1)?.firstSegment ?? 1;
        const url = this.url(`${this.media.url}Seg${segment}.kzx`);
        this.fragments = fragmentsOf(parseIndex(await getBytes(url), nameOf(url)), this.cells);
        if (this.fragments.length === 0) throw new PlayerError(`"${this.name}" has no fragment.`);

        const numbers = new Set(this.fragments.map((fragment) => fragment.number));
        const lost = this.cells.find((cell) => cell.hasData && !numbers.has(cell.fragment));
        if (lost !== undefined) {
            throw new PlayerError(
                `${nameOf(url)} doesn't fit the bootstrap: it has no place for fragment ${lost.fragment}.`,
            );
        }
    }

    private async loadBootstrap(): Promise<Bootstrap> {
        const { bootstrap } = this.media;
        if ('bytes' in bootstrap) {
            return parseBootstrap(bootstrap.bytes, `The bootstrap of "${this.name}"`);
        }
        const url = this.url(bootstrap.url);
        return parseBootstrap(await getBytes(url), nameOf(url));
    }

    /** The fragment that plays at this time; the first one for times before it. */
    fragmentAt(timeMs: number): Fragment {
        const behind = this.fragments.findIndex((fragment) => fragment.startMs > timeMs);
        const at = behind < 0 ? this.fragments.length - 1 : Math.max(0, behind - 1);
        return this.fragments[at]!;
    }

    /** The fragment that begins at this time, give or take `toleranceMs`. */
    fragmentFrom(timeMs: number, toleranceMs: number): Fragment | undefined {
        return this.fragments.find((one) => Math.abs(one.startMs - timeMs) <= toleranceMs);
    }

    next(fragment: Fragment): Fragment | undefined {
        return this.fragments[this.fragments.indexOf(fragment) + 1];
    }

    previous(fragment: Fragment): Fragment | undefined {
        return this.fragments[this.fragments.indexOf(fragment) - 1];
    }

    /** The audio and video tags of a fragment. Throws where they can't be played. */
    async read(fragment: Fragment, signal?: AbortSignal): Promise<Tag[]> {
        if (this.readLast?.number === fragment.number) return this.readLast.tags;
        const url = this.url(`${this.media.url}Seg${fragment.segment}.kzs`);
        const what = `Fragment ${fragment.number} of ${nameOf(url)}`;
        const bytes = await getRange(url, fragment.offset, fragment.end, signal);
        const all = bytes.length === 0 ? [] : tagsOf(mediaOf(bytes, what), what);
        if (all.some((tag) => tag.isEncrypted)) throw new ProtectedError(what);
        const tags = all.filter((tag) => tag.kind === TagKind.Audio || tag.kind === TagKind.Video);
        checkCodecs(tags, `"${this.name}"`);
        this.readLast = { number: fragment.number, tags };
        return tags;
    }

    private headers: Tag[] | undefined;

    /**
     * The tags that set up the decoders.
     *
     * Recordings that came as FLV have them once, at their very beginning; a start elsewhere has to
     * fetch them from there.
     */
    async sequenceHeaders(signal?: AbortSignal): Promise<Tag[]> {
        this.headers ??= firstOfEachKind(
            (await this.read(this.fragments[0]!, signal)).filter(isSequenceHeader),
        );
        return this.headers;
    }

    private url(name: string): string {
        return fileUrl(name, this.manifestUrl);
    }
}

function firstOfEachKind(tags: Tag[]): Tag[] {
    const kinds = new Map<number, Tag>();
    for (const tag of tags) if (!kinds.has(tag.kind)) kinds.set(tag.kind, tag);
    return [...kinds.values()];
}

/** Only from such a fragment can a decoder start; audio starts anywhere. */
export function beginsWithKeyFrame(tags: Tag[]): boolean {
    const first = tags.find(
        (tag) => tag.kind === TagKind.Video && tag.body.length > 1 && !isSequenceHeader(tag),
    );
    return first === undefined || first.body[0]! >> 4 === 1;
}
