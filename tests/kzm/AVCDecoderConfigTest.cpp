#include <gtest/gtest.h>

#include "kzm/AVCDecoderConfig.h"
#include "kzm/Exception.h"
#include "support/IsoBuilder.h"

namespace qlix::kzm {
namespace {

using namespace kz::test;

AVCDecoderConfig parse(const Bytes& data) {
    return AVCDecoderConfig::parse(data.data(), data.size());
}

std::uint32_t codeOfParsing(const Bytes& data) {
    try {
        parse(data);
    } catch (const Exception& failure) {
        return failure.code();
    }
    return 0;
}

IsoBox avcC() {
    return box("avcC", raw({1, 0x64, 0x20, 0x1F, 0xFF, 0xE2}), u16(3), raw({7, 1, 2}), u16(1),
               raw({9}), raw({1}), u16(2), raw({8, 3}));
}

TEST(AVCDecoderConfigTest, FindsTheBoxAnywhereInTheData) {
    for (const Bytes& before : {Bytes(), Bytes(box("btrt", fill(12, 0))), text("xyz")}) {
        const AVCDecoderConfig config = parse(before + avcC() + fill(5, 0));
        EXPECT_EQ(config.profile, 0x64);
        EXPECT_EQ(config.compatibility, 0x20);
        EXPECT_EQ(config.level, 0x1F);
        EXPECT_EQ(config.nalLengthSize, 4);
        EXPECT_EQ(config.sequenceParameterSets,
                  (std::vector<AVCDecoderConfig::ParameterSet>{{7, 1, 2}, {9}}));
        EXPECT_EQ(config.pictureParameterSets,
                  (std::vector<AVCDecoderConfig::ParameterSet>{{8, 3}}));
    }
}

TEST(AVCDecoderConfigTest, ThrowsThirtySevenBelowFourBytes) {
    for (std::size_t size = 0; size < 4; ++size) EXPECT_EQ(codeOfParsing(fill(size, 0)), 37U);
}

TEST(AVCDecoderConfigTest, ThrowsFortyOneWithoutTheBox) {
    EXPECT_EQ(codeOfParsing(fill(4, 0)), 41U);
    EXPECT_EQ(codeOfParsing(box("esds", fill(20, 0))), 41U);
    EXPECT_EQ(codeOfParsing(text("avcC") + fill(20, 0)), 41U);  // no size in front of it
    EXPECT_EQ(codeOfParsing(fill(3, 0) + text("avcC") + fill(20, 0)), 41U);
}

TEST(AVCDecoderConfigTest, ThrowsFortyTwoForASizeBeyondTheData) {
    const std::uint32_t size = static_cast<std::uint32_t>(avcC().size());
    EXPECT_EQ(codeOfParsing(avcC().claiming(size)), 0U);
    EXPECT_EQ(codeOfParsing(avcC().claiming(size + 1)), 42U);
    EXPECT_EQ(codeOfParsing(avcC().claiming(0xFFFFFFFF)), 42U);
}

TEST(AVCDecoderConfigTest, ThrowsThirtySevenWhereverTheSetsAreCut) {
    const Bytes whole = avcC().claiming(8);
    for (std::size_t cut = 8; cut < whole.size(); ++cut) {
        EXPECT_EQ(codeOfParsing(whole.cutTo(cut)), 37U) << cut;
    }
}

}  // namespace
}  // namespace qlix::kzm
