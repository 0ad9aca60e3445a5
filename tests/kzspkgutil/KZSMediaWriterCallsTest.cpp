#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Fixtures.h"
#include "WriterHarness.h"
#include "kzs/base/ByteOrder.h"
#include "kzspkgutil/KZSMediaWriter.h"
#include "kzspkgutil/KZSMediaWriterPolicy.h"

namespace torvo::kzspkgutil {
namespace {

using kz::test::aacFrame;
using kz::test::avcFrame;
using kz::test::Bytes;
using kz::test::FlvTag;
using kz::test::flvTag;
using kz::test::mp3Frame;
using kz::test::raw;
using kzs::fourCc;
using qlix::kzm::KZSWriter;
using qlix::kzm::TrackHandle;
using test::avcBox;
using test::esdsBox;
using test::messageOf;

using Calls = std::vector<std::string>;

/// Writes like the clear policy, and lists the calls: "audio 26", with " indexed" behind it, and
/// "header" in front for the sequence headers.
class RecordingPolicy final : public IKZSMediaWriterPolicy {
public:
    explicit RecordingPolicy(IPackagerContext& context) : inner_(context) {}

    TrackHandle addVideoTrack(KZSWriter& writer, const KZSTrack& track) override {
        return inner_.addVideoTrack(writer, track);
    }
    TrackHandle addAudioTrack(KZSWriter& writer, const KZSTrack& track) override {
        return inner_.addAudioTrack(writer, track);
    }
    TrackHandle addDataTrack(KZSWriter& writer, const KZSTrack& track) override {
        return inner_.addDataTrack(writer, track);
    }
    void writeAudioMessage(KZSWriter& writer, const TrackHandle& hint, const TrackHandle& audio,
                           const TCMessage& message, bool indexed) override {
        add("audio", message.getSampleTime(), indexed);
        inner_.writeAudioMessage(writer, hint, audio, message, indexed);
    }
    void writeVideoMessage(KZSWriter& writer, const TrackHandle& hint, const TrackHandle& video,
                           const TCMessage& message) override {
        add("video", message.getSampleTime(), false);
        inner_.writeVideoMessage(writer, hint, video, message);
    }
    void writeDataMessage(KZSWriter& writer, const TrackHandle& hint, const TrackHandle& data,
                          const TCMessage& message) override {
        add("data", message.getSampleTime(), false);
        inner_.writeDataMessage(writer, hint, data, message);
    }
    void writeVideoHeader(KZSWriter& writer, const TrackHandle& hint, const TrackHandle& video,
                          const Timestamp& sampleTime, const Timestamp& messageTime) override {
        add("header video", sampleTime, false);
        messageTimes.push_back(messageTime.value);
        inner_.writeVideoHeader(writer, hint, video, sampleTime, messageTime);
    }
    bool writeAudioHeader(KZSWriter& writer, const TrackHandle& hint, const TrackHandle& audio,
                          const Timestamp& sampleTime, const Timestamp& messageTime,
                          bool indexed) override {
        add("header audio", sampleTime, indexed);
        messageTimes.push_back(messageTime.value);
        return inner_.writeAudioHeader(writer, hint, audio, sampleTime, messageTime, indexed);
    }
    boost::shared_ptr<KZSSampleDescriptor> readVideoDescriptor(
        const qlix::kzm::SampleDescriptor& description) override {
        return inner_.readVideoDescriptor(description);
    }
    boost::shared_ptr<KZSSampleDescriptor> readAudioDescriptor(
        const qlix::kzm::SampleDescriptor& description) override {
        return inner_.readAudioDescriptor(description);
    }
    boost::shared_ptr<KZSSampleDescriptor> readDataDescriptor(
        const qlix::kzm::SampleDescriptor& description) override {
        return inner_.readDataDescriptor(description);
    }

    Calls calls;
    std::vector<std::uint64_t> messageTimes;  ///< of the headers

private:
    void add(const std::string& what, const Timestamp& time, bool indexed) {
        calls.push_back(what + " " + std::to_string(time.value) + (indexed ? " indexed" : ""));
    }

