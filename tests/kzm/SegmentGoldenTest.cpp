#include <gtest/gtest.h>

#include "kzm/WriterHarness.h"

namespace qlix::kzm {
namespace {

using namespace kz::test;

/// A whole segment file: a sound track and a hint track, two fragments. The first has two samples
/// and a bootstrap, the second one sample.
Bytes writeSegment() {
    MemoryStream stream;
    SamplePool pool;
    KZSWriter writer(stream, WriterConfiguration(), nullptr);

    KZMTrackInfo info = trackInfo("soun", 1000);
    info.volume = 1.0F;
    info.language[0] = 'e';
    info.language[1] = 'n';
    info.language[2] = 'g';
    info.handlerName = "a";
    info.handlerNameLength = 2;
    KZMTrackParams params = trackParams(1);
    params.descriptionSpace = 4;
    const TrackHandle sound = writer.addTrack(info, params, "a", 2);
    AudioSampleDescriptor audio;
    audio.handler = info.handler;
    audio.format = torvo::kzs::fourCc(".mp3");
    audio.sampleRate = 44100.0F;
    audio.channelCount = 2;
    audio.sampleSize = 16;
    EXPECT_EQ(writer.addSampleDescription(sound, audio, text("DATA")).index(), 1U);

    info = trackInfo("hint", 1000);
    info.handlerName = "h";
    info.handlerNameLength = 2;
    params.descriptionSpace = 16;
    const TrackHandle hint = writer.addHintTrack(info, params, "h", 2, &sound, 1);
    RtmpSampleDescriptor rtmp;
    rtmp.handler = info.handler;
    rtmp.format = torvo::kzs::fourCc("rtmp");
    rtmp.hintTrackVersion = 1;
    rtmp.highestCompatibleVersion = 1;
    rtmp.maxPacketSize = 500;
    writer.addSampleDescription(hint, rtmp, hex("00000010 616d6870 00000000 01010004"));

    EXPECT_EQ(writer.startFragment(), 1294U);
    const Bytes bootstrap = text("BST");
    writer.setBootstrap(bootstrap.data(), bootstrap.size(), nullptr, nullptr);
    writer.writeHintedSample(hint, sound, sampleOf("hint", 0, 1000, 5, 1), {1, 3},
                             pool.data(text("ABCDE")), true);
    KZMSample second = sampleOf("hint", 40, 1000, 4);
    second.compositionOffset = 10;
    writer.writeHintedSample(hint, sound, second, {0, 4}, pool.data(text("wxyz")), false);
    EXPECT_EQ(writer.startFragment(), 1591U);
    writer.writeHintedSample(hint, sound, sampleOf("hint", 100, 1000, 6, 1), {0, 6},
                             pool.data(text("123456")), true);
    writer.close();
    return stream.content;
}

const char* const kStart = R"(
    0   00000020                          size
    4   66747970                          'ftyp'
    8   6b7a6d20                          major brand 'kzm '
    12  00000001                          minor version
    16  69736f6d                          'isom'
    20  6d703432                          'mp42'
    24  6d347620                          'm4v '
    28  6b7a6d20                          'kzm '
    32  000004ee                          size 1262
    36  6d6f6f76                          'moov'
    40  00000078                          size 120
    44  6d766864                          'mvhd'
    48  01000000                          version 1
    52  0000000000000000                  creation date
    60  0000000000000000                  modification date
    68  000003e8                          timescale
    72  0000000000000065                  duration 101
    80  00010000                          rate
    84  0100                              volume
    86  00000000000000000000              reserved
    96  000100000000000000000000          matrix
    108 000000000001000000000000          matrix
    120 000000000000000040000000          matrix
    132 000000000000000000000000          pre-defined
    144 000000000000000000000000          pre-defined
    156 00000003                          next track id
)";

const char* const kSoundTrack = R"(
    0   000001fa                          size 506
    4   7472616b                          'trak'
    8   00000068                          size 104
    12  746b6864                          'tkhd'
    16  01000000                          version 1, flags 0
    20  0000000000000000                  creation date
    28  0000000000000000                  modification date
    36  00000001                          track id
    40  00000000                          reserved
    44  0000000000000065                  duration 101
    52  0000000000000000                  reserved
    60  00000000                          layer, alternate group
    64  0100                              volume
    66  0000                              reserved
    68  000100000000000000000000          matrix
    80  000000000001000000000000          matrix
    92  000000000000000040000000          matrix
    104 0000000000000000                  width, height
    112 00000136                          size 310
    116 6d646961                          'mdia'
    120 0000002c                          size 44
    124 6d646864                          'mdhd'
    128 01000000                          version 1
    132 0000000000000000                  creation date
    140 0000000000000000                  modification date
    148 000003e8                          timescale
    152 0000000000000065                  duration 101
    160 15c7                              language 'eng'
    162 0000                              pre-defined
    164 00000022                          size 34
    168 68646c72                          'hdlr'
    172 00000000                          version 0
    176 00000000                          pre-defined
    180 736f756e                          'soun'
    184 000000000000000000000000          reserved
    196 6100                              name
    198 000000e0                          size 224
    202 6d696e66                          'minf'
    206 00000010                          size
    210 736d6864                          'smhd'
    214 0000000000000000                  version 0, balance, reserved
    222 00000024                          size 36
    226 64696e66                          'dinf'
    230 0000001c                          size 28
    234 64726566                          'dref'
    238 0000000000000001                  version 0, one entry
    246 0000000c                          size
    250 75726c20                          'url '
    254 00000001                          in this file
    258 000000a4                          size 164
    262 7374626c                          'stbl'
    266 00000038                          size 56
    270 73747364                          'stsd'
    274 0000000000000001                  version 0, one entry
    282 00000028                          size 40
    286 2e6d7033                          '.mp3'
    290 0000000000000001                  reserved, data reference 1
    298 0000000000000000                  reserved
    306 00020010                          channels, bits
    310 00000000                          two zeros
    314 ac440000                          44100 a second
    318 44415441                          codec data
    322 0000001073747473                  'stts'
    330 0000000000000000                  empty
    338 0000001073747363                  'stsc'
    346 0000000000000000                  empty
    354 000000147374737a                  'stsz'
    362 000000000000000000000000          empty
    374 00000010636f3634                  'co64'
    382 0000000000000000                  empty
    390 0000001063747473                  'ctts'
    398 0000000000000000                  empty
    406 0000001073747373                  'stss'
    414 0000000000000000                  empty
    422 00000054                          size 84
    426 65647473                          'edts'
    430 0000004c                          size 76
    434 656c7374                          'elst'
    438 01000000                          version 1
    442 00000001                          one row
    446 0000000000000065                  duration
    454 0000000000000000                  media time
    462 00010000                          rate
    466 0000000000000000000000000000000000000000  room
    486 0000000000000000000000000000000000000000  room
)";

