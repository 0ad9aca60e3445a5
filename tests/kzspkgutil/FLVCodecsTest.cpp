#include <gtest/gtest.h>

#include "kzs/base/ByteOrder.h"
#include "kzspkgutil/FLVCodecs.h"

namespace torvo::kzspkgutil {
namespace {

using kzs::fourCc;

TEST(FLVCodecsTest, DescribesVideoByItsCodecId) {
    struct Case {
        std::uint32_t codecId;
        std::uint32_t format;
        std::uint32_t header;
    };
    for (const Case& c :
         {Case{0, 0, 0}, Case{1, fourCc("jpeg"), 0}, Case{2, fourCc("H263"), 1}, Case{3, 0, 0},
          Case{4, fourCc("VP6F"), 2}, Case{5, fourCc("VP6A"), 2}, Case{6, 0, 0},
          Case{7, fourCc("avc1"), 5}, Case{8, 0, 0}, Case{12, 0, 0}, Case{15, 0, 0}}) {
        EXPECT_EQ(flvVideoFormat(c.codecId), c.format) << c.codecId;
        EXPECT_EQ(flvVideoHeaderLength(c.codecId), c.header) << c.codecId;
    }
}

TEST(FLVCodecsTest, DescribesAudioByItsSoundFormat) {
    struct Case {
        std::uint32_t soundFormat;
        std::uint32_t format;
        std::uint32_t header;
    };
    for (const Case& c :
         {Case{2, fourCc(".mp3"), 1}, Case{14, fourCc(".mp3"), 1}, Case{4, fourCc("nmos"), 1},
          Case{5, fourCc("nmos"), 1}, Case{6, fourCc("nmos"), 1}, Case{7, 0, 0}, Case{8, 0, 0},
          Case{9, 0, 0}, Case{10, fourCc("mp4a"), 2}, Case{11, fourCc("spex"), 1}, Case{13, 0, 0},
          Case{15, 0, 0}}) {
        EXPECT_EQ(flvAudioFormat(c.soundFormat), c.format) << c.soundFormat;
        EXPECT_EQ(flvAudioHeaderLength(c.soundFormat), c.header) << c.soundFormat;
    }
}

TEST(FLVCodecsTest, DescribesPlainSoundAsMP3) {
    for (std::uint32_t soundFormat : {0U, 1U, 3U}) {
        EXPECT_EQ(flvAudioFormat(soundFormat), fourCc(".mp3"));
        EXPECT_EQ(flvAudioHeaderLength(soundFormat), 1U);
    }
}

TEST(FLVCodecsTest, LeavesTheHeaderByteOfOpusInTheSample) {
    EXPECT_EQ(flvAudioFormat(12), fourCc("opus"));
    EXPECT_EQ(flvAudioHeaderLength(12), 0U);
}

}  // namespace
}  // namespace torvo::kzspkgutil
