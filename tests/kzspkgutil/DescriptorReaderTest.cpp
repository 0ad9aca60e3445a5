#include <gtest/gtest.h>

#include "kzs/base/ByteOrder.h"
#include "kzspkgutil/DescriptorReader.h"
#include "support/Bytes.h"

namespace torvo::kzspkgutil {
namespace {

using kzs::fourCc;

TEST(ReadDescriptorTest, CopiesTheFactsOfVideo) {
    qlix::kzm::VideoSampleDescriptor stored;
    stored.handler = fourCc("vide");
    stored.format = fourCc("avc1");
    stored.data = kz::test::pattern(20, 1);
    stored.width = 1920;
    stored.height = 1080;
    stored.horizontalResolution = 72.0F;
    stored.verticalResolution = 96.0F;
    stored.frameCount = 1;
    stored.depth = 24;

    const auto descriptor = readDescriptor(stored);
    EXPECT_EQ(descriptor->format, fourCc("avc1"));
    EXPECT_EQ(descriptor->extraData, kz::test::pattern(20, 1));
    EXPECT_TRUE(descriptor->protectionData.empty());
    const auto& info = dynamic_cast<const VideoSampleDescInfo&>(*descriptor->info);
    EXPECT_EQ(info.format, fourCc("avc1"));
    EXPECT_EQ(info.handler, fourCc("vide"));
    EXPECT_EQ(info.extraDataSize, 20U);
    EXPECT_EQ(info.width, 1920U);
    EXPECT_EQ(info.height, 1080U);
    EXPECT_EQ(info.horizontalResolution, 72.0F);
    EXPECT_EQ(info.verticalResolution, 96.0F);
    EXPECT_EQ(info.frameCount, 1);
    EXPECT_EQ(info.depth, 24);
}

TEST(ReadDescriptorTest, CopiesTheFactsOfAudio) {
    qlix::kzm::AudioSampleDescriptor stored;
    stored.handler = fourCc("soun");
    stored.format = fourCc("mp4a");
    stored.sampleRate = 44100.0F;
    stored.channelCount = 2;
    stored.sampleSize = 16;

    const auto descriptor = readDescriptor(stored);
    EXPECT_TRUE(descriptor->extraData.empty());
    const auto& info = dynamic_cast<const AudioSampleDescInfo&>(*descriptor->info);
    EXPECT_EQ(info.format, fourCc("mp4a"));
    EXPECT_EQ(info.handler, fourCc("soun"));
    EXPECT_EQ(info.extraDataSize, 0U);
    EXPECT_EQ(info.sampleRate, 44100.0F);
    EXPECT_EQ(info.channelCount, 2U);
    EXPECT_EQ(info.sampleSize, 16U);
}

TEST(ReadDescriptorTest, KeepsTheHandlerOfAnythingElse) {
    qlix::kzm::SampleDescriptor stored(fourCc("meta"), fourCc("amf0"));
    stored.data = {1, 2};
    const auto descriptor = readDescriptor(stored);
    EXPECT_EQ(descriptor->info->handler, fourCc("meta"));
    EXPECT_EQ(descriptor->info->format, fourCc("amf0"));
    EXPECT_EQ(descriptor->info->extraDataSize, 2U);
    EXPECT_EQ(dynamic_cast<const VideoSampleDescInfo*>(descriptor->info.get()), nullptr);
    EXPECT_EQ(dynamic_cast<const AudioSampleDescInfo*>(descriptor->info.get()), nullptr);
}

}  // namespace
}  // namespace torvo::kzspkgutil
