#include <algorithm>
#include <typeinfo>

#include <gtest/gtest.h>

#include "Fixtures.h"
#include "ProtectionFixture.h"
#include "WriterHarness.h"
#include "kzm/SampleDescriptor.h"
#include "kzs/base/ByteOrder.h"
#include "kzspkgutil/EncryptedKZSMediaWriterPolicy.h"
#include "kzspkgutil/KZSMediaWriter.h"
#include "kzspkgutil/MessageEncryptor.h"
#include "kzspkgutil/ProtectionBox.h"

namespace torvo::kzspkgutil {
namespace {

using kz::test::aacConfig;
using kz::test::aacFrame;
using kz::test::avcConfig;
using kz::test::avcFrame;
using kz::test::Bytes;
using kz::test::hex;
using kz::test::pattern;
using kz::test::raw;
using kz::test::Segment;
using kz::test::text;
using kz::test::vp6Frame;
using kzs::fourCc;
using test::avcBox;
using test::esdsBox;
using test::messageOf;

class EncryptedPolicyTest : public testing::Test {
protected:
    EncryptedKZSMediaWriterPolicy& policy() {
        if (policy_ == nullptr) policy_ = makeEncryptedPolicy(context, encryption);
        return *policy_;
    }
    /// Writes the messages into one fragment of a file with these tracks.
    Segment write(std::vector<boost::shared_ptr<KZSTrack>> tracks, const MessageList& messages) {
        for (const auto& track : tracks) {
            // Room for what the run knows to be the largest description.
            track->descriptionCount = 1;
        }
        test::FixedSource source(std::move(tracks));
        kz::test::MemoryStream stream;
        {
            KZSMediaWriter writer(context, policy(), source, stream);
            const Bytes bootstrap = raw({1, 2, 3});
            writer.writeUpTo(MessageList(messages), kzs::milliseconds(100000), bootstrap.data(),
                             bootstrap.size());
            writer.finishWriter();
        }
        return kz::test::readSegment(stream.content);
    }
    /// The tags of the hint track, which comes last.
    static std::vector<Bytes> tagsOf(const Segment& segment) {
        std::vector<Bytes> tags;
        for (const auto& sample : segment.fragments.at(0).samples.at(segment.track("hint")->id)) {
            tags.push_back(test::bytesOf(segment, sample));
        }
        return tags;
    }
    static std::vector<int> typesOf(const std::vector<Bytes>& tags) {
        std::vector<int> types;
        for (const Bytes& tag : tags) types.push_back(tag.at(0));
        return types;
    }
    static Bytes decrypted(const Bytes& tag, std::size_t headerSize) {
        const std::size_t iv = 11 + headerSize + 8;
        return kz::test::decryptSample(tag.slice(iv + 16, tag.size() - iv - 16 - 4),
                                       test::contentKey(), tag.slice(iv, 16));
    }

