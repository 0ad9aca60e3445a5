import { expect, it } from 'vitest';

import { drawTimetable } from '../src/picture';

it('the picture has a bar for each fragment, gaps for numbers without data, and a clock', () => {
    const svg = document.createElementNS('http://www.w3.org/2000/svg', 'svg') as SVGSVGElement;
    const cell = (fragment: number, startMs: number, durationMs: number, hasData: boolean) => ({
        fragment,
        segment: 1,
        startMs,
        durationMs,
        hasData,
    });
    const fragment = (number: number, segment: number, startMs: number, endMs: number) => ({
        number,
        segment,
        startMs,
        endMs,
        offset: 1,
        end: null,
    });
    let clicked = 0;
    const move = drawTimetable(
        svg,
        [cell(1, 0, 4000, true), cell(2, 4000, 4000, false), cell(3, 8000, 2000, true)],
        [fragment(1, 1, 0, 8000), fragment(3, 2, 8000, 10000)],
        (number) => (clicked = number),
    );
    const attributes = (selector: string, name: string) =>
        [...svg.querySelectorAll(selector)].map((one) => one.getAttribute(name));
    expect(svg.getAttribute('viewBox')).toBe('0 0 10000 110');
    expect(attributes('.bar', 'x')).toEqual(['0', '8000']);
    expect(attributes('.bar', 'width')).toEqual(['8000', '2000']);
    expect(attributes('.bar', 'height')).toEqual(['80', '20']);
    expect(attributes('.gap', 'data-gap')).toEqual(['2']);
    expect(attributes('.gap', 'x')).toEqual(['4000']);
    expect(attributes('.ground', 'class')).toEqual(['ground odd', 'ground even']);

    move(2500);
    expect(attributes('.clock', 'x')).toEqual(['2500']);
    move(99999);
    expect(attributes('.clock', 'x')).toEqual(['10000']);

    svg.querySelectorAll<SVGRectElement>('.bar')[1]!.dispatchEvent(new MouseEvent('click'));
    expect(clicked).toBe(3);
});
