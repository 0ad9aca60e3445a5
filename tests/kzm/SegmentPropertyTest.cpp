#include <optional>

#include <gtest/gtest.h>

#include "kzm/WriterHarness.h"
#include "support/Presentation.h"
#include "support/Random.h"

namespace qlix::kzm {
namespace {

using namespace kz::test;

/// A track as it was handed over, sample by sample.
struct ModelSample {
    std::uint64_t time = 0;
    std::uint64_t decodeTime = 0;  ///< without the gaps of the track
    Bytes bytes;
    bool isSync = false;
    std::uint32_t compositionOffset = 0;
};

class ModelTrack {
public:
    void add(ModelSample sample) {
        if (samples.empty()) {
            gap_ = sample.time;
        } else if (pause_) {
            gap_ += sample.time - *pause_;
            isBehindGap_ = true;
        } else {
            isBehindGap_ = false;
        }
        pause_.reset();
        sample.decodeTime = sample.time - gap_;
        samples.push_back(std::move(sample));
    }

    void pause(std::uint64_t time) {
        if (!pause_) pause_ = time;
    }

    bool isPaused() const { return pause_.has_value(); }

    /// Where the track ends in the presentation.
    std::uint64_t end() const {
        if (samples.empty()) return 0;
        if (pause_) return *pause_;
        // A sample is taken to last 1 tick; the first one behind a pause lasts none so far.
        return samples.back().time + (isBehindGap_ ? 0 : 1);
    }

    std::vector<ModelSample> samples;

private:
    std::uint64_t gap_ = 0;
    std::optional<std::uint64_t> pause_;
    bool isBehindGap_ = false;
};

/// Writes a random segment and keeps what was handed over.
class RandomSegment {
public:
    explicit RandomSegment(unsigned seed) : random_(seed), driver_(options()) {
        driver_.writer.startFragment();
        for (int i = 0; i < 300; ++i) step();
        driver_.writer.close();
    }

    const Bytes& file() const { return driver_.file(); }
    const std::vector<ModelTrack>& tracks() const { return tracks_; }
    /// Time and bytes of each sample that got an index entry.
    const std::vector<std::pair<std::uint64_t, Bytes>>& entries() const { return entries_; }

private:
    static SegmentDriver::Options options() {
        SegmentDriver::Options out;
        out.maxEdits = 400;
        return out;
    }

    void step() {
        time_ += random_() % 4 == 0 ? 0 : random_() % 60;
        switch (random_() % 16) {
            case 0:
                driver_.writer.startFragment();
                break;
            case 1:
                // A pause in front of the first sample is another thing: media time starts there.
                if (tracks_[0].samples.empty()) break;
                driver_.marker(driver_.videoTrack, "vide", time_);
                tracks_[0].pause(time_);
                break;
            case 2:
                driver_.writer.flush();
                break;
            default:
                sample();
        }
    }

    void sample() {
        const std::uint32_t kind = random_() % 3;
        const Bytes bytes = pattern(1 + (random_() % 20 == 0 ? 70000 : random_() % 90), random_());
        const auto size = static_cast<std::uint32_t>(bytes.size());
        const bool isSync = kind == 2 || random_() % 2 == 0;
        const bool entry = random_() % 5 == 0;
        KZMSample hint = sampleOf("hint", time_, 1000, size, isSync ? 1 : 0);
        hint.compositionOffset = random_() % 100;
        ModelSample model{time_, 0, bytes, isSync, hint.compositionOffset};
        tracks_[2].add(model);
        if (entry) entries_.emplace_back(time_, bytes);
        if (kind == 2) {
            driver_.writer.writeSample(driver_.hintTrack, hint, driver_.pool.data(bytes), entry);
            return;
        }
        const std::uint32_t offset = random_() % (size + 1);
        const MediaPart part{offset, random_() % (size - offset + 1)};
        model.bytes = bytes.slice(part.offset, part.size);
        tracks_[kind].add(model);
        driver_.writer.writeHintedSample(driver_.hintTrack,
                                         kind == 0 ? driver_.videoTrack : driver_.audioTrack, hint,
                                         part, driver_.pool.data(bytes), entry);
    }

