import { describe, expect, it } from 'vitest';

import { parseManifest } from '../src/format/manifest';

const kOne = `<bootstrapInfo profile="named" id="b1">
\t\tAQID
\t</bootstrapInfo>
\t<media streamId="a" url="a" bitrate="120" bootstrapInfoId="b1">
\t\t<metadata>AA==</metadata>
\t</media>`;

function manifest(content: string): string {
    return `<?xml version="1.0" encoding="UTF-8"?>
<manifest xmlns="http://example.com/kzd/1.0">
\t<id>
\t\tclip
\t</id>
\t<mimeType>
\t</mimeType>
\t<duration>
\t\t16.023
\t</duration>
\t${content}
</manifest>`;
}

describe('manifest', () => {
    it('tells its name, duration and renditions, whose texts stand on lines of their own', () => {
        const read = parseManifest(manifest(kOne), 'x');
        expect(read.id).toBe('clip');
        expect(read.durationMs).toBeCloseTo(16023);
        expect(read.media).toEqual([
            {
                streamId: 'a',
                url: 'a',
                bitrate: '120',
                bootstrap: { bytes: Uint8Array.of(1, 2, 3) },
                isProtected: false,
            },
        ]);
    });

    it('takes the last of two media with one stream id', () => {
        const second = '<media streamId="a" url="later" bootstrapInfoId="b1"/>';
        const read = parseManifest(manifest(kOne + second), 'x');
        expect(read.media.map((one) => one.url)).toEqual(['later']);
    });

    it('names the file of an external bootstrap', () => {
        const read = parseManifest(
            manifest(
                '<bootstrapInfo url="a.bootstrap" id="b"/><media url="a" bootstrapInfoId="b"/>',
            ),
            'x',
        );
        expect(read.media[0]?.bootstrap).toEqual({ url: 'a.bootstrap' });
    });

    it.each([
        ['<drmAdditionalHeader drmContentId="c" id="d">AAAA</drmAdditionalHeader>', true],
        ['<drmAdditionalHeader url="a.drmmeta" drmContentId="c" id="d"/>', true],
        ['<drmAdditionalHeader drmContentId="c" id="d">\n\t</drmAdditionalHeader>', false],
        ['<drmAdditionalHeader drmContentId="c" id="other">AAAA</drmAdditionalHeader>', false],
    ])('with the header %s is protected: %s', (header, isProtected) => {
        const media = '<media url="a" bootstrapInfoId="b1" drmAdditionalHeaderId="d"/>';
        const read = parseManifest(manifest(kOne + header + media), 'x');
        expect(read.media.at(-1)?.isProtected).toBe(isProtected);
    });

    it.each([
        ['<html><body/></html>', 'its root is <html>'],
        [manifest(''), 'lists no rendition'],
        [manifest('<media url="a"/>'), 'has no bootstrap'],
        [manifest('<bootstrapInfo id="b"/><media bootstrapInfoId="b"/>'), 'has no url'],
        [manifest(kOne.replace('AQID', 'A!')), "isn't base64"],
    ])('says what is wrong with %s', (text, message) => {
        expect(() => parseManifest(text, 'x.kzd')).toThrow(message);
    });
});
