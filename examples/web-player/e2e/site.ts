import { execFileSync, spawn, type ChildProcess } from 'node:child_process';
import { existsSync, mkdirSync, mkdtempSync, rmSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join, resolve } from 'node:path';
import { fileURLToPath } from 'node:url';

import { type Browser, chromium, type Page } from 'playwright-core';

const kTop = resolve(fileURLToPath(import.meta.url), '../../../..');
const kPackager = process.env.KZSPACKAGER ?? join(kTop, 'build/release/kzspackager');

/** Packages a bundled clip into `folder`. */
export function packageClip(folder: string, clip: string, ...options: string[]): void {
    if (!existsSync(kPackager)) throw new Error(`build the packager first: no ${kPackager}`);
    const input = join(kTop, 'tests/data/media', clip);
    execFileSync(kPackager, [`--input-file=${input}`, `--output-path=${folder}`, ...options]);
}

/** The options of a protected run, with keys and certificates made in `keys`. */
export function protectionOptions(keys: string): string[] {
    const script =
        'import sys; from pathlib import Path; from protection import protection_options\n' +
        'print("\\n".join(protection_options(Path(sys.argv[1]))))';
    const options = execFileSync('python3', ['-Bc', script, keys], {
        env: { ...process.env, PYTHONPATH: join(kTop, 'bench') },
    });
    return String(options).trim().split('\n');
}

/** A folder that is served by examples/serve.sh, and a browser. Traffic stays on loopback. */
export class Site {
    private readonly top = mkdtempSync(join(tmpdir(), 'kzs player '));
    /** Its name isn't an easy one. */
    readonly folder = join(this.top, 'media #1');
    /** Not served. */
    readonly keys = join(this.top, 'keys');
    address = '';
    private server: ChildProcess | undefined;
    private browser: Browser | undefined;

    async start(): Promise<void> {
        mkdirSync(this.folder, { recursive: true });
        const server = spawn(join(kTop, 'examples/serve.sh'), [this.folder]);
        this.server = server;
        this.address = await new Promise<string>((done, fail) => {
            let said = '';
            server.stderr.on('data', (data: Buffer) => (said += data));
            server.stdout.once('data', (data: Buffer) => done(String(data).trim()));
            server.once('exit', () => fail(new Error(`serve.sh ended: ${said}`)));
        });
        this.browser = await chromium.launch({
            executablePath: process.env.CHROMIUM ?? '/usr/bin/chromium',
            headless: false, // the flag below asks for the headless mode that plays as a window does
            args: [
                '--headless',
                '--no-sandbox',
                '--disable-gpu',
                '--disable-quic',
                '--no-first-run',
                '--disable-background-networking',
                '--disable-component-update',
                '--disable-sync',
                '--autoplay-policy=no-user-gesture-required',
                '--host-resolver-rules=MAP * ~NOTFOUND, EXCLUDE 127.0.0.1',
            ],
        });
    }

    async stop(): Promise<void> {
        await this.browser?.close();
        if (this.server?.exitCode === null) {
            const ended = new Promise((done) => this.server!.once('exit', done));
            this.server.kill('SIGTERM');
            await ended;
        }
        rmSync(this.top, { recursive: true, force: true });
    }

    async open(query = ''): Promise<Visit> {
        const page = await this.browser!.newPage();
        const visit = new Visit(page, this.address);
        await page.goto(this.address + query);
        return visit;
    }

    kzd(name: string, more = ''): Promise<Visit> {
        return this.open(`?kzd=${encodeURIComponent(`media/${encodeURIComponent(name)}`)}${more}`);
    }
}

/** One open page, looked at as a user does. */
export class Visit {
    /** Segment requests: file, byte range, status. */
    readonly ranges: { file: string; range: string; status: number }[] = [];
    /** Addresses that aren't the server's. */
    readonly strangers: string[] = [];

    constructor(
        readonly page: Page,
        address: string,
    ) {
        page.on('request', (request) => {
            const url = request.url();
            if (!url.startsWith(address) && !/^(data|blob):/.test(url)) this.strangers.push(url);
        });
        page.on('response', (response) => {
            const file = decodeURIComponent(response.url().split('/').at(-1)!);
            if (!file.endsWith('.kzs')) return;
            const range = response.request().headers()['range'] ?? '';
            this.ranges.push({ file, range, status: response.status() });
        });
    }

    text(id: string): Promise<string> {
        return this.page.locator(`#${id}`).innerText();
    }

    /** Seconds on the clock of the presentation. */
    async clock(): Promise<number> {
        return parseFloat(await this.text('clock'));
    }

    /** A digest of the picture that is on the screen. */
    picture(): Promise<number> {
        return this.page.evaluate(() => {
            const video = document.querySelector('video')!;
            const canvas = document.createElement('canvas');
            canvas.width = 160;
            canvas.height = 90;
            const context = canvas.getContext('2d')!;
            context.drawImage(video, 0, 0, 160, 90);
            const { data } = context.getImageData(0, 0, 160, 90);
            return data.reduce((sum, value) => (sum * 31 + value) >>> 0, 7);
        });
    }

    /** Waits until `reach` seconds are on the clock; the time it took is bounded. */
    async untilClock(reach: number, timeoutMs = 15_000): Promise<void> {
        const deadline = Date.now() + timeoutMs;
        while ((await this.clock()) < reach) {
            if (Date.now() > deadline) {
                const error = await this.page.locator('#error').textContent();
                throw new Error(`the clock stands at ${await this.text('clock')}; ${error}`);
            }
            await this.page.waitForTimeout(50);
        }
    }

    /** Waits for three pictures one after the other that all differ. */
    async untilPictureMoves(timeoutMs = 10_000): Promise<void> {
        const deadline = Date.now() + timeoutMs;
        const seen = new Set<number>();
        while (seen.size < 3) {
            if (Date.now() > deadline) throw new Error(`the picture stands at ${await this.clock()}`);
            seen.add(await this.picture());
            await this.page.waitForTimeout(50);
        }
    }

    async untilPlaying(what: RegExp, timeoutMs = 20_000): Promise<void> {
        await this.page.locator('#playing').filter({ hasText: what }).waitFor({ timeout: timeoutMs });
    }

    async seek(seconds: number): Promise<void> {
        await this.page.locator('#seek').evaluate((bar: HTMLInputElement, ms) => {
            bar.value = String(ms);
            bar.dispatchEvent(new Event('change'));
        }, seconds * 1000);
    }

    async error(): Promise<string> {
        await this.page.locator('#error:not([hidden])').waitFor({ timeout: 15_000 });
        return this.text('error');
    }

    close(): Promise<void> {
        return this.page.close();
    }
}
