#include <limits>

#include <gtest/gtest.h>

#include "kzm/impl/BoxSupport.h"
#include "kzm/impl/FtypBox.h"
#include "kzm/impl/HmhdBox.h"
#include "kzm/impl/MoovBox.h"
#include "kzm/impl/NmhdBox.h"
#include "kzm/impl/SmhdBox.h"
#include "kzm/impl/UrlBox.h"
#include "kzm/impl/VmhdBox.h"

namespace qlix::kzm::impl {
namespace {

using namespace kz::test;

/// A day after the start of all dates: 86400 seconds, 0x15180.
DateRecord secondDay() {
    DateRecord out;
    out.day = 2;
    return out;
}

/// Ten seconds after the start of all dates.
DateRecord tenthSecond() {
    DateRecord out;
    out.second = 10;
    return out;
}

TEST(FtypBoxTest, WritesTheBrandsOfThisSystem) {
    WriteFile file;
    FtypBox box(file.context());
    EXPECT_EQ(box.size(), 16U);
    box.addCompatibleBrand(fourCc("isom"));
    box.addCompatibleBrand(fourCc("mp42"));
    EXPECT_EQ(written(file, box), hexTable(R"(
        0   00000018  size 24
        4   66747970  'ftyp'
        8   6b7a6d20  major brand 'kzm '
        12  00000001  minor version 1
        16  69736f6d  'isom'
        20  6d703432  'mp42'
    )"));
}

TEST(FtypBoxTest, ReadsItsBrands) {
    ReadFile file(box("ftyp", text("M4V "), u32(7), text("isommp42")));
    const auto read = readAs<FtypBox>(file);
    EXPECT_EQ(read->majorBrand(), fourCc("M4V "));
    EXPECT_EQ(read->minorVersion(), 7U);
    EXPECT_EQ(std::vector<std::uint32_t>(read->compatibleBrands().begin(),
                                         read->compatibleBrands().end()),
              (std::vector<std::uint32_t>{fourCc("isom"), fourCc("mp42")}));
    EXPECT_TRUE(file.warnings.empty());
}

TEST(FtypBoxTest, KeepsNoBrandsOfAListWithAStrayByte) {
    ReadFile file(box("ftyp", text("M4V "), u32(7), text("isommp42x")));
    const auto read = readAs<FtypBox>(file);
    EXPECT_EQ(read->majorBrand(), fourCc("M4V "));
    EXPECT_TRUE(read->compatibleBrands().empty());
    EXPECT_EQ(file.warnings, std::vector<std::uint32_t>{3073});
}

TEST(FtypBoxTest, NeedsEightBytes) {
    const auto codes = codesWhenCut(box("ftyp", fill(8, 0)));
    EXPECT_EQ(codes, std::vector<std::uint32_t>(8, 27));
}

MovieHeader movieFields() {
    MovieHeader out;
    out.creationDate = secondDay();
    out.modificationDate = tenthSecond();
    out.timescale = 1000;
    out.duration = 0x123456789;
    out.rate = 1.5;
    out.volume = 0.75;
    out.nextTrackId = 4;
    return out;
}

const char* const kMvhd = R"(
    0    00000078          size 120
    4    6d766864          'mvhd'
    8    01000000          version 1, flags 0
    12   0000000000015180  creation: 86400 s
    20   000000000000000a  modification: 10 s
    28   000003e8          timescale 1000
    32   0000000123456789  duration
    40   00018000          rate 1.5
    44   00c0              volume 0.75
    46   0000              reserved
    48   0000000000000000  reserved
    56   000100000000000000000000  matrix: 1 0 0
    68   000000000001000000000000  0 1 0
    80   000000000000000040000000  0 0 1
    92   000000000000000000000000  pre-defined
    104  000000000000000000000000
    116  00000004          next track id
)";

TEST(MvhdBoxTest, WritesVersionOne) {
    WriteFile file;
    MvhdBox box(file.context(), movieFields());
    EXPECT_EQ(difference(written(file, box), hexTable(kMvhd)), "");
}

TEST(MvhdBoxTest, RewritesDurationAndNextTrackId) {
    WriteFile file;
    MvhdBox box(file.context(), movieFields());
    box.write();
    box.setDuration(0x1122334455667788);
    box.setNextTrackId(9);
    box.write();
    EXPECT_EQ(difference(file.bytes(),
                         hexTable(kMvhd).patched(32, u64(0x1122334455667788)).patched(116, u32(9))),
              "");
}

TEST(MvhdBoxTest, ReadsVersionOne) {
    ReadFile file(hexTable(kMvhd));
    const MovieHeader movie = readAs<MvhdBox>(file)->movie();
    EXPECT_EQ(movie.creationDate, secondDay());
    EXPECT_EQ(movie.modificationDate, tenthSecond());
    EXPECT_EQ(movie.timescale, 1000U);
    EXPECT_EQ(movie.duration, 0x123456789U);
    EXPECT_EQ(movie.rate, 1.5);
    EXPECT_EQ(movie.volume, 0.75);
    EXPECT_EQ(movie.nextTrackId, 4U);
}

Bytes shortMvhd() {
    return fullBox("mvhd", 0, 0, u32(86400), u32(10), u32(600), u32(0xFFFFFFFF), u32(0x20000),
                   u16(0x0100), fill(10, 0), fill(36, 0), fill(24, 0), u32(3));
}

TEST(MvhdBoxTest, ReadsVersionZeroWith32BitTimes) {
    ReadFile file(shortMvhd());
    const MovieHeader movie = readAs<MvhdBox>(file)->movie();
    EXPECT_EQ(movie.creationDate, secondDay());
    EXPECT_EQ(movie.modificationDate, tenthSecond());
    EXPECT_EQ(movie.timescale, 600U);
    EXPECT_EQ(movie.duration, 0xFFFFFFFFU);
    EXPECT_EQ(movie.rate, 2.0);
    EXPECT_EQ(movie.volume, 1.0);
    EXPECT_EQ(movie.nextTrackId, 3U);
}

TEST(MvhdBoxTest, ReadsVersionTwoAsVersionOne) {
    ReadFile file(hexTable(kMvhd).patched(8, u8(2)));
    EXPECT_EQ(readAs<MvhdBox>(file)->movie().duration, 0x123456789U);
}

TEST(MvhdBoxTest, NeedsAllItsBytes) {
    EXPECT_EQ(codesWhenCut(hexTable(kMvhd)), codesOfAFullBox(120));
    EXPECT_EQ(codesWhenCut(shortMvhd()), codesOfAFullBox(108));
}

TrackHeader trackFields() {
    TrackHeader out;
    out.creationDate = secondDay();
    out.modificationDate = tenthSecond();
    out.trackId = 2;
    out.duration = 0x100000002;
    out.volume = 1.0;
    out.width = 640.5;
    out.height = 360.0;
    return out;
}

const char* const kTkhd = R"(
    0    00000068          size 104
    4    746b6864          'tkhd'
    8    01000007          version 1, flags 7
    12   0000000000015180  creation
    20   000000000000000a  modification
    28   00000002          track id
    32   00000000          reserved
    36   0000000100000002  duration
    44   0000000000000000  reserved
    52   0000              layer
    54   0000              alternate group
    56   0100              volume 1.0
    58   0000              reserved
    60   000100000000000000000000  matrix
    72   000000000001000000000000
    84   000000000000000040000000
    96   02808000          width 640.5
    100  01680000          height 360
)";

TEST(TkhdBoxTest, WritesVersionOne) {
    WriteFile file;
    TkhdBox box(file.context(), 7, trackFields());
    EXPECT_EQ(difference(written(file, box), hexTable(kTkhd)), "");
}

TEST(TkhdBoxTest, RewritesTheDuration) {
    WriteFile file;
    TkhdBox box(file.context(), 7, trackFields());
    box.write();
    box.setDuration(5);
    box.write();
    EXPECT_EQ(difference(file.bytes(), hexTable(kTkhd).patched(36, u64(5))), "");
}

TEST(TkhdBoxTest, ReadsVersionOne) {
    ReadFile file(hexTable(kTkhd));
    const auto read = readAs<TkhdBox>(file);
    EXPECT_EQ(read->flags(), 7U);
    EXPECT_EQ(read->track().creationDate, secondDay());
    EXPECT_EQ(read->track().modificationDate, tenthSecond());
    EXPECT_EQ(read->track().trackId, 2U);
    EXPECT_EQ(read->track().duration, 0x100000002U);
    EXPECT_EQ(read->track().volume, 1.0);
    EXPECT_EQ(read->track().width, 640.5);
    EXPECT_EQ(read->track().height, 360.0);
}

Bytes shortTkhd() {
    return fullBox("tkhd", 0, 3, u32(86400), u32(10), u32(9), u32(0), u32(77), fill(12, 0),
                   u16(0x80), u16(0), fill(36, 0), u32(0x10000), u32(0x8000));
}

TEST(TkhdBoxTest, ReadsVersionZeroWith32BitTimes) {
    ReadFile file(shortTkhd());
    const TrackHeader track = readAs<TkhdBox>(file)->track();
    EXPECT_EQ(track.trackId, 9U);
    EXPECT_EQ(track.duration, 77U);
    EXPECT_EQ(track.volume, 0.5);
    EXPECT_EQ(track.width, 1.0);
    EXPECT_EQ(track.height, 0.5);
}

TEST(TkhdBoxTest, NeedsAllItsBytes) {
    EXPECT_EQ(codesWhenCut(hexTable(kTkhd)), codesOfAFullBox(104));
    EXPECT_EQ(codesWhenCut(shortTkhd()), codesOfAFullBox(92));
}

MediaHeader mediaFields(Language language) {
    MediaHeader out;
    out.creationDate = secondDay();
    out.modificationDate = tenthSecond();
    out.timescale = 90000;
    out.duration = 0x100000003;
    out.language = language;
    return out;
}

// "eng": 5, 14, 7, so 00101 01110 00111 behind a 0 bit.
const char* const kMdhd = R"(
    0    0000002c          size 44
    4    6d646864          'mdhd'
    8    01000000          version 1, flags 0
    12   0000000000015180  creation
    20   000000000000000a  modification
    28   00015f90          timescale 90000
    32   0000000100000003  duration
    40   15c7              language
    42   0000              pre-defined
)";

