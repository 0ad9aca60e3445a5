#include <algorithm>

#include <gtest/gtest.h>

#include "kzm/ReaderSupport.h"
#include "support/Random.h"

namespace qlix::kzm {
namespace {

using namespace kz::test;

// A sample as it must come out.
struct Expected {
    std::size_t track = 0;
    std::uint64_t time = 0;
    const IsoSample* sample = nullptr;  // null: a marker
};

std::vector<IsoSample> randomSamples(Random& random, unsigned ticks, bool hasDescriptions) {
    std::vector<IsoSample> samples(random() % 40);
    std::uint32_t duration = ticks * (1 + random() % 5);
    for (IsoSample& sample : samples) {
        sample.data = pattern(1 + random() % 30, random());
        if (random() % 8 == 0) duration = ticks * (random() % 6);
        sample.duration = duration;
        sample.isSync = random() % 4 == 0;
        sample.compositionOffset = random() % 3 == 0 ? random() : 0;
        sample.dependency = static_cast<std::uint8_t>(random());
        sample.description = hasDescriptions ? 1 + random() % 2 : 1;
    }
    return samples;
}

// Media times are whole ticks of the movie, so that no rounding enters the model.
std::vector<IsoEdit> randomEdits(Random& random, unsigned factor) {
    std::vector<IsoEdit> edits(1 + random() % 4);
    for (IsoEdit& edit : edits) {
        edit.duration = random() % 200;
        edit.mediaTime = random() % 4 == 0 ? -1 : std::int64_t{random() % 100} * factor;
    }
    if (edits.back().duration == 0) edits.back().duration = 1;
    return edits;
}

IsoFile randomFile(Random& random, bool hasEdits) {
    IsoFile file;
    file.movieTimescale = 100;
    file.movieDuration = 10 + random() % 500;
    file.version = static_cast<std::uint8_t>(random() % 2);
    file.isMoovFirst = random() % 2 == 0;
    if (random() % 2 == 0) file.samplesPerFragment = 1 + random() % 6;
    file.samplesPerRun = 1 + random() % 4;
    file.base = static_cast<IsoBase>(random() % 3);
    const unsigned count = 1 + random() % 3;
    for (unsigned i = 0; i < count; ++i) {
        const unsigned factor = 1 + random() % 9;
        IsoTrack track;
        track.id = 7 + 3 * i;
        track.handler = i == 0 ? "vide" : "soun";
        track.timescale = 100 * factor;
        const Bytes entry = i == 0 ? isoVideoEntry("avc1", 64, 48) : isoAudioEntry("mp4a", 1, 8000);
        track.entries = {entry, entry};
        track.samples = randomSamples(random, factor, random() % 2 == 0);
        track.samplesPerChunk = 1 + random() % 5;
        track.hasSync = random() % 4 != 0;
        track.hasComposition = random() % 4 != 0;
        track.hasDependencies = random() % 2 == 0;
        track.hasLargeOffsets = random() % 2 == 0;
        if (hasEdits && random() % 2 == 0) track.edits = randomEdits(random, factor);
        file.tracks.push_back(track);
    }
    return file;
}

// All samples of a track with times below `end`, in movie ticks, as its edits present them.
std::vector<Expected> presented(const IsoFile& file, std::size_t index, std::uint64_t end) {
    const IsoTrack& track = file.tracks[index];
    const std::uint64_t factor = track.timescale / file.movieTimescale;
    std::vector<Expected> out;
    std::uint64_t start = 0;
    const std::vector<IsoEdit> whole = {{end, 0}};
    for (const IsoEdit& edit : track.edits ? *track.edits : whole) {
        const std::uint64_t editEnd = start + edit.duration;
        if (edit.mediaTime < 0) {
            if (editEnd > 0) out.push_back({index, start * factor, nullptr});
        } else {
            std::uint64_t time = 0;
            for (const IsoSample& sample : track.samples) {
                const auto from = static_cast<std::uint64_t>(edit.mediaTime);
                if (time >= from && time - from < edit.duration * factor) {
                    out.push_back({index, start * factor + time - from, &sample});
                }
                time += sample.duration;
            }
        }
        start = editEnd;
    }
    out.erase(std::remove_if(out.begin(), out.end(),
                             [&](const Expected& e) { return e.time >= end * factor; }),
              out.end());
    return out;
}

// The tracks in one list: again and again the earliest of all first samples.
std::vector<Expected> merged(const IsoFile& file, std::uint64_t end) {
    std::vector<std::vector<Expected>> tracks;
    for (std::size_t i = 0; i < file.tracks.size(); ++i) {
        tracks.push_back(presented(file, i, end));
    }
    std::vector<Expected> out;
    for (;;) {
        std::vector<Expected>* first = nullptr;
        for (std::vector<Expected>& track : tracks) {
            if (track.empty()) continue;
            const auto seconds = [&](const Expected& e) {
                return static_cast<double>(e.time) / file.tracks[e.track].timescale;
            };
            // Times are whole hundredths of a second, far apart as doubles.
            if (first == nullptr || seconds(track[0]) < seconds((*first)[0]) - 1e-6) {
                first = &track;
            }
        }
        if (first == nullptr) return out;
        out.push_back(first->front());
        first->erase(first->begin());
    }
}

void check(const OpenIso& open, const IsoFile& file, const Sample& actual,
           const Expected& expected) {
    const IsoTrack& track = file.tracks[expected.track];
    ASSERT_EQ(actual.track.info().trackId, track.id);
    ASSERT_EQ(actual.time, expected.time);
    ASSERT_EQ(actual.timescale, track.timescale);
    if (expected.sample == nullptr) {
        ASSERT_EQ(actual.flags, kSampleIsEmptyEdit);
        return;
    }
    const bool isFragmented = file.samplesPerFragment != 0;
    ASSERT_EQ(open.dataOf(actual), expected.sample->data);
    ASSERT_EQ(actual.compositionOffset,
              isFragmented || track.hasComposition ? expected.sample->compositionOffset : 0);
    const bool isSync = expected.sample->isSync && (isFragmented || track.hasSync);
    ASSERT_EQ(actual.frameType(), isSync ? kSampleIsSync : 0U);
    const bool hasDependency = !isFragmented && track.hasDependencies;
    ASSERT_EQ(actual.flags >> 8, hasDependency ? expected.sample->dependency : 0U);
    ASSERT_EQ(actual.description->index, expected.sample->description);
}

void compare(unsigned seed, bool hasEdits) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    Random random(seed);
    const IsoFile file = randomFile(random, hasEdits);
    const OpenIso open(file, !hasEdits);
    const std::vector<Expected> expected = merged(file, file.movieDuration);
    const std::vector<Sample> actual = open.samples();
    ASSERT_EQ(actual.size(), expected.size());
    for (std::size_t i = 0; i < actual.size(); ++i) {
        SCOPED_TRACE("sample " + std::to_string(i));
        check(open, file, actual[i], expected[i]);
        if (testing::Test::HasFatalFailure()) return;
    }
}

TEST(ReaderPropertyTest, GivesEverySampleOfRandomFiles) {
    for (unsigned seed = 1; seed <= 400; ++seed) {
        compare(seed, false);
        if (HasFatalFailure()) return;
    }
}

TEST(ReaderPropertyTest, PresentsRandomFilesByTheirEdits) {
    for (unsigned seed = 1001; seed <= 1400; ++seed) {
        compare(seed, true);
        if (HasFatalFailure()) return;
    }
}

TEST(ReaderPropertyTest, GivesTheSamplesOfAnyRange) {
    for (unsigned seed = 2001; seed <= 2300; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random random(seed);
        const IsoFile file = randomFile(random, false);
        const OpenIso open(file);
        const std::uint64_t start = random() % 200;
        const std::uint64_t end = random() % 300;
        std::vector<Expected> expected = merged(file, end);
        expected.erase(std::remove_if(expected.begin(), expected.end(),
                                      [&](const Expected& e) {
                                          const std::uint64_t factor =
                                              file.tracks[e.track].timescale / 100;
                                          return e.time < start * factor;
                                      }),
                       expected.end());
        const std::vector<Sample> actual = open.samples({start, 100}, {end, 100});
        ASSERT_EQ(actual.size(), expected.size());
        for (std::size_t i = 0; i < actual.size(); ++i) {
            ASSERT_EQ(open.dataOf(actual[i]), expected[i].sample->data);
            ASSERT_EQ(actual[i].time, expected[i].time);
        }
    }
}

}  // namespace
}  // namespace qlix::kzm
