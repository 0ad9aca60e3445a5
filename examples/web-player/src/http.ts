import { PlayerError } from './errors';

/** The last part of an address, as a person would call the file. */
export function nameOf(url: string): string {
    return decodeURIComponent(new URL(url).pathname.split('/').at(-1) ?? url);
}

/**
 * The address of a file that a manifest names.
 *
 * Names are file names, not addresses: a `#` or `%` in them is meant as it stands.
 */
export function fileUrl(name: string, manifestUrl: string): string {
    return new URL(name.split('/').map(encodeURIComponent).join('/'), manifestUrl).href;
}

export async function getText(url: string): Promise<string> {
    return (await request(url, { cache: 'no-cache' })).text();
}

export async function getBytes(url: string): Promise<Uint8Array> {
    const response = await request(url, { cache: 'no-cache' });
    return new Uint8Array(await response.arrayBuffer());
}

/**
 * Reads the bytes from `from` up to `to` (exclusive; null: the end of the file).
 *
 * Throws a PlayerError when the server sends anything else. A range at the very end of the file is
 * empty.
 */
export async function getRange(
    url: string,
    from: number,
    to: number | null,
    signal?: AbortSignal,
): Promise<Uint8Array> {
    const range = `bytes=${from}-${to === null ? '' : to - 1}`;
    const response = await request(url, { headers: { Range: range }, signal }, [416]);
    const told = response.headers.get('Content-Range') ?? '';
    const name = nameOf(url);
    if (response.status === 416) {
        if (to === null && told === `bytes */${from}`) return new Uint8Array();
        throw new PlayerError(`${name} is shorter than the index says: no byte at ${from}.`);
    }
    if (response.status !== 206) {
        throw new PlayerError(`${name}: the server doesn't serve byte ranges.`);
    }
    const bytes = new Uint8Array(await response.arrayBuffer());
    if (!told.startsWith(`bytes ${from}-`) || (to !== null && bytes.length !== to - from)) {
        throw new PlayerError(`${name}: the server sent other bytes than asked (${told}).`);
    }
    return bytes;
}

async function request(
    url: string,
    init: RequestInit,
    expected: number[] = [],
): Promise<Response> {
    let response: Response;
    try {
        response = await fetch(url, init);
    } catch (error) {
        if (init.signal?.aborted) throw error;
        throw new PlayerError(`${nameOf(url)}: the server can't be reached.`);
    }
    if (!response.ok && !expected.includes(response.status)) {
        throw new PlayerError(
            `${nameOf(url)}: the server answers ${response.status} ${response.statusText}.`,
        );
    }
    return response;
}