TEST(MdhdBoxTest, WritesVersionOne) {
    WriteFile file;
    MdhdBox box(file.context(), mediaFields({'e', 'n', 'g', 0}));
    EXPECT_EQ(difference(written(file, box), hexTable(kMdhd)), "");
}

TEST(MdhdBoxTest, RewritesTheDuration) {
    WriteFile file;
    MdhdBox box(file.context(), mediaFields({'e', 'n', 'g', 0}));
    box.write();
    box.setDuration(6);
    box.write();
    EXPECT_EQ(difference(file.bytes(), hexTable(kMdhd).patched(32, u64(6))), "");
}

TEST(MdhdBoxTest, PadsAShortLanguageAndCutsLettersToFiveBits) {
    const std::pair<Language, std::uint32_t> cases[] = {
        {{'e', 'n', 0, 0}, 0x15C0},    // third letter 0
        {{0, 0, 0, 0}, 0},             // none at all
        {{'e', 0, 'g', 0}, 0x1400},    // what follows the end doesn't count
        {{'E', 'N', 'G', 0}, 0x15C7},  // 0x45 - 0x60 in 5 bits is 5
    };
    for (const auto& each : cases) {
        WriteFile file;
        MdhdBox box(file.context(), mediaFields(each.first));
        EXPECT_EQ(written(file, box).slice(40, 2), u16(each.second)) << each.second;
    }
}