    Random random_;
    SegmentDriver driver_;
    std::uint64_t time_ = 0;
    std::vector<ModelTrack> tracks_ = std::vector<ModelTrack>(3);
    std::vector<std::pair<std::uint64_t, Bytes>> entries_;
};

/// When a sample shows, by the edit list; nothing if no row shows it.
std::optional<std::uint64_t> shownAt(const std::vector<kz::test::EditRow>& edits,
                                     std::uint64_t decodeTime) {
    std::uint64_t start = 0;
    for (const kz::test::EditRow& row : edits) {
        const auto mediaStart = static_cast<std::uint64_t>(row.mediaTime);
        if (row.mediaTime >= 0 && mediaStart <= decodeTime &&
            decodeTime < mediaStart + row.duration) {
            return start + (decodeTime - mediaStart);
        }
        start += row.duration;
    }
    return std::nullopt;
}

void expectTrack(const kz::test::Segment& segment, std::uint32_t trackId, const ModelTrack& model,
                 std::uint64_t end, bool endsInPause) {
    std::vector<PackedSample> samples;
    for (const PackedFragment& fragment : segment.fragments) {
        const auto found = fragment.samples.find(trackId);
        if (found == fragment.samples.end()) continue;
        samples.insert(samples.end(), found->second.begin(), found->second.end());
    }
    ASSERT_EQ(samples.size(), model.samples.size());
    const auto& edits = segment.tracks[trackId - 1].edits;
    std::uint64_t decodeTime = 0;
    for (std::size_t i = 0; i < samples.size(); ++i) {
        SCOPED_TRACE(i);
        const ModelSample& given = model.samples[i];
        const bool isLast = i + 1 == samples.size();
        ASSERT_EQ(decodeTime, given.decodeTime);
        // A pause that comes when the fragment is closed already doesn't lengthen the last row.
        if (!isLast || !endsInPause) {
            ASSERT_EQ(
                samples[i].duration,
                isLast ? end - given.time : model.samples[i + 1].decodeTime - given.decodeTime);
        }
        decodeTime += samples[i].duration;
        ASSERT_EQ(samples[i].flags, given.isSync ? 0x02000000U : 0x01010000U);
        ASSERT_EQ(static_cast<std::uint32_t>(samples[i].compositionOffset),
                  given.compositionOffset);
        ASSERT_EQ(samples[i].size, given.bytes.size());
        ASSERT_EQ(
            segment.file.slice(static_cast<std::size_t>(samples[i].offset), given.bytes.size()),
            given.bytes);
        // A sample of no duration may share its place with a gap.
        const auto shown = shownAt(edits, given.decodeTime);
        if (samples[i].duration > 0) {
            ASSERT_EQ(shown, given.time);
        }
    }
}

TEST(SegmentPropertyTest, EverySampleIsInTheFileOnceAndShowsAtItsTime) {
    for (unsigned seed = 1; seed <= 30; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        const RandomSegment random(seed);
        const kz::test::Segment segment = readSegment(random.file());
        const auto& tracks = random.tracks();
        const std::uint64_t mediaEnd = std::max(tracks[0].end(), tracks[1].end());
        for (std::uint32_t i = 0; i < 2; ++i) {
            SCOPED_TRACE("track " + std::to_string(i + 1));
            expectTrack(segment, i + 1, tracks[i], tracks[i].end(), tracks[i].isPaused());
        }
        // The hint track lasts as long as the tracks it refers to.
        expectTrack(segment, 3, tracks[2], std::max(tracks[2].end(), mediaEnd),
                    tracks[0].isPaused());

        std::size_t next = 0;
        for (const PackedFragment& fragment : segment.fragments) {
            for (const AfraRow& row : fragment.afra.local) {
                ASSERT_LT(next, random.entries().size());
                const auto& [time, bytes] = random.entries()[next++];
                EXPECT_EQ(row.time, time);
                EXPECT_EQ(segment.file.slice(static_cast<std::size_t>(fragment.offset + row.offset),
                                             bytes.size()),
                          bytes);
            }
        }
        EXPECT_EQ(next, random.entries().size());
        if (testing::Test::HasFailure()) return;
    }
}

}  // namespace
}  // namespace qlix::kzm
