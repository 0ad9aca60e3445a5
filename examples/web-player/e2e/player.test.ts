import { copyFileSync, readFileSync, writeFileSync } from 'node:fs';
import { join } from 'node:path';

import { afterAll, afterEach, beforeAll, expect, it } from 'vitest';

import { parseIndex } from '../src/format/fragmentIndex';
import { packageClip, protectionOptions, Site, Visit } from './site';

const site = new Site();
let visit: Visit;

/** A copy of a served file under another name, changed. */
function changed(from: string, to: string, change: (text: Buffer) => Buffer | string): void {
    const path = (name: string) => join(site.folder, name);
    writeFileSync(path(to), change(readFileSync(path(from))));
}

beforeAll(async () => {
    const grid = '--fragment-duration=2';
    packageClip(site.folder, 'mbr_60k.flv', grid, '--bitrate=60');
    packageClip(
        site.folder,
        'mbr_120k.flv',
        grid,
        '--bitrate=120',
        `--manifest-file=${join(site.folder, 'mbr_60k.kzd')}`,
    );
    packageClip(
        site.folder,
        'mbr_240k.flv',
        grid,
        '--bitrate=240',
        '--segment-duration=6',
        `--manifest-file=${join(site.folder, 'mbr_120k.kzd')}`,
    );
    packageClip(site.folder, 'long_gop_9s.flv', '--external-bootstrap');
    packageClip(site.folder, 'h264_aac_bframes.flv');
    packageClip(site.folder, 'aac_only.flv');
    packageClip(site.folder, 'mp3_only.flv');
    packageClip(site.folder, 'speex_only.flv');
    packageClip(site.folder, 'short_3s.flv', '--output-manifest-file=50% #1?.kzd');
    packageClip(site.folder, 'ts90000.mp4');
    const protection = protectionOptions(site.keys);
    packageClip(site.folder, 'h264_only.flv', '--output-manifest-file=secret', ...protection);
    await site.start();
});

afterAll(() => site.stop());

afterEach(async () => {
    expect(visit.strangers).toEqual([]);
    expect(visit.ranges.filter((one) => one.status !== 206)).toEqual([]);
    await visit.close();
});

it('the page lists the manifests of the folder', async () => {
    visit = await site.open();
    await visit.page.getByText('50% #1?.kzd').click();
    await visit.page.locator('#play').click();
    await visit.untilClock(0.5);
});

it('the picture moves and the clock advances', async () => {
    visit = await site.kzd('mbr_240k.kzd');
    await visit.page.locator('#timetable .bar').nth(7).waitFor();
    expect(await visit.page.locator('#renditions option').allInnerTexts()).toEqual([
        'mbr_60k (60 kbit/s)',
        'mbr_120k (120 kbit/s)',
        'mbr_240k (240 kbit/s)',
    ]);
    expect(await visit.clock()).toBe(0);
    expect(visit.ranges).toEqual([]);

    await visit.page.locator('#play').click();
    await visit.untilClock(0.4);
    await visit.untilPictureMoves();
    await visit.untilClock(1.4);

    await visit.page.locator('#play').click();
    await visit.page.locator('#play').filter({ hasText: 'Play' }).waitFor();
    await visit.page.waitForTimeout(300);
    const stopped = await visit.clock();
    const still = await visit.picture();
    await visit.page.waitForTimeout(400);
    expect(await visit.clock()).toBe(stopped);
    expect(await visit.picture()).toBe(still);
});

it('fragments are not read long before they are due', async () => {
    visit = await site.kzd('mbr_240k.kzd', '&ahead=3');
    await visit.page.locator('#play').click();
    await visit.untilClock(0.3);
    await visit.page.waitForTimeout(300);
    // Fragments begin every two seconds, so two are due within three; one more may be on its way.
    expect(visit.ranges.length).toBeLessThanOrEqual((await visit.clock()) / 2 + 3);
    await visit.untilClock(2.5);
    expect(visit.ranges.every((one) => /^bytes=\d+-\d*$/.test(one.range))).toBe(true);
});

it('a seek lands where it should, loaded or not, forwards and back', async () => {
    visit = await site.kzd('mbr_240k.kzd', '&ahead=3');
    await visit.page.locator('#play').click();
    await visit.untilClock(0.3);

    await visit.seek(11);
    await visit.untilPlaying(/fragment 6 /);
    await visit.untilClock(11.3);
    expect(await visit.clock()).toBeLessThan(13);
    await visit.untilPictureMoves();
    await visit.untilClock(12);
    // The fragment in front of the target was passed over.
    const index = parseIndex(readFileSync(join(site.folder, 'mbr_60kSeg1.kzx')), 'index');
    const isRead = (number: number) =>
        visit.ranges.some((one) => one.range.startsWith(`bytes=${index[number - 1]!.offset}-`));
    expect([isRead(1), isRead(5), isRead(6)]).toEqual([true, false, true]);

    await visit.seek(3);
    await visit.untilPlaying(/fragment 2 /);
    await visit.untilClock(3.2);
    expect(await visit.clock()).toBeLessThan(5);
});

