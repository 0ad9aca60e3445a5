#include <algorithm>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

#include "Fixtures.h"
#include "WriterHarness.h"
#include "kzs/base/ByteOrder.h"
#include "kzs/base/Clock.h"
#include "kzspkgutil/KZSMediaWriter.h"
#include "kzspkgutil/KZSMediaWriterPolicy.h"
#include "support/ThrownCode.h"

namespace torvo::kzspkgutil {
namespace {

using kz::test::aacFrame;
using kz::test::avcFrame;
using kz::test::Bytes;
using kz::test::codeThrownBy;
using kz::test::flvTag;
using kz::test::hex;
using kz::test::mp3Frame;
using kz::test::raw;
using kz::test::Segment;
using kzs::fourCc;
using test::avcBox;
using test::esdsBox;
using test::messageOf;

static_assert(!std::has_virtual_destructor<IMediaWriter>::value,
              "the interface has two operations and no destructor slot");

class KZSMediaWriterTest : public testing::Test {
protected:
    /// Makes the writer on a source of the tracks.
    KZSMediaWriter& open(std::vector<boost::shared_ptr<KZSTrack>> tracks,
                         const MediaProperties& properties = MediaProperties()) {
        test::FixedSource source(std::move(tracks));
        source.properties = properties;
        writer_ = std::make_unique<KZSMediaWriter>(context_, policy_, source, stream_);
        return *writer_;
    }

    KZSMediaWriter& openVideo() { return open({test::videoTrackOf(fourCc("avc1"), avcBox())}); }

    FragmentPosition writeUpTo(const MessageList& messages, std::uint64_t endMs,
                               const Bytes& bootstrap = raw({1, 2, 3})) {
        return writer_->writeUpTo(MessageList(messages), kzs::milliseconds(endMs), bootstrap.data(),
                                  bootstrap.size());
    }

    Segment close() {
        writer_.reset();
        return kz::test::readSegment(stream_.content);
    }

    static TCMessage frame(std::uint32_t timeMs, bool isKey = false) {
        return messageOf(avcFrame(timeMs, isKey, raw({1, 2, 3})), 5);
    }

    /// The times of the hint samples of a fragment, by their tags.
    static std::vector<std::uint32_t> timesIn(const Segment& segment, std::size_t fragment) {
        std::vector<std::uint32_t> times;
        const std::uint32_t hint = segment.track("hint")->id;
        for (const auto& sample : segment.fragments.at(fragment).samples.at(hint)) {
            times.push_back(kzs::loadU24(&segment.file[sample.offset + 4]));
        }
        return times;
    }