    RefCountedMemoryArena arena;
    PackagerContext context{arena};
    test::FixedEncryptorContext encryption;
    std::shared_ptr<EncryptedKZSMediaWriterPolicy> policy_;
};

TEST_F(EncryptedPolicyTest, HeaderOfTheDescriptionStaysClearInFrontOfAnEncryptedKeyFrame) {
    const Bytes data = pattern(40, 1);
    const Segment segment =
        write({test::videoTrackOf(fourCc("avc1"), avcBox())},
              {messageOf(avcFrame(0, true, data), 5), messageOf(avcFrame(40, false, data), 5)});
    const std::vector<Bytes> tags = tagsOf(segment);
    ASSERT_EQ(typesOf(tags), (std::vector<int>{9, 41, 41}));
    EXPECT_EQ(tags[0].slice(11, 2), hex("1700"));
    EXPECT_EQ(tags[1].slice(11, 5), hex("1701000000"));
    EXPECT_EQ(decrypted(tags[1], 5), data);
    EXPECT_EQ(decrypted(tags[2], 5), data);
    EXPECT_NE(tags[1].slice(24, 16), tags[2].slice(24, 16));
}

// The media sample is the range of the tag that the hint track names: flag, IV and ciphertext.
TEST_F(EncryptedPolicyTest, MediaSamplesCoverTheInitialisationVector) {
    const Segment segment = write({test::videoTrackOf(fourCc("avc1"), avcBox())},
                                  {messageOf(avcFrame(0, true, pattern(40, 1)), 5)});
    const auto& media = segment.fragments.at(0).samples.at(segment.track("vide")->id);
    ASSERT_EQ(media.size(), 1U);
    EXPECT_EQ(media[0].size, 1U + 16 + 48);
    EXPECT_EQ(test::bytesOf(segment, media[0]), tagsOf(segment).at(1).slice(23, 65));
}

TEST_F(EncryptedPolicyTest, SequenceHeaderTagsOfTheInputStayClear) {
    const auto video = test::videoTrackOf(fourCc("avc1"), Bytes());
    const auto audio = test::audioTrackOf(fourCc("mp4a"), Bytes());
    const Segment segment =
        write({video, audio}, {messageOf(avcConfig(0), 5), messageOf(aacConfig(0), 2),
                               messageOf(avcFrame(0, true, pattern(9, 1)), 5),
                               messageOf(aacFrame(0, pattern(9, 2)), 2)});
    const std::vector<Bytes> tags = tagsOf(segment);
    ASSERT_EQ(typesOf(tags), (std::vector<int>{9, 8, 41, 40}));
    EXPECT_EQ(tags[0], avcConfig(0).image());
    EXPECT_EQ(tags[1], aacConfig(0).image());
    EXPECT_EQ(decrypted(tags[3], 2), pattern(9, 2));
}

TEST_F(EncryptedPolicyTest, AudioHeaderComesFromTheClearDescription) {
    const Segment segment = write({test::audioTrackOf(fourCc("mp4a"), esdsBox())},
                                  {messageOf(aacFrame(0, pattern(9, 2)), 2)});
    const std::vector<Bytes> tags = tagsOf(segment);
    ASSERT_EQ(typesOf(tags), (std::vector<int>{8, 40}));
    EXPECT_EQ(tags[0].slice(11, 4), hex("af00 1210"));
}

TEST_F(EncryptedPolicyTest, EncryptedAudioWithoutHeadersIsIndexedOnceASecond) {
    const Segment segment = write(
        {test::audioTrackOf(fourCc(".mp3"), Bytes())},
        {messageOf(mp3Frame(0, pattern(9, 2)), 1), messageOf(mp3Frame(26, pattern(9, 2)), 1),
         messageOf(mp3Frame(1026, pattern(9, 2)), 1), messageOf(mp3Frame(1052, pattern(9, 2)), 1)});
    EXPECT_EQ(typesOf(tagsOf(segment)), (std::vector<int>{40, 40, 40, 40}));
    const auto& rows = segment.fragments.at(0).afra.local;
    ASSERT_EQ(rows.size(), 1U);
    EXPECT_EQ(rows[0].time, 1026U);
}

TEST_F(EncryptedPolicyTest, GoesByTheFirstDescriptionsItWasEverToldOf) {
    write({test::videoTrackOf(fourCc("avc1"), hex("00000009 61766343 aa")),
           test::audioTrackOf(fourCc(".mp3"), Bytes())},
          {messageOf(avcFrame(0, true, pattern(9, 1)), 5)});
    const Segment second = write(
        {test::videoTrackOf(fourCc("avc1"), avcBox()),
         test::audioTrackOf(fourCc("mp4a"), esdsBox())},
        {messageOf(avcFrame(0, true, pattern(9, 1)), 5), messageOf(aacFrame(0, pattern(9, 2)), 2)});
    const std::vector<Bytes> tags = tagsOf(second);
    ASSERT_EQ(typesOf(tags), (std::vector<int>{9, 41, 40}));  // MP3 has no header
    EXPECT_EQ(tags[0].slice(11, 6), hex("1700000000 aa"));
}

TEST_F(EncryptedPolicyTest, Vp6KeepsItsIndexEntryOnTheEncryptedKeyFrame) {
    const Segment segment = write({test::videoTrackOf(fourCc("VP6F"), Bytes())},
                                  {messageOf(vp6Frame(0, true, pattern(9, 2), 0x5a), 2)});
    const std::vector<Bytes> tags = tagsOf(segment);
    ASSERT_EQ(typesOf(tags), std::vector<int>{41});
    EXPECT_EQ(decrypted(tags[0], 1), raw({0x5a}) + pattern(9, 2));
    EXPECT_EQ(segment.fragments.at(0).afra.local.size(), 1U);
}

TEST_F(EncryptedPolicyTest, DescriptionsArePutUnderTheirProtectedFormats) {
    const Segment segment = write({test::videoTrackOf(fourCc("avc1"), avcBox()),
                                   test::audioTrackOf(fourCc("mp4a"), esdsBox()),
                                   test::dataTrackOf(fourCc("amf0"), raw({1, 2, 3}))},
                                  {messageOf(avcFrame(0, true, pattern(9, 2)), 5)});
    EXPECT_EQ(segment.track("vide")->descriptionFormats, std::vector<std::string>{"encv"});
    EXPECT_EQ(segment.track("soun")->descriptionFormats, std::vector<std::string>{"enca"});
    const auto holds = [](const kz::test::PackedTrack& track, const Bytes& part) {
        return std::search(track.descriptions.begin(), track.descriptions.end(), part.begin(),
                           part.end()) != track.descriptions.end();
    };
    const auto sinf = [&](const char(&format)[5]) {
        const Blob box = policy().makeProtectionBox(fourCc(format));
        return kz::test::bytesOf(box.data(), box.size());
    };
    EXPECT_TRUE(holds(*segment.track("vide"), avcBox() + sinf("avc1")));
    EXPECT_TRUE(holds(*segment.track("soun"), esdsBox() + sinf("mp4a")));
    EXPECT_EQ(segment.track("meta")->descriptionFormats.at(0), "encr");
    // The extra data of a data track isn't carried.
    EXPECT_TRUE(
        holds(*segment.track("meta"), text("encr") + hex("000000000000 0001") + sinf("amf0")));
}

// The data form of a track: room for ten descriptions where no count is known.
TEST_F(EncryptedPolicyTest, ADataTrackWithoutACountHasRoomForTenDescriptions) {
    const auto sizeWithCount = [&](std::uint32_t count) {
        const auto track = test::dataTrackOf(fourCc("amf0"), Bytes());
        track->descriptionCount = count;
        test::FixedSource source({track});
        kz::test::MemoryStream stream;
        { KZSMediaWriter writer(context, policy(), source, stream); }
        return kz::test::readSegment(stream.content).track("meta")->descriptions.size();
    };
    EXPECT_EQ(sizeWithCount(0), sizeWithCount(10));
    EXPECT_LT(sizeWithCount(1), sizeWithCount(10));
}

TEST_F(EncryptedPolicyTest, IsAvcIsFalseForEverySample) {
    kz::test::MemoryStream stream;
    qlix::kzm::KZSWriter writer(stream, qlix::kzm::WriterConfiguration(), nullptr);
    policy().addVideoTrack(writer, *test::videoTrackOf(fourCc("avc1"), avcBox()));
    EXPECT_FALSE(policy().isAvc(kVideoTrackClass));
    EXPECT_FALSE(policy().isAvc(kAudioTrackClass));
}

// A description that was protected before carries its clear form; what a list has for its first
// entry is asked about AVC, so one that is called avc1 shows that the test does look.
TEST_F(EncryptedPolicyTest, IsAvcAsksTheProtectedFormat) {
    const Blob sinf = policy().makeProtectionBox(fourCc("mp4v"));
    qlix::kzm::VideoSampleDescriptor description;
    description.handler = fourCc("vide");
    description.format = fourCc("avc1");
    description.data = sinf;
    policy().readVideoDescriptor(description);
    EXPECT_TRUE(policy().isAvc(kVideoTrackClass));
    EXPECT_FALSE(policy().isAvc(kAudioTrackClass));
}

TEST_F(EncryptedPolicyTest, NoHeaderIsWrittenBeforeADescriptionIsKnown) {
    test::WriterHarness harness(*test::videoTrackOf(fourCc("avc1"), avcBox()));
    const Timestamp time = kzs::milliseconds(0);
    policy().writeVideoHeader(harness.writer, harness.hint, harness.media, time, time);
    EXPECT_FALSE(
        policy().writeAudioHeader(harness.writer, harness.hint, harness.media, time, time, true));
    EXPECT_TRUE(harness.finish().fragments.empty());
}

TEST_F(EncryptedPolicyTest, ReadsProtectedDescriptions) {
    const Bytes avcC = avcBox();
    const Blob sinf = policy().makeProtectionBox(fourCc("avc1"));
    qlix::kzm::VideoSampleDescriptor description;
    description.handler = fourCc("vide");
    description.format = fourCc("encv");
    description.width = 320;
    description.data = avcC;
    description.data.insert(description.data.end(), sinf.begin(), sinf.end());
    const auto descriptor = policy().readVideoDescriptor(description);
    EXPECT_EQ(descriptor->format, fourCc("avc1"));
    EXPECT_EQ(descriptor->info->format, fourCc("avc1"));
    EXPECT_EQ(descriptor->extraData, Blob(avcC));
    EXPECT_EQ(descriptor->protectionData, sinf);
    EXPECT_EQ(dynamic_cast<const VideoSampleDescInfo&>(*descriptor->info).width, 320U);

    description.data = avcC;
    try {
        policy().readDataDescriptor(description);
        FAIL();
    } catch (const std::exception& failure) {
        EXPECT_EQ(typeid(failure), typeid(std::exception));
    }
}

TEST_F(EncryptedPolicyTest, ADescriptionThatWasReadGivesTheHeaders) {
    const Blob sinf = policy().makeProtectionBox(fourCc("mp4a"));
    qlix::kzm::AudioSampleDescriptor description;
    description.handler = fourCc("soun");
    description.format = fourCc("enca");
    description.data = esdsBox();
    description.data.insert(description.data.end(), sinf.begin(), sinf.end());
    policy().readAudioDescriptor(description);
    test::WriterHarness harness(*test::audioTrackOf(fourCc("mp4a"), esdsBox()));
    const Timestamp time = kzs::milliseconds(0);
    EXPECT_TRUE(
        policy().writeAudioHeader(harness.writer, harness.hint, harness.media, time, time, false));
}

}  // namespace
}  // namespace torvo::kzspkgutil
