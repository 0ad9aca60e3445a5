#include <map>
#include <optional>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "kzs/BootstrapBuilder.h"
#include "kzs/BootstrapReader.h"
#include "kzs/BootstrapWriter.h"
#include "support/Bytes.h"
#include "support/Random.h"

namespace torvo::kzs {
namespace {

// What is known of one fragment number.
struct Known {
    enum Kind { kData, kGap, kSkipped } kind = kData;
    std::uint64_t time = 0;
    std::uint32_t duration = 0;
};

// What a player finds for a fragment number in the compressed table: the run that covers it.
struct Found {
    std::uint32_t indicator = 0;  // 0 where the fragment has data
    std::uint64_t time = 0;
    std::uint32_t duration = 0;
};

std::optional<Found> lookUp(const BootstrapInfo& info, std::uint32_t number) {
    std::optional<Found> found;
    for (const FragmentRunEntry& entry : info.fragmentRunTables.at(0).entries) {
        const bool isEndMark = entry.fragmentDuration == 0 && entry.discontinuityIndicator == 0;
        if (isEndMark || entry.firstFragment > number) break;
        const std::uint64_t since = number - entry.firstFragment;
        found = Found{entry.fragmentDuration == 0 ? entry.discontinuityIndicator : 0,
                      entry.firstFragmentTimestamp.value + since * entry.fragmentDuration,
                      entry.fragmentDuration};
    }
    return found;
}

// The nearest multiple, found by trying them all; a tie goes up and nothing to 0.
std::uint32_t nearestMultiple(std::uint32_t step, std::uint64_t value) {
    std::uint32_t below = 0;
    while (below + step <= value) below += step;
    const std::uint32_t nearest = 2 * (value - below) < step ? below : below + step;
    return nearest == 0 ? step : nearest;
}

// The plain list of all fragments, and whose segment counts each number.
class PlainList {
public:
    explicit PlainList(std::uint32_t precision) : precision_(precision) {}

    void data(std::uint32_t segment, std::uint32_t n, std::uint64_t time, std::uint64_t duration) {
        openSegment(segment);
        if (!numbers_.empty()) skipTo(n);
        add(n, {Known::kData, time, nearestMultiple(precision_, duration)});
    }

    void gap(std::uint32_t segment, std::uint32_t n) {
        if (numbers_.empty()) return;
        if (n > numbers_.rbegin()->first + 1) openSegment(segment);
        skipTo(n);
        add(n, {Known::kGap, 0, 0});
    }

    const std::map<std::uint32_t, Known>& numbers() const { return numbers_; }
    const std::map<std::uint32_t, std::uint32_t>& perSegment() const { return perSegment_; }

private:
    void openSegment(std::uint32_t segment) {
        if (perSegment_.empty()) perSegment_[segment];
        for (std::uint32_t s = perSegment_.rbegin()->first; s <= segment; ++s) perSegment_[s];
    }

    void skipTo(std::uint32_t n) {
        for (std::uint32_t skipped = numbers_.rbegin()->first + 1; skipped < n; ++skipped) {
            add(skipped, {Known::kSkipped, 0, 0});
        }
    }

    void add(std::uint32_t n, const Known& known) {
        numbers_[n] = known;
        ++perSegment_.rbegin()->second;
    }

