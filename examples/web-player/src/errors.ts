/** Something is wrong with a file, the server or the media. The message is shown to the user as it stands. */
export class PlayerError extends Error {
    override readonly name: string = 'PlayerError';
}

/** The content is protected, and this player has no key. */
export class ProtectedError extends PlayerError {
    override readonly name = 'ProtectedError';

    constructor(what: string) {
        super(`${what} is protected: this player has no key and doesn't play it.`);
    }
}

/** The words of any thrown value. */
export function reasonOf(error: unknown): string {
    return error instanceof Error ? error.message : String(error);
}
