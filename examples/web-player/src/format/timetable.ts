import { type Bootstrap, Discontinuity } from './bootstrap';

/** One fragment number of the timetable. */
export interface Cell {
    fragment: number;
    segment: number;
    startMs: number;
    /** Up to the next number; of the last one, what the timetable says. */
    durationMs: number;
    /** False for numbers without data of their own: their media lie in a fragment before them. */
    hasData: boolean;
}

/** A bound on what is expanded: a damaged table can claim billions of numbers. */
const kMostCells = 1_000_000;

/**
 * Expands the run-length compressed tables to one cell for each fragment number.
 *
 * How many numbers there are is known from the segment runs alone: the last fragment run has no end.
 */
export function expandTimetable(bootstrap: Bootstrap): Cell[] {
    const runs = bootstrap.fragmentRuns.filter(
        (run) => run.durationMs !== 0 || run.discontinuity !== Discontinuity.End,
    );
    const first = runs[0]?.firstFragment;
    if (first === undefined) return [];

    const segments = segmentsOfNumbers(bootstrap, first);
    const cells: Cell[] = [];
    let at = 0;
    for (let fragment = first; fragment < first + segments.length; ++fragment) {
        while (at + 1 < runs.length && runs[at + 1]!.firstFragment <= fragment) ++at;
        const run = runs[at]!;
        const hasData = run.durationMs !== 0;
        const before = cells.at(-1);
        // Skipped numbers stand in the table with time 0: they begin where the one before ends.
        const timeless = !hasData && run.discontinuity !== Discontinuity.NoData;
        const startMs =
            timeless && before !== undefined
                ? before.startMs + before.durationMs
                : run.startMs + (fragment - run.firstFragment) * run.durationMs;
        cells.push({
            fragment,
            segment: segments[fragment - first]!,
            startMs,
            durationMs: run.durationMs,
            hasData,
        });
    }
    stretchNumbersWithoutData(cells);
    return cells;
}

/** The segment of each number from the first one on. */
function segmentsOfNumbers(bootstrap: Bootstrap, first: number): number[] {
    const segments: number[] = [];
    bootstrap.segmentRuns.forEach((run, i) => {
        const next = bootstrap.segmentRuns[i + 1]?.firstSegment ?? run.firstSegment + 1;
        for (let segment = run.firstSegment; segment < next; ++segment) {
            for (let n = 0; n < run.fragmentsPerSegment && segments.length < kMostCells; ++n) {
                segments.push(segment);
            }
            if (segments.length >= kMostCells || first + segments.length > 0xffffffff) return;
        }
    });
    return segments;
}

/** Neighbouring numbers without data share the time up to the next fragment evenly. */
function stretchNumbersWithoutData(cells: Cell[]): void {
    for (let i = 0; i < cells.length; ) {
        if (cells[i]!.hasData) {
            ++i;
            continue;
        }
        let end = i;
        while (end < cells.length && !cells[end]!.hasData) ++end;
        const startMs = cells[i]!.startMs;
        const endMs = cells[end]?.startMs ?? startMs;
        const each = Math.max(0, endMs - startMs) / (end - i);
        for (let n = i; n < end; ++n) {
            cells[n]!.startMs = startMs + (n - i) * each;
            cells[n]!.durationMs = each;
        }
        i = end;
    }
}
