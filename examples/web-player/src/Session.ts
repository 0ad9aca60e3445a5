import mpegts from 'mpegts.js';

import { PlayerError, reasonOf } from './errors';
import { Feed, flvOfStart, type Piece, zeroOf } from './Feed';
import { imagesOf } from './format/tags';
import type { Fragment, Rendition } from './Rendition';

mpegts.LoggingControl.applyConfig({ enableAll: false, enableError: true });

/** Parts of the presentation, each of one rendition, that a session can play without a new start. */
const kMostStretches = 256;

/** Seconds by which the first picture may come later than the first sound. */
const kLateStart = 1;

export interface SessionEvents {
    clockMs(): number;
    wanted(): Rendition;
    /** A fragment went to the decoder. */
    delivered(piece: Piece): void;
    failed(error: PlayerError): void;
}

/**
 * Plays on from one fragment: reads fragments and hands them to the library as FLV.
 *
 * The library plays a list of FLV files one behind the other; each rendition that is switched to is
 * the next file of that list. It counts time from the first sample on: `zeroMs` tells which time of
 * the presentation that is.
 */
export class Session {
    zeroMs: number;
    private readonly player: mpegts.Player;
    private readonly feed: Feed;
    private stretch: Rendition | undefined;
    private hasFailed = false;

    constructor(
        private readonly video: HTMLVideoElement,
        start: { rendition: Rendition; fragment: Fragment },
        aheadMs: number,
        private readonly events: SessionEvents,
    ) {
        this.zeroMs = start.fragment.startMs;
        this.feed = new Feed(start, {
            clockMs: () => events.clockMs(),
            wanted: () => events.wanted(),
            aheadMs,
        });
        this.player = mpegts.createPlayer(
            {
                type: 'flv',
                segments: Array.from({ length: kMostStretches }, (_, i) => ({
                    duration: 0,
                    url: `stretch:${i}`,
                })),
            },
            {
                customLoader: this.loaderClass(),
                enableStashBuffer: false,
                lazyLoad: false,
                fixAudioTimestampGap: false,
                autoCleanupSourceBuffer: true,
            },
        );
        this.player.on(mpegts.Events.ERROR, (type: string, detail: string, info: unknown) => {
            const reason = (info as { msg?: string } | undefined)?.msg ?? detail;
            this.fail(new PlayerError(`The browser can't play this (${type}): ${reason}`));
        });
        this.player.attachMediaElement(video);
        this.player.load();
    }

    /** True if the time can be played without loading anything. */
    holds(timeMs: number): boolean {
        const at = (timeMs - this.zeroMs) / 1000;
        const { buffered } = this.video;
        for (let i = 0; i < buffered.length; ++i) {
            if (at >= buffered.start(i) && at < buffered.end(i) - 0.05) return true;
        }
        return false;
    }

    /** The loaded time that is nearest to the one sought, which may begin a little later. */
    landing(timeMs: number): number | undefined {
        if (this.holds(timeMs)) return timeMs;
        const at = (timeMs - this.zeroMs) / 1000;
        const { buffered } = this.video;
        for (let i = 0; i < buffered.length; ++i) {
            const start = buffered.start(i);
            if (start >= at && start < at + kLateStart) return this.zeroMs + start * 1000;
        }
        return undefined;
    }

    jump(timeMs: number): void {
        this.video.currentTime = (timeMs - this.zeroMs) / 1000;
    }

    destroy(): void {
        this.hasFailed = true; // what comes late is of no interest
        this.player.destroy();
    }

    private fail(error: unknown): void {
        if (this.hasFailed) return;
        this.hasFailed = true;
        this.events.failed(
            error instanceof PlayerError ? error : new PlayerError(reasonOf(error)),
        );
    }

    /** The bytes of a piece: a whole FLV file at the start of a stretch, then only tags. */
    private async bytesOf(
        piece: Piece,
        isStart: boolean,
        signal: AbortSignal,
    ): Promise<Uint8Array<ArrayBuffer>> {
        if (!isStart) return imagesOf(piece.tags);
        return flvOfStart(await piece.rendition.sequenceHeaders(signal), piece.tags);
    }

    /** Called when a piece is about to go to the decoder, and not before. */
    private take(piece: Piece, isStart: boolean): void {
        if (isStart && this.stretch === undefined) {
            this.zeroMs = zeroOf(piece.tags) ?? piece.fragment.startMs;
        }
        this.stretch = piece.rendition;
        this.feed.advance(piece);
        this.events.delivered(piece);
    }

    private loaderClass(): new () => InstanceType<typeof mpegts.BaseLoader> {
        const session = this;
        const { kIdle, kBuffering, kComplete, kError } = mpegts.LoaderStatus;

        return class FragmentLoader extends mpegts.BaseLoader {
            private readonly stop = new AbortController();

            constructor() {
                super('fragments');
            }

            override open(_source: unknown, range: { from: number }): void {
                this._status = kBuffering;
                this.run(range.from).catch((error: unknown) => {
                    if (this.stop.signal.aborted) return;
                    this._status = kError;
                    session.fail(error);
                });
            }

            override abort(): void {
                this.stop.abort();
                this._status = kComplete;
            }

            override destroy(): void {
                this.stop.abort();
                this._status = kIdle;
                super.destroy();
            }

            /** Delivers fragments until the rendition changes or the presentation ends. */
            private async run(from: number): Promise<void> {
                const { signal } = this.stop;
                let at = from;
                for (;;) {
                    const piece = await session.feed.read(signal);
                    signal.throwIfAborted();
                    if (piece === undefined) break;
                    const isStart = at === 0;
                    if (!isStart && piece.rendition !== session.stretch) break;
                    const bytes = await session.bytesOf(piece, isStart, signal);
                    signal.throwIfAborted();
                    session.take(piece, isStart);
                    this.onDataArrival(bytes.buffer, at, at + bytes.length);
                    at += bytes.length;
                }
                this._status = kComplete;
                this.onComplete(from, at - 1);
            }
        } as unknown as new () => InstanceType<typeof mpegts.BaseLoader>;
    }
}
