#include <random>

#include <gtest/gtest.h>

#include "kzs/AVFragmenter.h"
#include "kzs/AudioFragmenter.h"
#include "kzs/Rendition.h"
#include "offline/FragmentRecorder.h"
#include "offline/ISegmenter.h"
#include "support/TempDir.h"

namespace torvo::offline {
namespace {

using kzs::FragmenterSample;
using kzs::milliseconds;
using kzspkgutil::TCMessage;

/// A segment file in memory: each fragment is the list of its message times.
class Output final : public kzspkgutil::IMediaWriter, public ISegmenter {
public:
    kzspkgutil::FragmentPosition writeUpTo(kzspkgutil::MessageList&& messages,
                                           const kzs::Timestamp& endTime, const std::uint8_t*,
                                           std::uint64_t) override {
        fragments.emplace_back();
        for (const TCMessage& message : messages) {
            if (message.getMessageTime() >= endTime) break;
            fragments.back().push_back(message.getMessageTime().value);
        }
        return {fragments.size(), 0};
    }
    void finishWriter() override {}
    std::uint32_t currentSegment() const override { return 1; }
    void advance(std::uint32_t) override {}

    std::vector<std::vector<std::uint64_t>> fragments;
};

std::vector<FragmenterSample> randomSamples(std::mt19937& random, bool withVideo) {
    const auto pick = [&](int low, int high) {
        return std::uniform_int_distribution<int>(low, high)(random);
    };
    std::vector<FragmenterSample> samples;
    auto time = static_cast<std::uint64_t>(pick(0, 3) * pick(0, 4000));
    const int keyEvery = pick(1, 60);
    for (int left = pick(1, 400); left > 0; --left) {
        FragmenterSample sample;
        sample.time = milliseconds(time);
        sample.trackKind =
            withVideo && pick(0, 2) != 0 ? FragmenterSample::kVideo : FragmenterSample::kAudio;
        sample.isKeyFrame = pick(1, keyEvery) == 1;
        samples.push_back(sample);
        // Mostly a frame further, sometimes the same time, now and then a leap over cells.
        const int step = pick(0, 40);
        time += static_cast<std::uint64_t>(step == 0 ? pick(0, 9000) : pick(0, 3) * step);
    }
    return samples;
}

TCMessage messageAt(const kzs::Timestamp& time) {
    return TCMessage(time, time, 15, kzspkgutil::BlockPtr(new kzspkgutil::Block(15)), nullptr, 0);
}

template <typename Fragmenter>
void checkRandomInput(unsigned seed, bool withVideo) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    const kz::test::TempDir folder;
    const std::vector<FragmenterSample> samples = randomSamples(random, withVideo);
    constexpr std::uint32_t kF = 1000;
    Output output;
    kzs::Rendition rendition;
    FragmentRecorder recorder(output, output, rendition, kF, folder.path(), "b");
    Fragmenter fragmenter(kF, false);
    std::vector<std::uint64_t> given;
    for (const FragmenterSample& sample : samples) {
        recorder.handleEvent(fragmenter.addSample(sample), sample.time);
        recorder.keep(messageAt(sample.time));
        given.push_back(sample.time.value);
    }
    recorder.handleEnd(fragmenter.finish(samples.back()), samples.back().time);

    std::vector<std::uint64_t> written;
    for (const auto& fragment : output.fragments) {
        written.insert(written.end(), fragment.begin(), fragment.end());
    }
    // Without video the input ends at the last sample's time, which is left out.
    if (!withVideo) {
        while (!given.empty() && given.back() == samples.back().time.value) given.pop_back();
    }
    EXPECT_EQ(written, given);

    std::uint64_t withData = 0;
    const auto& entries = recorder.index().globalEntries;
    for (std::size_t i = 0; i < entries.size(); ++i) {
        if (i > 0) {
            EXPECT_EQ(entries[i].fragment, entries[i - 1].fragment + 1);
        }
        if (entries[i].afraOffset == kzs::kNoFragmentData) continue;
        // Offsets are given out as 1, 2, 3: each written fragment has one entry, in order.
        EXPECT_EQ(entries[i].afraOffset, ++withData);
    }
    EXPECT_EQ(withData, output.fragments.size());
}

TEST(FragmentRecorderPropertyTest, EverySampleWithVideoIsWrittenOnceAndInOrder) {
    for (unsigned seed = 1; seed <= 150; ++seed) checkRandomInput<kzs::AVFragmenter>(seed, true);
}

TEST(FragmentRecorderPropertyTest, EveryAudioSampleButTheLastIsWrittenOnceAndInOrder) {
    for (unsigned seed = 1; seed <= 150; ++seed) {
        checkRandomInput<kzs::AudioFragmenter>(seed, false);
    }
}

}  // namespace
}  // namespace torvo::offline
