#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "kzspkgutil/FLVFile.h"
#include "kzspkgutil/FLVSampleIterator.h"
#include "support/AmfBuilder.h"

namespace torvo::kzspkgutil {
namespace {

using ::testing::ElementsAre;
using namespace kz::test;

/// A source of tags and a pass over it.
class Pass {
public:
    explicit Pass(const std::vector<FlvTag>& tags)
        : file_(tags), source_(file_.open()), samples(source_->getSampleIterator()) {}

    std::vector<std::uint64_t> times() const {
        std::vector<std::uint64_t> out;
        while (samples->hasNext()) out.push_back(samples->next().time.value);
        return out;
    }

private:
    FLVFile file_;
    std::unique_ptr<FLVMediaSource> source_;

public:
    const boost::shared_ptr<ISampleIterator> samples;
};

kzs::FragmenterSample sampleOf(const FlvTag& tag) {
    const Pass pass({tag});
    return pass.samples->next();
}

TCMessage messageOf(const FlvTag& tag) {
    const Pass pass({tag});
    pass.samples->next();
    return pass.samples->currentMessage();
}

Bytes imageOf(const TCMessage& message) { return bytesOf(message.getTag(), message.getTagSize()); }

TEST(FLVSampleIteratorTest, TellsKindTimeAndKeyFrames) {
    const kzs::FragmenterSample key = sampleOf(avcFrame(40, true, raw({1})));
    EXPECT_EQ(key.trackKind, 1U);
    EXPECT_EQ(key.time, kzs::milliseconds(40));
    EXPECT_EQ(key.time.timescale, 1000U);
    EXPECT_TRUE(key.isKeyFrame);
    EXPECT_FALSE(key.isSkipped);
    EXPECT_FALSE(sampleOf(avcFrame(40, false, raw({1}))).isKeyFrame);
    const kzs::FragmenterSample audio = sampleOf(audioTag(7, 1, raw({1})));
    EXPECT_EQ(audio.trackKind, 0U);
    EXPECT_FALSE(audio.isKeyFrame);
}

TEST(FLVSampleIteratorTest, HeadersAndEndsOfSequencesCountAsKeyFrames) {
    EXPECT_TRUE(sampleOf(avcConfig(0)).isKeyFrame);
    EXPECT_TRUE(sampleOf(avcEnd(0)).isKeyFrame);
}

TEST(FLVSampleIteratorTest, ATagWithoutABodyIsSkipped) {
    for (int type : {8, 9}) {
        const kzs::FragmenterSample sample = sampleOf(flvTag(type, 5, Bytes()));
        EXPECT_TRUE(sample.isSkipped);
        EXPECT_FALSE(sample.isKeyFrame);
        EXPECT_EQ(sample.time.value, 5U);
    }
}

TEST(FLVSampleIteratorTest, TimesFromTwoToTheThirtyFirstAreNegative) {
    const FlvTag tag = mp3Frame(0x80000000, raw({1, 2}));
    EXPECT_EQ(sampleOf(tag).time.value, 0xffffffff80000000U);
    const TCMessage message = messageOf(tag);
    EXPECT_EQ(message.getMessageTime().value, 0xffffffff80000000U);
    EXPECT_EQ(imageOf(message), tag.image());
}

TEST(FLVSampleIteratorTest, ScriptTagsAreNoSamples) {
    EXPECT_THAT(Pass({onMetaDataTag(1, 1), mp3Frame(0, raw({1})), scriptTag(5, amfString("x")),
                      mp3Frame(26, raw({1}))})
                    .times(),
                ElementsAre(0, 26));
}

TEST(FLVSampleIteratorTest, AudioAndVideoComeInTheOrderOfTheirTimes) {
    EXPECT_THAT(
        Pass({avcFrame(0, true, raw({1})), avcFrame(40, false, raw({1})), mp3Frame(0, raw({1})),
              mp3Frame(26, raw({1})), mp3Frame(52, raw({1})), avcEnd(40)})
            .times(),
        ElementsAre(0, 0, 26, 40, 40, 52));
}

TEST(FLVSampleIteratorTest, AMessageIsTheTagWithItsSizeWord) {
    FlvTag tag = avcFrame(0x12345678, false, pattern(100, 4), -40);
    tag.streamId = 0x0a0b0c;
    const TCMessage message = messageOf(tag.claimingTag(99));
    EXPECT_EQ(message.getTagSize(), 120U);
    EXPECT_EQ(message.getBlock()->size(), 120U);
    // The size word is made anew, whatever the file says; the stream id stays as stored.
    EXPECT_EQ(difference(imageOf(message), tag.image()), "");
    EXPECT_EQ(bytesOf(message.getTag() + 4, 4), raw({0x34, 0x56, 0x78, 0x12}));
    EXPECT_EQ(message.getSampleTime(), kzs::milliseconds(0x12345678));
    EXPECT_EQ(message.getMessageTime(), kzs::milliseconds(0x12345678));
    EXPECT_EQ(message.getSampleDataOffset(), 16U);
    EXPECT_EQ(message.getSampleDataSize(), 100U);
}

TEST(FLVSampleIteratorTest, SampleDataBeginsBehindTheHeaderOfTheCodec) {
    struct Case {
        FlvTag tag;
        std::uint32_t offset;
    };
    const Bytes data = pattern(20, 1);
    for (const Case& c :
         {Case{aacFrame(0, data), 13}, Case{mp3Frame(0, data), 12}, Case{speexFrame(0, data), 12},
          Case{nellymoserFrame(0, data), 12}, Case{audioTag(0, 3, data), 12},
          Case{audioTag(0, 12, data), 11}, Case{audioTag(0, 7, data), 11},
          Case{h263Frame(0, true, data), 12}, Case{vp6Frame(0, true, data), 13},
          Case{videoTag(0, 1, 5, data), 13}, Case{avcFrame(0, true, data), 16},
          Case{videoTag(0, 1, 1, data), 11}, Case{videoTag(0, 1, 3, data), 11}}) {
        const TCMessage message = messageOf(c.tag);
        EXPECT_EQ(message.getSampleDataOffset(), c.offset);
        EXPECT_EQ(message.getSampleDataSize(), c.tag.body.size() + 11 - c.offset);
    }
}

TEST(FLVSampleIteratorTest, ABodyShorterThanItsCodecHeaderHasNoSampleData) {
    for (const FlvTag& tag : {flvTag(9, 0, raw({0x17, 0, 0, 0})), flvTag(9, 0, raw({0x17})),
                              flvTag(9, 0, raw({0x14})), flvTag(8, 0, raw({0xaf}))}) {
        const TCMessage message = messageOf(tag);
        EXPECT_EQ(message.getSampleDataSize(), 0U);
        EXPECT_EQ(message.getSampleDataOffset(), 11U + tag.body.size());
    }
}

TEST(FLVSampleIteratorTest, AnEndOfSequenceTagHasNoSampleData) {
    const TCMessage message = messageOf(avcEnd(40));
    EXPECT_EQ(message.getSampleDataSize(), 0U);
    EXPECT_EQ(message.getTagSize(), 20U);
}

TEST(FLVSampleIteratorTest, AMessageOfATagWithoutBodyIsTheBareHeader) {
    const FlvTag tag = flvTag(8, 5, Bytes());
    const TCMessage message = messageOf(tag);
    EXPECT_EQ(imageOf(message), tag.image());
    EXPECT_EQ(message.getTagBodySize(), 0U);
}

TEST(FLVSampleIteratorTest, TheLargestBodyOfATagIsAMessageToo) {
    const FlvTag tag = h263Frame(0, true, pattern(0xffffff - 1, 3));
    const TCMessage message = messageOf(tag);
    EXPECT_EQ(difference(imageOf(message), tag.image()), "");
}

}  // namespace
}  // namespace torvo::kzspkgutil