TEST(MdhdBoxTest, ReadsVersionOne) {
    ReadFile file(hexTable(kMdhd));
    const MediaHeader media = readAs<MdhdBox>(file)->media();
    EXPECT_EQ(media.creationDate, secondDay());
    EXPECT_EQ(media.modificationDate, tenthSecond());
    EXPECT_EQ(media.timescale, 90000U);
    EXPECT_EQ(media.duration, 0x100000003U);
    EXPECT_EQ(media.language, (Language{'e', 'n', 'g', 0}));
}

Bytes shortMdhd() {
    return fullBox("mdhd", 0, 0, u32(86400), u32(10), u32(48000), u32(9), u16(0x55C4), u16(0));
}

TEST(MdhdBoxTest, ReadsVersionZeroWith32BitTimes) {
    ReadFile file(shortMdhd());
    const MediaHeader media = readAs<MdhdBox>(file)->media();
    EXPECT_EQ(media.timescale, 48000U);
    EXPECT_EQ(media.duration, 9U);
    EXPECT_EQ(media.language, (Language{'u', 'n', 'd', 0}));
}

TEST(MdhdBoxTest, RefusesVersionTwo) {
    ReadFile file(hexTable(kMdhd).patched(8, u8(2)));
    EXPECT_EQ(codeThrownBy([&] { file.read(); }), 1029U);
}

