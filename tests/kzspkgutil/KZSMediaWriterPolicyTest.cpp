#include <type_traits>

#include <gtest/gtest.h>

#include "Fixtures.h"
#include "WriterHarness.h"
#include "kzm/SampleDescriptor.h"
#include "kzs/base/ByteOrder.h"
#include "kzspkgutil/KZSMediaWriterPolicy.h"

namespace torvo::kzspkgutil {
namespace {

using kz::test::Bytes;
using kz::test::hex;
using kz::test::PackedFragment;
using kzs::fourCc;
using test::avcBox;
using test::esdsBox;
using test::WriterHarness;

constexpr std::uint32_t kHint = 2;
const Timestamp kTime = kzs::milliseconds(40);

TEST(IKZSMediaWriterPolicyTest, IsNotDeletedThroughItsInterface) {
    EXPECT_FALSE(std::has_virtual_destructor_v<IKZSMediaWriterPolicy>);
}

/// A policy that knows the descriptions of `track`, told to it over another file.
class PolicyTest : public testing::Test {
protected:
    void tell(const KZSTrack& track) {
        kz::test::MemoryStream stream;
        qlix::kzm::KZSWriter writer(stream, qlix::kzm::WriterConfiguration(), nullptr);
        if (track.handler == fourCc("vide")) {
            policy_.addVideoTrack(writer, track);
        } else {
            policy_.addAudioTrack(writer, track);
        }
    }

    void writeVideoHeader() {
        policy_.writeVideoHeader(harness_.writer, harness_.hint, harness_.media, kTime, kTime);
    }
    bool writeAudioHeader(bool indexed = false) {
        return policy_.writeAudioHeader(harness_.writer, harness_.hint, harness_.media, kTime,
                                        kTime, indexed);
    }

    /// The tags in the file's only fragment; none when there is no fragment.
    std::vector<Bytes> writtenTags() {
        const kz::test::Segment segment = harness_.finish();
        std::vector<Bytes> tags;
        for (const PackedFragment& fragment : segment.fragments) {
            for (const auto& sample : fragment.samples.at(kHint)) {
                tags.push_back(test::bytesOf(segment, sample));
            }
        }
        return tags;
    }