    std::uint32_t precision_;
    std::map<std::uint32_t, Known> numbers_;
    std::map<std::uint32_t, std::uint32_t> perSegment_;
};

struct RandomRun {
    BootstrapBuilder builder;
    PlainList list;
};

RandomRun randomRun(kz::test::Random& random, std::uint32_t precision, std::uint32_t drift) {
    RandomRun run{BootstrapBuilder(precision, 1.0, drift), PlainList(precision)};
    const std::uint32_t usual = 500 + random() % 5000;
    std::uint32_t segment = 1;
    std::uint32_t n = 1 + random() % 5;
    std::uint64_t time = random() % 10000;
    for (int i = 0; i < 100; ++i) {
        std::uint64_t duration = usual;
        if (random() % 3 == 0) duration += random() % 200;
        if (random() % 10 == 0) duration = 1 + random() % (2 * usual);
        if (random() % 6 == 0) {
            run.builder.addDiscontinuity(segment, n, milliseconds(time));
            run.list.gap(segment, n);
        } else {
            run.builder.addFragment(segment, n, milliseconds(time), duration);
            run.list.data(segment, n, time, duration);
        }
        time += duration + (random() % 12 == 0 ? random() % (2 * drift + 1) : 0);
        n += random() % 9 == 0 ? 1 + random() % 5 : 1;
        if (random() % 15 == 0) segment += 1 + random() % 3;
    }
    if (random() % 2 == 0) run.builder.markEnd();
    return run;
}

TEST(BootstrapPropertyTest, APlayerRecoversEveryFragmentOfThePlainList) {
    for (unsigned seed = 1; seed <= 300; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        kz::test::Random random(seed);
        const std::uint32_t precision = 1 + random() % 200;
        const std::uint32_t drift = random() % 1500;
        const RandomRun run = randomRun(random, precision, drift);
        for (const auto& [number, known] : run.list.numbers()) {
            const auto found = lookUp(run.builder.bootstrap(), number);
            ASSERT_TRUE(found) << number;
            if (known.kind == Known::kData) {
                ASSERT_EQ(found->indicator, 0U) << number;
                ASSERT_EQ(found->duration, known.duration) << number;
                ASSERT_LE(std::max(found->time, known.time) - std::min(found->time, known.time),
                          drift)
                    << number;
            } else {
                ASSERT_EQ(found->indicator, known.kind == Known::kGap ? 1U : 2U) << number;
            }
        }
    }
}

TEST(BootstrapPropertyTest, SegmentsCountTheNumbersOfThePlainList) {
    for (unsigned seed = 1; seed <= 300; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        kz::test::Random random(seed);
        const RandomRun run = randomRun(random, 100, 1000);
        std::map<std::uint32_t, std::uint32_t> counts;
        for (const SegmentRunEntry& entry : run.builder.bootstrap().segmentRunTables[0].entries) {
            EXPECT_EQ(counts.count(entry.firstSegment), 0U);
            counts[entry.firstSegment] = entry.fragmentsPerSegment;
        }
        EXPECT_EQ(counts, run.list.perSegment());
        EXPECT_TRUE(run.builder.fullBootstrap().segmentRunTables ==
                    run.builder.bootstrap().segmentRunTables);
    }
}

TEST(BootstrapPropertyTest, TheFullTableHasEveryFragmentWithItsRealTime) {
    for (unsigned seed = 1; seed <= 100; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        kz::test::Random random(seed);
        const RandomRun run = randomRun(random, 100, 1000);
        std::map<std::uint32_t, std::uint64_t> times;
        const BootstrapInfo full = run.builder.fullBootstrap();
        for (const FragmentRunEntry& e : full.fragmentRunTables[0].entries) {
            if (e.fragmentDuration != 0) times[e.firstFragment] = e.firstFragmentTimestamp.value;
        }
        std::map<std::uint32_t, std::uint64_t> expected;
        for (const auto& [number, known] : run.list.numbers()) {
            if (known.kind == Known::kData) expected[number] = known.time;
        }
        EXPECT_EQ(times, expected);
    }
}

std::vector<std::string> randomTexts(kz::test::Random& random) {
    std::vector<std::string> texts(random() % 4);
    for (std::string& text : texts) {
        for (unsigned left = random() % 12; left > 0; --left) {
            text.push_back(static_cast<char>(1 + random() % 255));
        }
    }
    return texts;
}

BootstrapInfo randomInfo(kz::test::Random& random) {
    BootstrapInfo info;
    info.version = random();
    info.profile = random() % 4;
    info.live = random() % 2 != 0;
    info.update = random() % 2 != 0;
    info.timescale = random();
    info.currentMediaTime = milliseconds(random.u64());
    info.smpteTimeCodeOffset = random.u64();
    info.movieIdentifier = "movie";
    info.servers = randomTexts(random);
    info.qualities = randomTexts(random);
    info.drmData = "drm";
    info.metadata = random() % 2 != 0 ? "meta" : "";
    info.segmentRunTables.resize(random() % 3);
    for (SegmentRunTable& table : info.segmentRunTables) {
        table.update = random() % 2 != 0;
        table.qualities = randomTexts(random);
        table.entries.resize(random() % 4);
        for (SegmentRunEntry& entry : table.entries) {
            entry = {static_cast<std::uint32_t>(random()), static_cast<std::uint32_t>(random())};
        }
    }
    info.fragmentRunTables.resize(random() % 3);
    for (FragmentRunTable& table : info.fragmentRunTables) {
        table.update = random() % 2;
        table.timescale = random();
        table.qualities = randomTexts(random);
        table.entries.resize(random() % 4);
        for (FragmentRunEntry& entry : table.entries) {
            entry.firstFragment = random();
            entry.firstFragmentTimestamp = milliseconds(random.u64());
            entry.fragmentDuration = random() % 2 == 0 ? 0 : random();
            if (entry.fragmentDuration == 0) entry.discontinuityIndicator = random() % 256;
        }
    }
    return info;
}

TEST(BootstrapPropertyTest, AnyInfoIsReadBackAsItWasWritten) {
    for (unsigned seed = 1; seed <= 300; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        kz::test::Random random(seed);
        const BootstrapInfo info = randomInfo(random);
        std::stringstream stream;
        const std::uint64_t count = writeBootstrap(stream, info, false);
        EXPECT_EQ(count, stream.str().size());
        BootstrapInfo back;
        readBootstrap(stream, back);
        EXPECT_TRUE(back == info);
        EXPECT_EQ(static_cast<std::size_t>(stream.tellg()), stream.str().size());
    }
}

TEST(BootstrapPropertyTest, AnInfoCutAnywhereIsRefused) {
    for (unsigned seed = 1; seed <= 20; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        kz::test::Random random(seed);
        std::ostringstream out;
        writeBootstrap(out, randomInfo(random), false);
        for (std::size_t length = 0; length < out.str().size(); ++length) {
            std::istringstream stream(out.str().substr(0, length));
            BootstrapInfo back;
            ASSERT_THROW(readBootstrap(stream, back), InvalidBootstrapFormat) << length;
        }
    }
}

}  // namespace
}  // namespace torvo::kzs
