#include <memory>
#include <stdexcept>
#include <vector>

#include <gtest/gtest.h>

#include "KZSMediaWriterFixture.h"
#include "support/ThrownCode.h"

namespace torvo::kzspkgutil {
namespace {

using kz::test::avcFrame;
using kz::test::Bytes;
using kz::test::codeThrownBy;
using kz::test::hex;
using kz::test::raw;
using kz::test::Segment;
using kzs::fourCc;
using test::avcBox;

using KZSMediaWriterFailureTest = test::KZSMediaWriterFixture;

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

TEST_F(KZSMediaWriterFailureTest, LetsGoOfEachMessageOnceThePolicyHadIt) {
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

TEST_F(KZSMediaWriterFailureTest, ClosesTheFileWithTheBootstrapOfACallThatFailed) {
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

TEST_F(KZSMediaWriterFailureTest, BringsAnOpenFragmentToTheFileWhenItFinishes) {
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
