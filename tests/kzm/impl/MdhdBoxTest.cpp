#include <utility>

#include <gtest/gtest.h>

#include "kzm/impl/BoxSupport.h"
#include "kzm/impl/HeaderDates.h"
#include "kzm/impl/MdhdBox.h"

namespace qlix::kzm::impl {
namespace {

using namespace kz::test;

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

}  // namespace
}  // namespace qlix::kzm::impl
