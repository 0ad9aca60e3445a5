import { PlayerError, reasonOf } from './errors';
import type { Piece } from './Feed';
import { parseManifest } from './format/manifest';
import { getText, nameOf } from './http';
import { beginsWithKeyFrame, type Fragment, Rendition } from './Rendition';
import { Session } from './Session';

/** How long a seek waits for its picture before it plays from wherever the media begin. */
const kLandingMs = 5000;

export interface PlayerEvents {
    /** Something that is shown has changed. */
    changed(): void;
    failed(error: PlayerError): void;
}

/** A presentation in a video element: renditions, fragments, the clock. Times are in milliseconds. */
export class Player {
    renditions: Rendition[] = [];
    title = '';
    /** The rendition that the user chose; what plays is told by `playing`. */
    chosen: Rendition | undefined;
    private session: Session | undefined;
    private delivered: Piece[] = [];
    /** Where the clock stands while a session is being started. */
    private targetMs: number | undefined = 0;
    private starts = 0;

    constructor(
        private readonly video: HTMLVideoElement,
        private readonly aheadMs: number,
        private readonly events: PlayerEvents,
    ) {
        for (const event of ['timeupdate', 'play', 'pause', 'ended', 'seeked']) {
            video.addEventListener(event, () => events.changed());
        }
    }

    /** Loads a manifest and the tables of its first rendition that can be played. */
    async open(url: string): Promise<void> {
        const manifest = parseManifest(await getText(url), nameOf(url));
        this.title = manifest.id;
        this.renditions = manifest.media.map((media) => new Rendition(media, url));
        this.events.changed();
        const first = this.renditions.find((one) => !one.isProtected) ?? this.renditions[0]!;
        await first.load();
        this.chosen = first;
        this.targetMs = first.fragments[0]!.startMs;
        this.events.changed();
    }

    get clockMs(): number {
        if (this.targetMs !== undefined || this.session === undefined) return this.targetMs ?? 0;
        return this.session.zeroMs + this.video.currentTime * 1000;
    }

    get endMs(): number {
        return this.chosen?.endMs ?? 0;
    }

    /** What is on the screen now. */
    get playing(): { rendition: Rendition; fragment: Fragment } | undefined {
        const clock = this.clockMs + 1; // the clock of the element rounds down
        return this.delivered.findLast((piece) => piece.fragment.startMs <= clock);
    }

    async play(): Promise<void> {
        if (this.session === undefined) await this.seek(this.clockMs);
        if (this.video.ended) await this.seek(this.chosen?.fragments[0]?.startMs ?? 0);
        await this.video.play();
    }

    pause(): void {
        this.video.pause();
    }

    /** Plays from this time on, at once if it is loaded, else from the fragment that holds it. */
    async seek(timeMs: number): Promise<void> {
        if (this.chosen === undefined) return;
        if (this.session?.holds(timeMs) && this.targetMs === undefined) {
            this.session.jump(timeMs);
            this.events.changed();
            return;
        }
        await this.start(this.chosen, this.chosen.fragmentAt(timeMs), timeMs);
    }

    /** Starts at the beginning of a fragment. */
    async startAt(number: number): Promise<void> {
        const fragment = this.chosen?.fragments.find((one) => one.number === number);
        if (fragment === undefined) throw new PlayerError(`There is no fragment ${number}.`);
        await this.start(this.chosen!, fragment, fragment.startMs);
        await this.video.play();
    }

    /** Changes the rendition: at the next fragment border, or at once while nothing plays. */
    async choose(rendition: Rendition): Promise<void> {
        await rendition.load();
        this.chosen = rendition;
        this.events.changed();
    }

    private async start(rendition: Rendition, wanted: Fragment, timeMs: number): Promise<void> {
        const start = ++this.starts;
        const goesOn = !this.video.paused;
        this.targetMs = timeMs;
        this.events.changed();
        let fragment = wanted;
        // A fragment that was cut between key frames shows nothing by itself.
        while (!beginsWithKeyFrame(await rendition.read(fragment))) {
            const before = rendition.previous(fragment);
            if (before === undefined) break;
            fragment = before;
        }
        if (start !== this.starts) return;
        this.session?.destroy();
        this.delivered = [];
        const session = new Session(this.video, { rendition, fragment }, this.aheadMs, {
            clockMs: () => this.clockMs,
            wanted: () => this.chosen ?? rendition,
            delivered: (piece) => {
                this.delivered.push(piece);
                this.events.changed();
            },
            failed: (error) => this.events.failed(error),
        });
        this.session = session;
        void this.land(session, start);
        if (goesOn) await this.video.play();
    }

    /** Waits until the time sought is loaded, and goes there. */
    private async land(session: Session, start: number): Promise<void> {
        const deadline = performance.now() + kLandingMs;
        while (start === this.starts && this.targetMs !== undefined) {
            const landing = session.landing(this.targetMs);
            const isLate = performance.now() > deadline && this.video.buffered.length > 0;
            if (landing !== undefined || isLate) {
                if (landing !== undefined) session.jump(landing);
                this.targetMs = undefined;
                this.events.changed();
                return;
            }
            await new Promise((done) => setTimeout(done, 30));
        }
    }
}

/** Any failure in the words of a PlayerError. */
export function asPlayerError(error: unknown): PlayerError {
    return error instanceof PlayerError ? error : new PlayerError(reasonOf(error));
}