    RefCountedMemoryArena arena_;
    PackagerContext context_{arena_};
    KZSMediaWriterPolicy policy_{context_};
    kz::test::MemoryStream stream_;
    std::unique_ptr<KZSMediaWriter> writer_;
};

// --- the header of a file

TEST_F(KZSMediaWriterTest, MakesOneTrackOfEachKindInTheOrderOfTheSource) {
    open({test::dataTrackOf(fourCc("amf0"), Bytes()), test::audioTrackOf(fourCc("mp4a"), esdsBox()),
          test::videoTrackOf(fourCc("avc1"), avcBox()),
          test::videoTrackOf(fourCc("VP6F"), Bytes())});
    const Segment segment = close();
    ASSERT_EQ(segment.tracks.size(), 4U);
    EXPECT_EQ(segment.tracks[0].handler, "meta");
    EXPECT_EQ(segment.tracks[1].handler, "soun");
    EXPECT_EQ(segment.tracks[2].handler, "vide");
    EXPECT_EQ(segment.tracks[2].descriptionFormats.front(), "avc1");
    EXPECT_EQ(segment.tracks[3].handler, "hint");
    EXPECT_EQ(segment.tracks[3].hintedTracks, (std::vector<std::uint32_t>{1, 2, 3}));
}

TEST_F(KZSMediaWriterTest, PassesOverTracksOfOtherHandlers) {
    const auto odd = test::videoTrackOf(fourCc("avc1"), avcBox());
    odd->handler = fourCc("subt");
    open({odd, test::audioTrackOf(fourCc("mp4a"), esdsBox())});
    const Segment segment = close();
    ASSERT_EQ(segment.tracks.size(), 2U);
    EXPECT_EQ(segment.tracks[0].handler, "soun");
}

TEST_F(KZSMediaWriterTest, DescribesTheHintTrack) {
    openVideo();
    const Segment segment = close();
    const kz::test::PackedTrack& hint = *segment.track("hint");
    EXPECT_EQ(hint.timescale, 1000U);
    EXPECT_EQ(hint.descriptions.slice(16, 38), kz::test::hexTable(R"(
        0   00000026            size 38
        4   72746d70            'rtmp'
        8   000000000000
        14  0001                data reference
        16  0001                hint track version
        18  0001                highest compatible version
        20  01f4                packets of 500 bytes
        22  00000010            'amhp'
        26  616d6870
        30  0000000001010004    one entry: 1, 0, 4
    )"));
}

TEST_F(KZSMediaWriterTest, LeavesRoomInTheHintTrackForEditsAndDescriptions) {
    open({});
    // Two rows for each of 1000 empty edits and one more, behind 16 bytes of header and count.
    EXPECT_EQ(test::boxIn(stream_.content, "elst").size(), 16U + 2001 * 20);
    // One entry of 22 bytes and 1024 for its data, behind 16 bytes of header and count.
    EXPECT_EQ(test::boxIn(stream_.content, "stsd").size(), 16U + 22 + 1024);
}

TEST_F(KZSMediaWriterTest, DatesMovieAndTracksByTheClock) {
    kzs::setClockForTests(86400);  // a day behind 1970, which is 2082844800 seconds behind 1904
    openVideo();
    kzs::setClockForTests(std::nullopt);
    const Bytes twice = kz::test::u64(2082931200) + kz::test::u64(2082931200);
    EXPECT_EQ(test::boxIn(stream_.content, "mvhd").slice(12, 16), twice);
    std::size_t dated = 0;
    for (auto from = stream_.content.begin();; ++dated) {
        from = std::search(from, stream_.content.end(), twice.begin(), twice.end());
        if (from == stream_.content.end()) break;
        from += static_cast<std::ptrdiff_t>(twice.size());
    }
    EXPECT_EQ(dated, 5U);  // the movie, and the two headers of each track
}

TEST_F(KZSMediaWriterTest, NamesTheHandlerOfTheHintTrack) {
    open({});
    const Bytes hdlr = test::boxIn(stream_.content, "hdlr");
    EXPECT_EQ(hdlr.slice(16, 4), kz::test::text("hint"));
    EXPECT_EQ(hdlr.slice(32, hdlr.size() - 32),
              kz::test::text("Varnholt Systems Inc. Hint Handler") + raw({0}));
    EXPECT_EQ(hdlr.size() - 32, 35U);
}

TEST_F(KZSMediaWriterTest, GivesTheHintTrackTheLanguageOfTheVideoTrack) {
    const auto video = test::videoTrackOf(fourCc("avc1"), avcBox());
    const auto audio = test::audioTrackOf(fourCc("mp4a"), esdsBox());
    video->language = "deu";
    audio->language = "fra";
    // Three letters of five bits each; the hint track's header is the last.
    const auto lastLanguage = [this] {
        const Bytes name = kz::test::text("mdhd");
        const auto hit =
            std::find_end(stream_.content.begin(), stream_.content.end(), name.begin(), name.end());
        return stream_.content.slice(
            static_cast<std::size_t>(hit - stream_.content.begin()) - 4 + 40, 2);
    };
    open({video, audio});
    EXPECT_EQ(lastLanguage(), hex("10b5"));  // d, e, u: 4, 5, 21
    stream_.content.clear();
    open({audio});
    EXPECT_EQ(lastLanguage(), hex("15c7"));  // e, n, g: 5, 14, 7
}

TEST_F(KZSMediaWriterTest, NeverRaisesTheVolumeOfTheMovieAbove1) {
    MediaProperties properties;
    properties.volume = 1.5F;
    properties.rate = 2.0F;
    open({}, properties);
    const Bytes mvhd = test::boxIn(stream_.content, "mvhd");
    EXPECT_EQ(mvhd.slice(40, 6), hex("00020000 0100"));  // rate 2.0, volume 1.0

    stream_.content.clear();
    properties.volume = 0.5F;
    open({}, properties);
    EXPECT_EQ(test::boxIn(stream_.content, "mvhd").slice(44, 2), hex("0080"));
}

TEST_F(KZSMediaWriterTest, TakesTheTimescaleOfTheSource) {
    MediaProperties properties;
    properties.timescale = 600;
    properties.duration = 6000;
    open({}, properties);
    const Segment segment = close();
    EXPECT_EQ(segment.movieTimescale, 600U);
    EXPECT_EQ(segment.movieDuration, 0U);
}

TEST_F(KZSMediaWriterTest, RefusesATimescaleOf0) {
    MediaProperties properties;
    properties.timescale = 0;
    EXPECT_EQ(codeThrownBy([&] { open({}, properties); }), 10U);
}

TEST_F(KZSMediaWriterTest, TellsTheSourcesPropertiesAndNoTracks) {
    MediaProperties properties;
    properties.duration = 1234;
    const KZSMediaWriter& writer = open({test::videoTrackOf(fourCc("avc1"), avcBox())}, properties);
    EXPECT_EQ(writer.getProperties().duration, 1234U);
    EXPECT_FALSE(writer.getTracks()->hasNext());
}

// --- fragments

TEST_F(KZSMediaWriterTest, AnswersThePositionOfTheFragmentItCompletes) {
    openVideo();
    const std::uint64_t first = writeUpTo({frame(0, true)}, 40).offset;
    const std::uint64_t second = writeUpTo({frame(40)}, 80).offset;
    const Segment segment = close();
    ASSERT_EQ(segment.fragments.size(), 2U);
    EXPECT_EQ(first, segment.fragments[0].offset);
    EXPECT_EQ(second, segment.fragments[1].offset);
    EXPECT_EQ(segment.fragments[1].offset, segment.fragments[0].dataEnd);
}

TEST_F(KZSMediaWriterTest, PutsTheBootstrapIntoItsFragment) {
    openVideo();
    writeUpTo({frame(0, true)}, 40, hex("aabb"));
    writeUpTo({frame(40)}, 80, hex("ccddee"));
    const Segment segment = close();
    EXPECT_EQ(segment.fragments.at(0).bootstrap, hex("aabb"));
    EXPECT_EQ(segment.fragments.at(1).bootstrap, hex("ccddee"));
}

TEST_F(KZSMediaWriterTest, StopsAtTheFirstMessageAtTheEnd) {
    openVideo();
    // What stands behind the stop waits too, though it is earlier.
    writeUpTo({frame(0), frame(39), frame(40), frame(20)}, 40);
    EXPECT_EQ(timesIn(close(), 0), (std::vector<std::uint32_t>{0, 39}));
}

TEST_F(KZSMediaWriterTest, GoesByTheMessageTimeWhenItStops) {
    openVideo();
    writeUpTo(
        {messageOf(avcFrame(0, false, raw({1})), 5, kzs::milliseconds(50), kzs::milliseconds(39)),
         messageOf(avcFrame(0, false, raw({1})), 5, kzs::milliseconds(60), kzs::milliseconds(40))},
        40);
    EXPECT_EQ(timesIn(close(), 0), (std::vector<std::uint32_t>{39}));
}

TEST_F(KZSMediaWriterTest, BringsTheEndIntoTheTimescaleOfTheMessages) {
    openVideo();
    const Bytes bootstrap = raw({1});
    // 3639 / 90000 s is 40.43 ms, truncated to 40.
    writer_->writeUpTo({frame(39), frame(40)}, Timestamp{3639, 90000, {0, 0}}, bootstrap.data(), 1);
    EXPECT_EQ(timesIn(close(), 0), (std::vector<std::uint32_t>{39}));
}

TEST_F(KZSMediaWriterTest, WritesNothingWhenTheListIsEmpty) {
    openVideo();
    const std::size_t before = stream_.content.size();
    const std::uint64_t first = writeUpTo({}, 40).offset;
    EXPECT_EQ(stream_.content.size(), before);
    const std::uint64_t second = writeUpTo({frame(40)}, 80).offset;
    EXPECT_EQ(first, second);
    const Segment segment = close();
    ASSERT_EQ(segment.fragments.size(), 1U);
    EXPECT_EQ(segment.fragments.front().offset, first);
}

TEST_F(KZSMediaWriterTest, WritesNothingWhenTheFirstMessageIsAtTheEnd) {
    openVideo();
    writeUpTo({frame(40)}, 40, hex("aa"));
    writeUpTo({frame(40)}, 80, hex("bb"));
    const Segment segment = close();
    ASSERT_EQ(segment.fragments.size(), 1U);
    EXPECT_EQ(segment.fragments.front().bootstrap, hex("bb"));
}

TEST_F(KZSMediaWriterTest, FailsWhenAllMessagesAreDropped) {
    openVideo();
    EXPECT_EQ(codeThrownBy([&] {
                  writeUpTo({messageOf(flvTag(9, 0, raw({0x21, 0})), 1)}, 40);
              }),
              1033U);
}

TEST_F(KZSMediaWriterTest, RefusesANullBootstrapWhateverItsSize) {
    for (const std::uint64_t size : {0U, 5U}) {
        openVideo();
        EXPECT_EQ(codeThrownBy([&] {
                      writer_->writeUpTo({frame(0)}, kzs::milliseconds(40), nullptr, size);
                  }),
                  20U);
    }
}

TEST_F(KZSMediaWriterTest, PassesOverUnknownTagTypes) {
    openVideo();
    // 73 is a video tag with bit 6 on: the type is compared as it stands.
    writeUpTo({messageOf(flvTag(0, 0, raw({1})), 0), messageOf(flvTag(73, 10, raw({0x17, 1})), 1),
               messageOf(flvTag(255, 10, raw({1})), 0), TCMessage(), frame(20)},
              40);
    EXPECT_EQ(timesIn(close(), 0), (std::vector<std::uint32_t>{20}));
}

TEST_F(KZSMediaWriterTest, RefusesAMessageWithoutATrack) {
    open({test::audioTrackOf(fourCc("mp4a"), esdsBox())});
    EXPECT_EQ(codeThrownBy([&] { writeUpTo({frame(0)}, 40); }), 20U);
}

TEST_F(KZSMediaWriterTest, RefusesATimeBeforeZero) {
    openVideo();
    const Timestamp before = kzs::milliseconds(0xFFFFFFFF80000000);  // -2^31 ms
    EXPECT_EQ(codeThrownBy([&] {
                  writeUpTo({messageOf(avcFrame(0, false, raw({1})), 5, before, before)}, 40);
              }),
              1280U);
}

TEST_F(KZSMediaWriterTest, LivesOnAfterFinishing) {
    openVideo();
    writeUpTo({frame(0, true)}, 40);
    writer_->finishWriter();
    writeUpTo({frame(40)}, 80);
    EXPECT_EQ(close().fragments.size(), 2U);
}

/// Fails on the second video message, as an encryption library may.
class FailingPolicy : public IKZSMediaWriterPolicy {
public:
    explicit FailingPolicy(KZSMediaWriterPolicy& inner) : inner_(inner) {}

    qlix::kzm::TrackHandle addVideoTrack(qlix::kzm::KZSWriter& writer,
                                         const KZSTrack& track) override {
        return inner_.addVideoTrack(writer, track);
    }
    qlix::kzm::TrackHandle addAudioTrack(qlix::kzm::KZSWriter&, const KZSTrack&) override {
        return {};
    }
    qlix::kzm::TrackHandle addDataTrack(qlix::kzm::KZSWriter&, const KZSTrack&) override {
        return {};
    }
    void writeAudioMessage(qlix::kzm::KZSWriter&, const qlix::kzm::TrackHandle&,
                           const qlix::kzm::TrackHandle&, const TCMessage&, bool) override {}
    void writeVideoMessage(qlix::kzm::KZSWriter& writer, const qlix::kzm::TrackHandle& hintTrack,
                           const qlix::kzm::TrackHandle& videoTrack,
                           const TCMessage& message) override {
        if (++messages_ == 2) throw std::runtime_error("no key");
        inner_.writeVideoMessage(writer, hintTrack, videoTrack, message);
    }
    void writeDataMessage(qlix::kzm::KZSWriter&, const qlix::kzm::TrackHandle&,
                          const qlix::kzm::TrackHandle&, const TCMessage&) override {}
    void writeVideoHeader(qlix::kzm::KZSWriter&, const qlix::kzm::TrackHandle&,
                          const qlix::kzm::TrackHandle&, const Timestamp&,
                          const Timestamp&) override {}
    bool writeAudioHeader(qlix::kzm::KZSWriter&, const qlix::kzm::TrackHandle&,
                          const qlix::kzm::TrackHandle&, const Timestamp&, const Timestamp&,
                          bool) override {
        return false;
    }
    boost::shared_ptr<KZSSampleDescriptor> readVideoDescriptor(
        const qlix::kzm::SampleDescriptor&) override {
        return {};
    }
    boost::shared_ptr<KZSSampleDescriptor> readAudioDescriptor(
        const qlix::kzm::SampleDescriptor&) override {
        return {};
    }
    boost::shared_ptr<KZSSampleDescriptor> readDataDescriptor(
        const qlix::kzm::SampleDescriptor&) override {
        return {};
    }

private:
    KZSMediaWriterPolicy& inner_;
    int messages_ = 0;
};

/// A block that notes its end.
class NotedBlock final : public kzs::NoLockRefCountedObject<IMemoryArenaAlloc> {
public:
    NotedBlock(const Bytes& bytes, int& alive) : bytes_(bytes), alive_(alive) { ++alive_; }
    ~NotedBlock() override { --alive_; }
    std::uint8_t* data() override { return bytes_.data(); }
    std::uint64_t size() const override { return bytes_.size(); }

private:
    Bytes bytes_;
    int& alive_;
};

/// Keeps nothing of the messages, as one that encrypts them, and notes how many blocks there are.
class ConsumingPolicy final : public FailingPolicy {
public:
    ConsumingPolicy(KZSMediaWriterPolicy& inner, const int& alive)
        : FailingPolicy(inner), alive_(alive) {}
    void writeVideoMessage(qlix::kzm::KZSWriter&, const qlix::kzm::TrackHandle&,
                           const qlix::kzm::TrackHandle&, const TCMessage&) override {
        seen.push_back(alive_);
    }

    std::vector<int> seen;

private:
    const int& alive_;
};

TEST_F(KZSMediaWriterTest, LetsGoOfEachMessageOnceThePolicyHadIt) {
    int alive = 0;
    ConsumingPolicy policy(policy_, alive);
    const test::FixedSource source({test::videoTrackOf(fourCc("avc1"), avcBox())});
    writer_ = std::make_unique<KZSMediaWriter>(context_, policy, source, stream_);
    MessageList messages;
    for (const std::uint32_t ms : {0U, 10U, 20U, 40U}) {
        const Bytes tag = avcFrame(ms, false, raw({1, 2, 3})).image();
        auto* block = new NotedBlock(tag, alive);
        const Timestamp time = kzs::milliseconds(ms);
        messages.emplace_back(time, time, static_cast<std::uint32_t>(tag.size()), BlockPtr(block),
                              block->data() + 16, 3);
    }
    // Nothing was written for the messages: the box library refuses the empty fragment.
    const Bytes bootstrap = raw({1});
    EXPECT_EQ(codeThrownBy([&] {
                  writer_->writeUpTo(std::move(messages), kzs::milliseconds(40), bootstrap.data(),
                                     bootstrap.size());
              }),
              1033U);
    EXPECT_EQ(policy.seen, (std::vector<int>{4, 3, 2}));
    EXPECT_EQ(alive, 1) << "the one behind the end stays with the caller";
}

TEST_F(KZSMediaWriterTest, ClosesTheFileWithTheBootstrapOfACallThatFailed) {
    FailingPolicy failing(policy_);
    const test::FixedSource source({test::videoTrackOf(fourCc("avc1"), avcBox())});
    writer_ = std::make_unique<KZSMediaWriter>(context_, failing, source, stream_);
    auto bootstrap = std::make_unique<Bytes>(hex("a1b2c3"));
    EXPECT_THROW(writer_->writeUpTo({frame(0), frame(10)}, kzs::milliseconds(40), bootstrap->data(),
                                    bootstrap->size()),
                 std::runtime_error);
    bootstrap.reset();  // the caller's buffer goes with the failure
    const Segment segment = close();
    ASSERT_EQ(segment.fragments.size(), 1U);
    EXPECT_EQ(segment.fragments.front().bootstrap, hex("a1b2c3"));
}

TEST_F(KZSMediaWriterTest, BringsAnOpenFragmentToTheFileWhenItFinishes) {
    FailingPolicy failing(policy_);
    const test::FixedSource source({test::videoTrackOf(fourCc("avc1"), avcBox())});
    writer_ = std::make_unique<KZSMediaWriter>(context_, failing, source, stream_);
    EXPECT_THROW(writeUpTo({frame(0), frame(10)}, 40), std::runtime_error);
    EXPECT_TRUE(kz::test::readSegment(stream_.content).fragments.empty());
    writer_->finishWriter();
    EXPECT_EQ(kz::test::readSegment(stream_.content).fragments.size(), 1U);
}

}  // namespace
}  // namespace torvo::kzspkgutil