const char* const kHintTrack = R"(
    0   00000218                          size 536
    4   7472616b                          'trak'
    8   00000068                          size 104
    12  746b6864                          'tkhd'
    16  01000000                          version 1, flags 0
    20  0000000000000000                  creation date
    28  0000000000000000                  modification date
    36  00000002                          track id
    40  00000000                          reserved
    44  0000000000000065                  duration 101
    52  0000000000000000                  reserved
    60  00000000                          layer, alternate group
    64  0000                              volume
    66  0000                              reserved
    68  000100000000000000000000          matrix
    80  000000000001000000000000          matrix
    92  000000000000000040000000          matrix
    104 0000000000000000                  width, height
    112 00000014                          size 20
    116 74726566                          'tref'
    120 0000000c                          size
    124 68696e74                          'hint'
    128 00000001                          the sound track
    132 00000140                          size 320
    136 6d646961                          'mdia'
    140 0000002c                          size 44
    144 6d646864                          'mdhd'
    148 01000000                          version 1
    152 0000000000000000                  creation date
    160 0000000000000000                  modification date
    168 000003e8                          timescale
    172 0000000000000065                  duration 101
    180 0000                              language not given
    182 0000                              pre-defined
    184 00000022                          size 34
    188 68646c72                          'hdlr'
    192 00000000                          version 0
    196 00000000                          pre-defined
    200 68696e74                          'hint'
    204 000000000000000000000000          reserved
    216 6800                              name
    218 000000ea                          size 234
    222 6d696e66                          'minf'
    226 0000001c                          size 28
    230 686d6864                          'hmhd'
    234 0000000000000000                  version 0, sizes
    242 000000000000000000000000          bit rates, reserved
    254 00000024                          size 36
    258 64696e66                          'dinf'
    262 0000001c                          size 28
    266 64726566                          'dref'
    270 0000000000000001                  version 0, one entry
    278 0000000c                          size
    282 75726c20                          'url '
    286 00000001                          in this file
    290 000000a2                          size 162
    294 7374626c                          'stbl'
    298 00000036                          size 54
    302 73747364                          'stsd'
    306 0000000000000001                  version 0, one entry
    314 00000026                          size 38
    318 72746d70                          'rtmp'
    322 0000000000000001                  reserved, data reference 1
    330 0001000101f4                      versions, packet size
    336 00000010616d6870                  'amhp'
    344 0000000001010004                  its fields
    352 0000001073747473                  'stts'
    360 0000000000000000                  empty
    368 0000001073747363                  'stsc'
    376 0000000000000000                  empty
    384 000000147374737a                  'stsz'
    392 000000000000000000000000          empty
    404 00000010636f3634                  'co64'
    412 0000000000000000                  empty
    420 0000001063747473                  'ctts'
    428 0000000000000000                  empty
    436 0000001073747373                  'stss'
    444 0000000000000000                  empty
    452 00000054                          size 84
    456 65647473                          'edts'
    460 0000004c                          size 76
    464 656c7374                          'elst'
    468 01000000                          version 1
    472 00000001                          one row
    476 0000000000000065                  duration
    484 0000000000000000                  media time
    492 00010000                          rate
    496 0000000000000000000000000000000000000000  room
    516 0000000000000000000000000000000000000000  room
)";