    RefCountedMemoryArena arena_;
    PackagerContext context_{arena_};
    KZSMediaWriterPolicy policy_{context_};
    WriterHarness harness_{*test::videoTrackOf(fourCc("avc1"), avcBox())};
};

TEST_F(PolicyTest, WritesNoHeaderBeforeItKnowsADescription) {
    writeVideoHeader();
    EXPECT_FALSE(writeAudioHeader());
    EXPECT_TRUE(writtenTags().empty());
}

TEST_F(PolicyTest, WritesTheAvcHeaderOfItsDescription) {
    tell(*test::videoTrackOf(fourCc("avc1"), avcBox()));
    writeVideoHeader();
    EXPECT_EQ(writtenTags(), std::vector<Bytes>{hex("09 00000c 00002800 000000"
                                                    "17 00 000000 01 42 00 1e ff e1 00 00000017")});
}

TEST_F(PolicyTest, WritesNoVideoHeaderForFormatsWithoutOne) {
    tell(*test::videoTrackOf(fourCc("mp4v"), avcBox()));
    writeVideoHeader();
    EXPECT_TRUE(writtenTags().empty());
}

TEST_F(PolicyTest, WritesNoVideoHeaderWithoutAnAvcBox) {
    tell(*test::videoTrackOf(fourCc("avc1"), Bytes()));
    writeVideoHeader();
    EXPECT_TRUE(writtenTags().empty());
}

TEST_F(PolicyTest, WritesTheAacHeaderAndSaysSo) {
    tell(*test::audioTrackOf(fourCc("mp4a"), esdsBox()));
    EXPECT_TRUE(writeAudioHeader(true));
    EXPECT_EQ(writtenTags(),
              std::vector<Bytes>{hex("08 000004 00002800 000000 af 00 12 10 0000000f")});
}

TEST_F(PolicyTest, WritesNoAudioHeaderAndSaysSo) {
    tell(*test::audioTrackOf(fourCc(".mp3"), Bytes()));
    EXPECT_FALSE(writeAudioHeader());
    EXPECT_TRUE(writtenTags().empty());
}

TEST_F(PolicyTest, SaysThatAnAacTrackWithoutTag5HasNoHeader) {
    tell(*test::audioTrackOf(fourCc("mp4a"), esdsBox().patched(32, hex("06"))));
    EXPECT_FALSE(writeAudioHeader());
}

TEST_F(PolicyTest, GoesByTheFirstDescriptionItWasEverToldOf) {
    tell(*test::videoTrackOf(fourCc("avc1"), hex("00000009 61766343 aa")));
    tell(*test::videoTrackOf(fourCc("avc1"), avcBox()));
    tell(*test::audioTrackOf(fourCc(".mp3"), Bytes()));
    tell(*test::audioTrackOf(fourCc("mp4a"), esdsBox()));
    writeVideoHeader();
    EXPECT_FALSE(writeAudioHeader());
    const std::vector<Bytes> tags = writtenTags();
    ASSERT_EQ(tags.size(), 1U);
    EXPECT_EQ(tags.front().slice(16, 1), hex("aa"));
}

TEST_F(PolicyTest, AddsADescriptionForEachOfATrack) {
    const auto track = test::videoTrackOf(fourCc("H263"), Bytes());
    track->descriptors.push_back(track->descriptors.front());
    track->descriptionCount = 2;
    kz::test::MemoryStream stream;
    qlix::kzm::KZSWriter writer(stream, qlix::kzm::WriterConfiguration(), nullptr);
    policy_.addVideoTrack(writer, *track);
    // The count of entries stands behind the box header and the version.
    EXPECT_EQ(test::boxIn(stream.content, "stsd").slice(12, 4), hex("00000002"));
}

TEST_F(PolicyTest, LeavesRoomInADataTrackWithoutACount) {
    const auto track = test::dataTrackOf(fourCc("amf0"), hex("0102030405060708"));
    track->descriptionCount = 0;
    kz::test::MemoryStream stream;
    qlix::kzm::KZSWriter writer(stream, qlix::kzm::WriterConfiguration(), nullptr);
    policy_.addDataTrack(writer, *track);
    // Ten entries of 16 bytes, each with the 8 of the largest description.
    EXPECT_EQ(test::boxIn(stream.content, "stsd").size(), 16U + 10 * (16 + 8));
}

TEST_F(PolicyTest, RemembersDescriptionsThatItReadsFromAFile) {
    qlix::kzm::VideoSampleDescriptor video;
    video.handler = fourCc("vide");
    video.format = fourCc("avc1");
    video.data = avcBox();
    EXPECT_EQ(policy_.readVideoDescriptor(video)->extraData, avcBox());

    qlix::kzm::AudioSampleDescriptor audio;
    audio.handler = fourCc("soun");
    audio.format = fourCc("mp4a");
    audio.data = esdsBox();
    EXPECT_EQ(policy_.readAudioDescriptor(audio)->format, fourCc("mp4a"));

    writeVideoHeader();
    EXPECT_TRUE(writeAudioHeader());
    EXPECT_EQ(writtenTags().size(), 2U);
}

TEST_F(PolicyTest, ForgetsDescriptionsWithoutData) {
    qlix::kzm::AudioSampleDescriptor bare;
    bare.handler = fourCc("soun");
    bare.format = fourCc("mp4a");
    policy_.readAudioDescriptor(bare);
    tell(*test::audioTrackOf(fourCc("mp4a"), esdsBox()));
    EXPECT_TRUE(writeAudioHeader());
}

TEST_F(PolicyTest, ReadsDataDescriptions) {
    const qlix::kzm::SampleDescriptor stored(fourCc("meta"), fourCc("amf0"));
    EXPECT_EQ(policy_.readDataDescriptor(stored)->info->handler, fourCc("meta"));
}

}  // namespace
}  // namespace torvo::kzspkgutil
