import './style.css';

import { PlayerError, ProtectedError } from './errors';
import { drawTimetable, seconds } from './picture';
import { asPlayerError, Player } from './Player';
import type { Rendition } from './Rendition';

function element<T extends Element = HTMLElement>(id: string): T {
    const found = document.getElementById(id);
    if (found === null) throw new Error(`the page has no element ${id}`);
    return found as unknown as T;
}

const query = new URLSearchParams(location.search);
const kAheadMs = Number(query.get('ahead') ?? 10) * 1000;

const video = element<HTMLVideoElement>('video');
const seekBar = element<HTMLInputElement>('seek');
const list = element<HTMLSelectElement>('renditions');
const player = new Player(video, kAheadMs, { changed: show, failed: tell });
let moveClock: (clockMs: number) => void = () => {};
let drawn: Rendition | undefined;

function tell(error: PlayerError): void {
    const box = element('error');
    box.textContent = error.message;
    box.classList.toggle('protected', error instanceof ProtectedError);
    box.hidden = false;
}

/** Runs what the user asked for, and says so if it can't be done. */
function attempt(work: () => Promise<void>): void {
    element('error').hidden = true;
    work().catch((error: unknown) => {
        // A play that a newer wish cuts short isn't a failure.
        if (error instanceof DOMException && error.name === 'AbortError') return;
        tell(asPlayerError(error));
    });
}

function show(): void {
    const { playing, chosen } = player;
    element('title').textContent = player.title;
    element('clock').textContent = `${seconds(player.clockMs)} / ${seconds(player.endMs)} s`;
    element('play').textContent = video.paused ? 'Play' : 'Pause';
    element('playing').textContent =
        playing === undefined
            ? ''
            : `fragment ${playing.fragment.number} of segment ${playing.fragment.segment}, ${playing.rendition.label}`;
    element('waiting').textContent =
        playing !== undefined && chosen !== undefined && playing.rendition !== chosen
            ? `changes to ${chosen.label} at a fragment border`
            : '';
    seekBar.max = String(player.endMs);
    if (document.activeElement !== seekBar) seekBar.value = String(player.clockMs);
    if (list.options.length !== player.renditions.length) listRenditions();
    const table = chosen ?? playing?.rendition;
    if (table !== undefined && table !== drawn) {
        drawn = table;
        moveClock = drawTimetable(
            element<SVGSVGElement>('timetable'),
            table.cells,
            table.fragments,
            (fragment) => attempt(() => player.startAt(fragment)),
        );
        element('fragments').textContent =
            `${table.fragments.length} fragments, ` +
            `${table.cells.filter((cell) => !cell.hasData).length} numbers without data`;
    }
    moveClock(player.clockMs);
}

function listRenditions(): void {
    list.replaceChildren(
        ...player.renditions.map((one, i) => {
            const label = one.isProtected ? `${one.label}, protected` : one.label;
            return new Option(label, String(i));
        }),
    );
}

/** Without a manifest in the address: offer those that the server lists. */
async function offerManifests(): Promise<void> {
    const response = await fetch('media/');
    if (!response.ok) throw new PlayerError('Add ?kzd= and the address of a manifest.');
    const files = (await response.json()) as { name: string }[];
    const names = files.map((file) => file.name).filter((name) => name.endsWith('.kzd'));
    if (names.length === 0) throw new PlayerError('The folder that is served has no manifest.');
    element('manifests').replaceChildren(
        ...names.map((name) => {
            const link = document.createElement('a');
            link.href = `?kzd=${encodeURIComponent(`media/${encodeURIComponent(name)}`)}`;
            link.textContent = name;
            const item = document.createElement('li');
            item.append(link);
            return item;
        }),
    );
}

element('play').addEventListener('click', () =>
    attempt(async () => (video.paused ? player.play() : player.pause())),
);
seekBar.addEventListener('change', () => {
    seekBar.blur();
    attempt(() => player.seek(Number(seekBar.value)));
});
list.addEventListener('change', () => {
    const before = player.chosen;
    attempt(async () => {
        try {
            await player.choose(player.renditions[list.selectedIndex]!);
        } catch (error) {
            if (before !== undefined) list.selectedIndex = player.renditions.indexOf(before);
            throw error;
        }
    });
});
const frame = () => {
    if (!video.paused) show();
    requestAnimationFrame(frame);
};
requestAnimationFrame(frame);

const kzd = query.get('kzd');
if (kzd === null) {
    attempt(offerManifests);
} else {
    element('presentation').hidden = false;
    attempt(async () => {
        if (!('MediaSource' in window)) {
            throw new PlayerError('This browser has no Media Source Extensions.');
        }
        await player.open(new URL(kzd, location.href).href);
        const start = query.get('fragment');
        if (start !== null) await player.startAt(Number(start));
    });
}