const char* const kDefaults = R"(
    0   0000005c                          size 92
    4   6d766578                          'mvex'
    8   00000014                          size
    12  6d656864                          'mehd'
    16  01000000                          version 1
    20  0000000000000065                  duration 101
    28  0000002074726578                  'trex'
    36  00000000                          version 0
    40  00000001                          track id
    44  00000001000000010000000100000001  ones
    60  0000002074726578                  'trex'
    68  00000000                          version 0
    72  00000002                          track id
    76  00000001000000010000000100000001  ones
)";

// At 1294: afra 37, abst 15, moof 220 up to 1566, mdat 25 up to 1591.
const char* const kFirstFragment = R"(
    0   00000025                          size 21 + 16
    4   61667261                          'afra'
    8   00000000                          version 0
    12  c0                                long ids and offsets
    13  000003e8                          timescale
    17  00000001                          one entry
    21  0000000000000000                  time
    29  0000000000000120                  offset 288: 1566 + 16 - 1294
    37  0000000f                          size 12 + 3
    41  61627374                          'abst'
    45  00000000                          version 0
    49  425354                            'BST'
    52  000000dc                          size 220
    56  6d6f6f66                          'moof'
    60  000000106d666864                  'mfhd'
    68  0000000000000001                  sequence number 1
    76  0000006c                          size 108
    80  74726166                          'traf'
    84  0000001c74666864                  'tfhd'
    92  00000003                          base and description
    96  00000001                          track id
    100 000000000000062e                  base 1582
    108 00000001                          description
    112 000000247472756e                  'trun'
    120 00000f01                          flags
    124 00000001                          one sample
    128 00000001                          data offset
    132 00000028000000030200000000000000  40 long, 3 bytes, sync, 0
    148 000000247472756e                  'trun'
    156 00000f01                          flags
    160 00000001                          one sample
    164 00000005                          data offset
    168 0000003c00000004010100000000000a  60 long as patched, 4 bytes, other, 10
    184 00000058                          size 88
    188 74726166                          'traf'
    192 0000001c74666864                  'tfhd'
    200 00000003                          base and description
    204 00000002                          track id
    208 000000000000062e                  base 1582
    216 00000001                          description
    220 000000347472756e                  'trun'
    228 00000f01                          flags
    232 00000002                          two samples
    236 00000000                          data offset
    240 00000028000000050200000000000000  40 long, 5 bytes, sync, 0
    256 0000003c00000004010100000000000a  60 long as patched, 4 bytes, other, 10
    272 00000001                          the size follows
    276 6d646174                          'mdat'
    280 0000000000000019                  size 16 + 9
    288 4142434445                        'ABCDE'
    293 7778797a                          'wxyz'
)";

// At 1591: afra 37, moof 168 up to 1796, mdat 22 up to 1818.
const char* const kSecondFragment = R"(
    0   00000025                          size 21 + 16
    4   61667261                          'afra'
    8   00000000                          version 0
    12  c0                                long ids and offsets
    13  000003e8                          timescale
    17  00000001                          one entry
    21  0000000000000064                  time 100
    29  00000000000000dd                  offset 221: 1796 + 16 - 1591
    37  000000a8                          size 168
    41  6d6f6f66                          'moof'
    45  000000106d666864                  'mfhd'
    53  0000000000000002                  sequence number 2
    61  00000048                          size 72
    65  74726166                          'traf'
    69  0000001c74666864                  'tfhd'
    77  00000003                          base and description
    81  00000001                          track id
    85  0000000000000714                  base 1812
    93  00000001                          description
    97  000000247472756e                  'trun'
    105 00000f01                          flags
    109 00000001                          one sample
    113 00000000                          data offset
    117 00000001000000060200000000000000  1 long, 6 bytes, sync, 0
    133 00000048                          size 72
    137 74726166                          'traf'
    141 0000001c74666864                  'tfhd'
    149 00000003                          base and description
    153 00000002                          track id
    157 0000000000000714                  base 1812
    165 00000001                          description
    169 000000247472756e                  'trun'
    177 00000f01                          flags
    181 00000001                          one sample
    185 00000000                          data offset
    189 00000001000000060200000000000000  1 long, 6 bytes, sync, 0
    205 00000001                          the size follows
    209 6d646174                          'mdat'
    213 0000000000000016                  size 16 + 6
    221 313233343536                      '123456'
)";

TEST(SegmentGoldenTest, EveryByteOfAFileOfTwoFragmentsIsAccountedFor) {
    const Bytes expected = hexTable(kStart) + hexTable(kSoundTrack) + hexTable(kHintTrack) +
                           hexTable(kDefaults) + hexTable(kFirstFragment) +
                           hexTable(kSecondFragment);
    ASSERT_EQ(expected.size(), 1818U);
    EXPECT_EQ(difference(writeSegment(), expected), "");
}

}  // namespace
}  // namespace qlix::kzm
