import type { Cell } from './format/timetable';
import type { Fragment } from './Rendition';

const kSvg = 'http://www.w3.org/2000/svg';
const kHeight = 110;
const kFloor = 88;

/**
 * Draws the timetable: a bar for each fragment, as wide and as high as it is long; numbers without
 * data of their own are hatched gaps; segments are told by the colour of the ground line.
 *
 * Units of the picture are milliseconds across, so that it scales to any width. Returns a function
 * that moves the mark of the clock.
 */
export function drawTimetable(
    svg: SVGSVGElement,
    cells: Cell[],
    fragments: Fragment[],
    startAt: (fragment: number) => void,
): (clockMs: number) => void {
    svg.replaceChildren();
    const from = Math.min(...ends(cells, fragments).map(([start]) => start));
    const to = Math.max(...ends(cells, fragments).map(([, end]) => end), from + 1);
    svg.setAttribute('viewBox', `${from} 0 ${to - from} ${kHeight}`);
    svg.setAttribute('preserveAspectRatio', 'none');
    svg.append(hatching((to - from) / 150));

    const longest = Math.max(1, ...fragments.map((one) => one.endMs - one.startMs));
    const stored = new Map(fragments.map((one) => [one.number, one]));
    for (const fragment of fragments) {
        const spanMs = fragment.endMs - fragment.startMs;
        const bar = rectangle('bar', fragment.startMs, spanMs, (spanMs / longest) * (kFloor - 8));
        bar.dataset.fragment = String(fragment.number);
        bar.append(
            title(
                `fragment ${fragment.number}, segment ${fragment.segment}: ` +
                    `${seconds(fragment.startMs)} to ${seconds(fragment.endMs)} s`,
            ),
        );
        bar.addEventListener('click', () => startAt(fragment.number));
        svg.append(bar);
        const ground = rectangle('ground', fragment.startMs, spanMs, 8);
        ground.setAttribute('y', String(kFloor + 6));
        ground.classList.add(fragment.segment % 2 === 0 ? 'even' : 'odd');
        svg.append(ground);
    }
    for (const cell of cells) {
        if (stored.has(cell.fragment)) continue;
        const gap = rectangle('gap', cell.startMs, cell.durationMs, 22);
        gap.dataset.gap = String(cell.fragment);
        gap.append(title(`fragment number ${cell.fragment} has no data of its own`));
        svg.append(gap);
    }

    const mark = rectangle('clock', from, (to - from) / 400, kFloor + 16);
    mark.setAttribute('y', '0');
    svg.append(mark);
    return (clockMs) => mark.setAttribute('x', String(Math.min(Math.max(clockMs, from), to)));
}

function ends(cells: Cell[], fragments: Fragment[]): [number, number][] {
    return [
        ...cells.map((one): [number, number] => [one.startMs, one.startMs + one.durationMs]),
        ...fragments.map((one): [number, number] => [one.startMs, one.endMs]),
    ];
}

/** A rectangle that stands on the floor. */
function rectangle(kind: string, x: number, width: number, height: number): SVGRectElement {
    const element = document.createElementNS(kSvg, 'rect');
    element.setAttribute('class', kind);
    element.setAttribute('x', String(x));
    element.setAttribute('y', String(kFloor - height));
    element.setAttribute('width', String(Math.max(0, width)));
    element.setAttribute('height', String(height));
    return element;
}

function title(text: string): SVGTitleElement {
    const element = document.createElementNS(kSvg, 'title');
    element.textContent = text;
    return element;
}

function hatching(width: number): SVGDefsElement {
    const defs = document.createElementNS(kSvg, 'defs');
    defs.innerHTML =
        `<pattern id="hatching" width="${width}" height="6" patternUnits="userSpaceOnUse">` +
        `<rect class="hatch" width="${width / 2}" height="6"/></pattern>`;
    return defs;
}

export function seconds(ms: number): string {
    return (ms / 1000).toFixed(ms % 100 === 0 ? 1 : 3);
}
