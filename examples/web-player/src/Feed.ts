import { flvOf, isSequenceHeader, type Tag, TagKind } from './format/tags';
import type { Fragment, Rendition } from './Rendition';

/** Fragments of two renditions that begin this close to each other begin together. */
const kSameStartMs = 50;

/** The next part of the media: the tags of one fragment. */
export interface Piece {
    rendition: Rendition;
    fragment: Fragment;
    tags: Tag[];
}

/**
 * Gives out fragments in order, not far ahead of the clock, and changes the rendition between two
 * fragments.
 */
export class Feed {
    private next: { rendition: Rendition; fragment: Fragment } | undefined;

    constructor(
        start: { rendition: Rendition; fragment: Fragment },
        private readonly options: {
            /** Time that plays now. */
            clockMs: () => number;
            /** How far ahead of the clock a fragment may begin. */
            aheadMs: number;
            /** The rendition that the user wants; its tables are loaded. */
            wanted: () => Rendition;
            sleep?: (ms: number) => Promise<void>;
        },
    ) {
        this.next = start;
    }

    /**
     * Waits until the next fragment is due and reads it; undefined at the end.
     *
     * The same piece comes again until `advance` takes it.
     */
    async read(signal: AbortSignal): Promise<Piece | undefined> {
        const sleep = this.options.sleep ?? ((ms) => new Promise((done) => setTimeout(done, ms)));
        while (this.next !== undefined) {
            signal.throwIfAborted();
            const { fragment } = this.next;
            if (fragment.startMs - this.options.clockMs() > this.options.aheadMs) {
                await sleep(100);
                continue;
            }
            const chosen = this.choose(this.next);
            const tags = await chosen.rendition.read(chosen.fragment, signal);
            return { ...chosen, tags };
        }
        return undefined;
    }

    advance(piece: Piece): void {
        const fragment = piece.rendition.next(piece.fragment);
        this.next = fragment === undefined ? undefined : { rendition: piece.rendition, fragment };
    }

    /** The wanted rendition, if one of its fragments begins where the next one does. */
    private choose(next: { rendition: Rendition; fragment: Fragment }) {
        const wanted = this.options.wanted();
        if (wanted === next.rendition) return next;
        const fragment = wanted.fragmentFrom(next.fragment.startMs, kSameStartMs);
        return fragment === undefined ? next : { rendition: wanted, fragment };
    }
}

/** An FLV file of the fragment, with the headers in front that its own tags lack. */
export function flvOfStart(headers: Tag[], tags: Tag[]): Uint8Array<ArrayBuffer> {
    const missing = headers.filter((header) => {
        const first = tags.find((tag) => tag.kind === header.kind);
        return first === undefined || !isSequenceHeader(first);
    });
    return flvOf([...missing, ...tags]);
}

/** The time of the first sample, which the library takes for its zero. */
export function zeroOf(tags: Tag[]): number | undefined {
    const first = (kind: TagKind) =>
        tags.find((tag) => tag.kind === kind && tag.body.length > 1 && !isSequenceHeader(tag))
            ?.timeMs ?? Infinity;
    const zero = Math.min(first(TagKind.Audio), first(TagKind.Video));
    return zero === Infinity ? undefined : zero;
}