TEST(MdhdBoxTest, NeedsAllItsBytes) {
    EXPECT_EQ(codesWhenCut(hexTable(kMdhd)), codesOfAFullBox(44));
    EXPECT_EQ(codesWhenCut(shortMdhd()), codesOfAFullBox(32));
}

TEST(HdlrBoxTest, WritesTheNameAsGiven) {
    WriteFile file;
    HdlrBox box(file.context(), fourCc("vide"), "Abc");
    EXPECT_EQ(written(file, box), hexTable(R"(
        0   00000023  size 35
        4   68646c72  'hdlr'
        8   00000000  version 0, flags 0
        12  00000000  pre-defined
        16  76696465  'vide'
        20  000000000000000000000000  reserved
        32  416263    name without a terminator
    )"));
    WriteFile terminated;
    HdlrBox other(terminated.context(), fourCc("vide"), std::string_view("Abc\0", 4));
    EXPECT_EQ(written(terminated, other).size(), 36U);
}

TEST(HdlrBoxTest, AddsATerminatorWhenReading) {
    const Bytes head = u32(0) + text("soun") + fill(12, 0);
    const std::pair<Bytes, std::string> cases[] = {
        {text("Abc"), std::string("Abc\0", 4)},
        {text("Abc") + u8(0), std::string("Abc\0", 4)},
        {Bytes(), std::string(1, '\0')},
    };
    for (const auto& each : cases) {
        ReadFile file(fullBox("hdlr", 0, 0, head, each.first));
        const auto read = readAs<HdlrBox>(file);
        EXPECT_EQ(read->handler(), fourCc("soun"));
        EXPECT_EQ(read->name(), each.second);
    }
}

TEST(HdlrBoxTest, NeedsTwentyBytes) {
    EXPECT_EQ(codesWhenCut(fullBox("hdlr", 0, 0, fill(20, 0))), codesOfAFullBox(32));
}

TEST(VmhdBoxTest, WritesZerosAndTheFlagOne) {
    WriteFile file;
    VmhdBox box(file.context());
    EXPECT_EQ(written(file, box), fullBox("vmhd", 0, 1, fill(8, 0)));
}

TEST(VmhdBoxTest, ReadsModeAndColors) {
    ReadFile file(fullBox("vmhd", 0, 1, u16(1), u16(2), u16(3), u16(4)));
    const auto read = readAs<VmhdBox>(file);
    EXPECT_EQ(read->graphicsMode(), 1);
    EXPECT_EQ(read->color(0), 2);
    EXPECT_EQ(read->color(2), 4);
    EXPECT_EQ(codesWhenCut(fullBox("vmhd", 0, 1, fill(8, 0))), codesOfAFullBox(20));
}

TEST(MediaHeaderTest, WritesTheHeadersOfOtherMedia) {
    WriteFile sound;
    SmhdBox smhd(sound.context());
    EXPECT_EQ(written(sound, smhd), fullBox("smhd", 0, 0, fill(4, 0)));
    WriteFile hint;
    HmhdBox hmhd(hint.context());
    EXPECT_EQ(written(hint, hmhd), fullBox("hmhd", 0, 0, fill(16, 0)));
    WriteFile other;
    NmhdBox nmhd(other.context());
    EXPECT_EQ(written(other, nmhd), fullBox("nmhd", 0, 0));
}

TEST(SmhdBoxTest, IsReadWithoutAnyFields) {
    ReadFile file(fullBox("smhd", 0, 0));
    EXPECT_EQ(codeThrownBy([&] { file.read(); }), 0U);
}

TEST(DinfBoxTest, RefersToTheSameFile) {
    WriteFile file;
    DinfBox box(file.context());
    EXPECT_EQ(written(file, box), hexTable(R"(
        0   00000024  size 36
        4   64696e66  'dinf'
        8   0000001c  size 28
        12  64726566  'dref'
        16  00000000  version 0, flags 0
        20  00000001  one entry
        24  0000000c  size 12
        28  75726c20  'url '
        32  00000001  version 0, flags 1: the same file
    )"));
    EXPECT_NE(box.dref(), nullptr);
}

TEST(DrefBoxTest, ReadsItsEntriesAsChildren) {
    ReadFile file(fullBox("dref", 1, 0, u32(2), fullBox("url ", 0, 0, text("x")), box("urn ")));
    const auto read = readAs<DrefBox>(file);
    EXPECT_EQ(read->childCount(), 2U);
    EXPECT_NE(dynamic_cast<UrlBox*>(read->child(0)), nullptr);
}

TEST(DrefBoxTest, RefusesVersionTwoWhenItIsMade) {
    ReadFile file(fullBox("dref", 2, 0, u32(0)));
    EXPECT_EQ(codeThrownBy([&] { file.make(); }), 1029U);
}

TEST(HintBoxTest, ListsTheTracksItRefersTo) {
    WriteFile file;
    TrefBox box(file.context(), std::vector<std::uint32_t>{1, 2});
    EXPECT_EQ(written(file, box), hexTable(R"(
        0   00000018  size 24
        4   74726566  'tref'
        8   00000010  size 16
        12  68696e74  'hint'
        16  00000001  track 1
        20  00000002  track 2
    )"));
    ASSERT_NE(box.hint(), nullptr);
    EXPECT_TRUE(box.hint()->refersTo(2));
    EXPECT_FALSE(box.hint()->refersTo(3));
}

TEST(HintBoxTest, ReadsItsTracks) {
    ReadFile file(box("tref", box("hint", u32(7), u32(1))));
    const auto read = readAs<TrefBox>(file);
    ASSERT_NE(read->hint(), nullptr);
    EXPECT_TRUE(read->hint()->refersTo(7));
    EXPECT_TRUE(read->hint()->refersTo(1));
    EXPECT_EQ(read->hint()->trackIds().size(), 2U);
    EXPECT_TRUE(file.warnings.empty());
}

TEST(HintBoxTest, WarnsOfABodyThatIsNoMultipleOfFour) {
    ReadFile file(box("hint", u32(7), u8(1)));
    EXPECT_EQ(readAs<HintBox>(file)->trackIds().size(), 1U);
    EXPECT_EQ(file.warnings, std::vector<std::uint32_t>{3073});
}

}  // namespace
}  // namespace qlix::kzm::impl