    KZSMediaWriterPolicy inner_;
};

class CallsTest : public testing::Test {
protected:
    void open(std::vector<boost::shared_ptr<KZSTrack>> tracks) {
        const test::FixedSource source(std::move(tracks));
        writer_ = std::make_unique<KZSMediaWriter>(context_, policy_, source, stream_);
    }

    /// The calls that one writeUpTo of the messages makes.
    Calls write(const MessageList& messages) {
        policy_.calls.clear();
        const Bytes bootstrap = raw({1});
        writer_->writeUpTo(MessageList(messages), kzs::milliseconds(1000000), bootstrap.data(),
                           bootstrap.size());
        return policy_.calls;
    }

    static TCMessage aac(std::uint32_t timeMs) { return messageOf(aacFrame(timeMs, raw({1})), 2); }
    static TCMessage mp3(std::uint32_t timeMs) { return messageOf(mp3Frame(timeMs, raw({1})), 1); }
    static TCMessage avc(std::uint32_t timeMs, bool isKey) {
        return messageOf(avcFrame(timeMs, isKey, raw({1})), 5);
    }

    RefCountedMemoryArena arena_;
    PackagerContext context_{arena_};
    RecordingPolicy policy_{context_};
    kz::test::MemoryStream stream_;
    std::unique_ptr<KZSMediaWriter> writer_;
};

TEST_F(CallsTest, PutBothHeadersInFrontOfEachKeyFrame) {
    open({test::videoTrackOf(fourCc("avc1"), avcBox()),
          test::audioTrackOf(fourCc("mp4a"), esdsBox())});
    EXPECT_EQ(write({avc(0, true), avc(40, false), avc(80, true)}),
              (Calls{"header video 0", "header audio 0", "video 0", "video 40", "header video 80",
                     "header audio 80", "video 80"}));
}

TEST_F(CallsTest, HaveNoAudioHeadersInAVideoOnlyFile) {
    open({test::videoTrackOf(fourCc("avc1"), avcBox())});
    EXPECT_EQ(write({avc(0, true), avc(40, false)}),
              (Calls{"header video 0", "video 0", "video 40"}));
}

TEST_F(CallsTest, GiveTheFirstAudioBesideVideoAHeader) {
    open({test::videoTrackOf(fourCc("avc1"), avcBox()),
          test::audioTrackOf(fourCc("mp4a"), esdsBox())});
    EXPECT_EQ(write({aac(23), aac(46), avc(50, true), aac(1100), aac(5000)}),
              (Calls{"header audio 23", "audio 23", "audio 46", "header video 50",
                     "header audio 50", "video 50", "audio 1100", "audio 5000"}));
}

TEST_F(CallsTest, GiveTheSecondAudioAHeaderTooWhenTheFirstIsAt0) {
    open({test::videoTrackOf(fourCc("avc1"), avcBox()),
          test::audioTrackOf(fourCc("mp4a"), esdsBox())});
    EXPECT_EQ(write({aac(0), aac(23), aac(46)}),
              (Calls{"header audio 0", "audio 0", "header audio 23", "audio 23", "audio 46"}));
}

TEST_F(CallsTest, BeginAnewWithEachFragment) {
    open({test::videoTrackOf(fourCc("avc1"), avcBox()),
          test::audioTrackOf(fourCc("mp4a"), esdsBox())});
    write({aac(23), aac(46)});
    EXPECT_EQ(write({aac(4000), aac(4023)}),
              (Calls{"header audio 4000", "audio 4000", "audio 4023"}));
}

TEST_F(CallsTest, IndexAudioWithoutHeadersOnceASecond) {
    open({test::audioTrackOf(fourCc(".mp3"), Bytes())});
    EXPECT_EQ(
        write({mp3(0), mp3(26), mp3(52), mp3(1025), mp3(1026), mp3(1052), mp3(2025), mp3(2030)}),
        (Calls{"header audio 0", "audio 0", "header audio 26", "audio 26", "audio 52", "audio 1025",
               "header audio 1026 indexed", "audio 1026 indexed", "audio 1052", "audio 2025",
               "header audio 2030 indexed", "audio 2030 indexed"}));
}

TEST_F(CallsTest, IndexNoAudioThatHasAHeaderOfItsOwn) {
    open({test::audioTrackOf(fourCc("mp4a"), esdsBox())});
    EXPECT_EQ(write({aac(10), aac(33), aac(1010), aac(1033)}),
              (Calls{"header audio 10", "audio 10", "audio 33", "header audio 1010 indexed",
                     "audio 1010", "audio 1033"}));
    writer_.reset();
    EXPECT_TRUE(kz::test::readSegment(stream_.content).fragments.at(0).afra.local.empty());
}

TEST_F(CallsTest, IndexAacWithoutExtraDataOnceASecond) {
    open({test::audioTrackOf(fourCc("mp4a"), Bytes())});
    EXPECT_EQ(
        write({aac(10), aac(1010)}),
        (Calls{"header audio 10", "audio 10", "header audio 1010 indexed", "audio 1010 indexed"}));
}

TEST_F(CallsTest, FindTheFirstAudioOfALaterFragmentDueAtOnce) {
    open({test::audioTrackOf(fourCc(".mp3"), Bytes())});
    EXPECT_EQ(write({mp3(4000), mp3(4999), mp3(5000)}),
              (Calls{"header audio 4000 indexed", "audio 4000 indexed", "audio 4999",
                     "header audio 5000 indexed", "audio 5000 indexed"}));
}

TEST_F(CallsTest, CompareDueTimesInTheTimescaleOfTheSample) {
    open({test::audioTrackOf(fourCc(".mp3"), Bytes())});
    const FlvTag tag = mp3Frame(0, raw({1}));
    const auto at = [&](std::uint64_t ticks) {
        return messageOf(tag, 1, Timestamp{ticks, 500, {0, 0}}, kzs::milliseconds(ticks * 2));
    };
    EXPECT_EQ(write({at(10), at(509), at(510)}),
              (Calls{"header audio 10", "audio 10", "audio 509", "header audio 510 indexed",
                     "audio 510 indexed"}));
}

TEST_F(CallsTest, TakeBothTimesOfTheMessageForItsHeaders) {
    open({test::videoTrackOf(fourCc("avc1"), avcBox()),
          test::audioTrackOf(fourCc("mp4a"), esdsBox())});
    write({messageOf(avcFrame(0, true, raw({1})), 5, kzs::milliseconds(7), kzs::milliseconds(9))});
    EXPECT_EQ(policy_.calls.front(), "header video 7");
    EXPECT_EQ(policy_.messageTimes, (std::vector<std::uint64_t>{9, 9}));
}

TEST_F(CallsTest, TreatEncryptedTagsLikeClearOnes) {
    open({test::videoTrackOf(fourCc("avc1"), avcBox()),
          test::audioTrackOf(fourCc("mp4a"), esdsBox()),
          test::dataTrackOf(fourCc("amf0"), Bytes())});
    EXPECT_EQ(
        write({messageOf(flvTag(40, 5, raw({0xAF, 1, 9})), 2),
               messageOf(flvTag(41, 10, raw({0x17, 1, 0, 0, 0, 9})), 5),
               messageOf(flvTag(50, 15, raw({9})), 0), messageOf(flvTag(47, 20, raw({9})), 0)}),
        (Calls{"header audio 5", "audio 5", "header video 10", "header audio 10", "video 10",
               "data 15", "data 20"}));
}

TEST_F(CallsTest, HandDataOfBothKindsOn) {
    open({test::dataTrackOf(fourCc("amf0"), Bytes())});
    EXPECT_EQ(
        write({messageOf(flvTag(18, 5, raw({9})), 0), messageOf(flvTag(15, 10, raw({9})), 0)}),
        (Calls{"data 5", "data 10"}));
}

TEST_F(CallsTest, HaveNoHeadersAheadOfAVideoTagWithoutABody) {
    open({test::videoTrackOf(fourCc("avc1"), avcBox())});
    EXPECT_EQ(write({messageOf(flvTag(9, 0, Bytes()), 0), avc(10, false)}),
              (Calls{"video 0", "video 10"}));
}

}  // namespace
}  // namespace torvo::kzspkgutil