it('a start at a fragment shows that fragment', async () => {
    visit = await site.kzd('mbr_240k.kzd', '&fragment=4');
    await visit.untilPlaying(/fragment 4 /);
    await visit.untilClock(6.2);
    await visit.page.locator('#timetable .bar[data-fragment="8"]').click();
    await visit.untilPlaying(/fragment 8 /);
    // To the end: the clock stops at the last picture, and the button offers to play again.
    await visit.untilClock(15.8);
    await visit.page.locator('#play').filter({ hasText: 'Play' }).waitFor({ timeout: 10_000 });
    await visit.page.locator('#play').click();
    await visit.untilPlaying(/fragment 1 /);
    await visit.untilClock(0.3);
});

it('the rendition changes at a fragment border while it plays', async () => {
    visit = await site.kzd('mbr_240k.kzd', '&ahead=3');
    await visit.page.locator('#play').click();
    await visit.untilClock(0.5);
    await visit.page.locator('#renditions').selectOption({ index: 2 });
    await visit.page.locator('#waiting').filter({ hasText: 'changes to mbr_240k' }).waitFor();
    const before = await visit.clock();
    await visit.untilPlaying(/mbr_240k/);
    const after = await visit.clock();
    expect(after).toBeGreaterThan(before);

    // It goes on in the new one, at the fragment behind the last one of the old, without a gap.
    const files = visit.ranges.map((one) => one.file);
    const change = files.findIndex((file) => file.startsWith('mbr_240k'));
    expect(change).toBeGreaterThan(0);
    expect(files.slice(change).every((file) => file.startsWith('mbr_240k'))).toBe(true);
    await visit.untilClock(after + 2.5, 6000);
    await visit.untilPictureMoves();
    expect(await visit.text('playing')).toContain('mbr_240k');
});

it('the timetable marks numbers without data, and their time plays', async () => {
    visit = await site.kzd('long_gop_9s.kzd');
    await visit.page.locator('#timetable .bar').first().waitFor();
    const gaps = await visit.page.locator('#timetable .gap').count();
    expect(gaps).toBeGreaterThan(2);
    await visit.page.locator('#play').click();
    await visit.seek(6);
    await visit.untilClock(6.5);
    expect(await visit.page.locator('#error').isHidden()).toBe(true);
});

it.each(['h264_aac_bframes', 'ts90000', 'aac_only', 'mp3_only'])('%s plays', async (name) => {
    visit = await site.kzd(`${name}.kzd`, '&fragment=2');
    await visit.untilPlaying(/fragment 2 /);
    await visit.untilClock(5);
    expect(await visit.page.locator('#error').isHidden()).toBe(true);
});

it('protected content is refused by its manifest, and nothing of it is read', async () => {
    visit = await site.kzd('secret.kzd');
    expect(await visit.error()).toBe(
        '"secret" is protected: this player has no key and doesn\'t play it.',
    );
    expect(await visit.page.locator('#renditions').innerText()).toBe('secret, protected');
    await visit.page.locator('#play').click();
    await visit.page.waitForTimeout(300);
    expect(visit.ranges).toEqual([]);
});

it('encrypted tags are refused even where the manifest is silent', async () => {
    changed('secret.kzd', 'silent.kzd', (text) =>
        text.toString().replace(/drmAdditionalHeaderId="[^"]*"/, ''),
    );
    visit = await site.kzd('silent.kzd');
    await visit.page.locator('#play').click();
    expect(await visit.error()).toBe(
        "Fragment 1 of secretSeg1.kzs is protected: this player has no key and doesn't play it.",
    );
    expect(await visit.clock()).toBe(0);
});

it('the page says what is wrong', async () => {
    visit = await site.kzd('nothing.kzd');
    expect(await visit.error()).toBe('nothing.kzd: the server answers 404 Not Found.');
    await visit.close();

    writeFileSync(join(site.folder, 'broken.kzd'), '<manifest><id>');
    visit = await site.kzd('broken.kzd');
    expect(await visit.error()).toMatch(/broken.kzd is not a manifest: it isn't well-formed XML/);
    await visit.close();

    visit = await site.kzd('speex_only.kzd');
    await visit.page.locator('#play').click();
    expect(await visit.error()).toBe(
        'The audio of "speex_only" is Speex, which browsers don\'t play.',
    );
    await visit.close();

    copyFileSync(join(site.folder, 'aac_only.kzd'), join(site.folder, 'cut.kzd'));
    changed('aac_onlySeg1.kzx', 'aac_onlySeg1.kzx', (index) => index.subarray(0, 60));
    visit = await site.kzd('cut.kzd');
    expect(await visit.error()).toMatch(/aac_onlySeg1.kzx is damaged/);
});
