import { PlayerError } from '../errors';

export interface Media {
    streamId: string;
    /** Base name of the segments, relative to the manifest. */
    url: string;
    /** As written; empty when the manifest doesn't tell. */
    bitrate: string;
    /** The bootstrap itself, or the file that holds it. */
    bootstrap: { bytes: Uint8Array } | { url: string };
    isProtected: boolean;
}

export interface Manifest {
    id: string;
    durationMs: number;
    media: Media[];
}

/**
 * Reads a `.kzd` file.
 *
 * Of several `media` elements with one stream id the last one counts: that is the one which the
 * latest run added. Throws a PlayerError that names `what`.
 */
export function parseManifest(text: string, what: string): Manifest {
    const document = new DOMParser().parseFromString(text, 'application/xml');
    const root = document.documentElement;
    if (root === null || document.getElementsByTagName('parsererror').length > 0) {
        throw new PlayerError(`${what} is not a manifest: it isn't well-formed XML.`);
    }
    if (localNameOf(root) !== 'manifest') {
        throw new PlayerError(`${what} is not a manifest: its root is <${localNameOf(root)}>.`);
    }
    const media = new Map<string, Media>();
    for (const element of childrenOf(root, 'media')) {
        const one = readMedia(root, element, what);
        media.set(one.streamId, one);
    }
    if (media.size === 0) throw new PlayerError(`${what} lists no rendition.`);
    const seconds = Number(textOf(childrenOf(root, 'duration')[0]));
    return {
        id: textOf(childrenOf(root, 'id')[0]),
        durationMs: Number.isFinite(seconds) ? seconds * 1000 : 0,
        media: [...media.values()],
    };
}

function readMedia(root: Element, element: Element, what: string): Media {
    const streamId = element.getAttribute('streamId') ?? '';
    const url = element.getAttribute('url') ?? '';
    if (url === '') throw new PlayerError(`${what}: rendition "${streamId}" has no url.`);
    const bootstrap = referredBy(root, element, 'bootstrapInfo');
    if (bootstrap === undefined) {
        throw new PlayerError(`${what}: rendition "${streamId}" has no bootstrap.`);
    }
    const file = bootstrap.getAttribute('url') ?? '';
    return {
        streamId,
        url,
        bitrate: element.getAttribute('bitrate') ?? '',
        bootstrap: file !== '' ? { url: file } : { bytes: decode(textOf(bootstrap), what) },
        isProtected: isProtection(referredBy(root, element, 'drmAdditionalHeader')),
    };
}

/** A header without content is what a plain run with a content id leaves: it protects nothing. */
function isProtection(header: Element | undefined): boolean {
    if (header === undefined) return false;
    return (header.getAttribute('url') ?? '') !== '' || textOf(header) !== '';
}

function referredBy(root: Element, media: Element, name: string): Element | undefined {
    const id = media.getAttribute(`${name}Id`) ?? '';
    if (id === '') return undefined;
    return childrenOf(root, name).find((element) => element.getAttribute('id') === id);
}

function decode(base64: string, what: string): Uint8Array {
    try {
        return Uint8Array.from(atob(base64.replace(/\s+/g, '')), (c) => c.charCodeAt(0));
    } catch {
        throw new PlayerError(`${what} is damaged: a bootstrap isn't base64.`);
    }
}

function localNameOf(element: Element): string {
    return element.localName.split(':').at(-1)!;
}

function childrenOf(root: Element, name: string): Element[] {
    return [...root.children].filter((element) => localNameOf(element) === name);
}

function textOf(element: Element | undefined): string {
    return element?.textContent?.trim() ?? '';
}
