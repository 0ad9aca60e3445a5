#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "KzmFileBuilder.h"
#include "kzs/base/FileStream.h"
#include "kzspkgutil/KZMMediaSource.h"
#include "support/Random.h"
#include "support/TempDir.h"

namespace torvo::kzspkgutil {
namespace {

using kz::test::pattern;
using test::Bytes;
using test::KzmSample;
using test::KzmTrack;

/// One sample as the file was built, by the slow and obvious way.
struct Expected {
    std::size_t track = 0;
    std::uint64_t ticks = 0;
    std::uint32_t timescale = 1;
    const KzmSample* sample = nullptr;
};

std::vector<Expected> inOrder(const std::vector<KzmTrack>& tracks) {
    std::vector<Expected> all;
    for (std::size_t i = 0; i < tracks.size(); ++i) {
        std::uint64_t ticks = 0;
        for (const KzmSample& sample : tracks[i].samples) {
            all.push_back({i, ticks, tracks[i].timescale, &sample});
            ticks += sample.delta;
        }
    }
    std::stable_sort(all.begin(), all.end(), [](const Expected& left, const Expected& right) {
        return left.ticks * right.timescale < right.ticks * left.timescale;
    });
    return all;
}

std::uint32_t below(kz::test::Random& random, std::uint32_t limit) { return random() % limit; }

KzmTrack randomTrack(const std::string& handler, kz::test::Random& random) {
    const std::uint32_t timescales[] = {600, 1000, 44100, 90000};
    KzmTrack track;
    track.handler = handler;
    track.timescale = timescales[below(random, 4)];
    if (handler == "vide") track.entries = {test::videoEntry("avc1")};
    if (handler == "soun") track.entries = {test::audioEntry("mp4a")};
    if (handler == "meta") track.entries = {test::plainEntry("amf0")};
    const std::uint32_t count = below(random, 40);
    for (std::uint32_t i = 0; i < count; ++i) {
        KzmSample sample;
        // Small and large, around the size of a page.
        const std::uint32_t most = below(random, 4) == 0 ? 9000 : 20;
        sample.data = pattern(1 + below(random, most), below(random, 250));
        sample.delta = 1 + below(random, track.timescale / 5);
        sample.isKey = handler == "vide" && below(random, 3) == 0;
        track.samples.push_back(sample);
    }
    return track;
}

void expectAllSamples(const std::string& path, const std::vector<KzmTrack>& tracks) {
    RefCountedMemoryArena arena;
    PackagerContext context(arena);
    KZMMediaSource source(context, path, kzs::openFlagsFor(false, false), true);
    const auto samples = source.getSampleIterator();
    for (const Expected& expected : inOrder(tracks)) {
        ASSERT_TRUE(samples->hasNext());
        const kzs::FragmenterSample seen = samples->next();
        EXPECT_EQ(seen.time.value, expected.ticks * 1000 / expected.timescale);
        EXPECT_EQ(seen.isKeyFrame, expected.sample->isKey);
        EXPECT_EQ(seen.trackKind, tracks[expected.track].handler == "vide"   ? 1U
                                  : tracks[expected.track].handler == "soun" ? 0U
                                                                             : 2U);
        const TCMessage message = samples->currentMessage();
        EXPECT_EQ(kz::test::bytesOf(message.getSampleData(), message.getSampleDataSize()),
                  expected.sample->data);
    }
    EXPECT_FALSE(samples->hasNext());
}

TEST(KZMMediaSourcePropertyTest, GivesEachSampleOnceByTimeWithItsBytes) {
    const kz::test::TempDir folder;
    for (unsigned seed = 1; seed <= 60; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        kz::test::Random random(seed);
        std::vector<KzmTrack> tracks;
        for (const char* handler : {"soun", "vide", "meta"}) {
            if (tracks.empty() || below(random, 3) != 0) {
                tracks.push_back(randomTrack(handler, random));
            }
        }
        expectAllSamples(folder.write("plain.mp4", test::kzmFile(tracks)), tracks);
        expectAllSamples(folder.write("fragmented.mp4", test::fragmentedKzmFile(tracks)), tracks);
        if (testing::Test::HasFailure()) return;
    }
}

}  // namespace
}  // namespace torvo::kzspkgutil
