#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "kzs/AVFragmenter.h"
#include "kzs/AudioFragmenter.h"
#include "kzs/FragmenterText.h"
#include "support/Random.h"

namespace torvo::kzs {
namespace {

// The rules for audio and video as a table of words that is looked up for every sample. Conditions:
// k key frame, x crosses a line, capital letters deny. Endings: "sample" at the sample, "both" at
// the sample and the cells move, "grid" on the line of the previous cell, "move" only the cells
// move.
struct Rule {
    int state;
    std::string condition;
    std::string kind;
    std::string ending;
    int next;
};

const std::vector<Rule>& rules() {
    static const std::vector<Rule> table = {
        {1, "xk", "None", "openAtSample", 4}, {1, "xK", "None", "openOnLine", 2},
        {2, "k", "None", "move", 4},          {3, "kx", "SpanStart", "grid", 7},
        {3, "kX", "Complete", "sample", 4},   {3, "Kx", "SpanStart", "grid", 6},
        {8, "kx", "SpanStart", "grid", 7},    {8, "kX", "Complete", "sample", 4},
        {8, "Kx", "SpanStart", "grid", 6},    {4, "kx", "Complete", "both", 4},
        {4, "Kx", "None", "move", 3},         {5, "kx", "Complete", "grid", 5},
        {5, "Kx", "None", "move", 3},         {6, "kx", "SpanCell", "grid", 7},
        {6, "kX", "SpanEnd", "sample", 4},    {6, "Kx", "SpanCell", "grid", 6},
        {7, "kx", "SpanEnd", "grid", 5},      {7, "Kx", "SpanEnd", "grid", 8},
    };
    return table;
}

class ModelOfAV {
public:
    explicit ModelOfAV(std::uint64_t f) : f_(f) {}

    std::string add(const FragmenterSample& sample) {
        const std::uint64_t t = sample.time.value;
        std::uint64_t cell = 1;  // counted, not divided
        while (cell * f_ <= t) ++cell;
        if (state_ == 0) {
            state_ = 1;
            current_ = (cell - 1) * f_ == t ? cell - 1 : cell;
        }
        const bool key = sample.trackKind == 1 && sample.isKeyFrame;
        const bool crosses = cell > current_;
        if (!(state_ >= 3 && t == start_)) {
            for (const Rule& rule : rules()) {
                if (rule.state == state_ && holds(rule.condition, key, crosses)) {
                    return apply(rule, t, cell);
                }
            }
        }
        return "None 0 [0,0) " + cells(cell, current_);
    }

private:
    static bool holds(const std::string& condition, bool key, bool crosses) {
        for (const char c : condition) {
            if (c == 'k' && !key) return false;
            if (c == 'K' && key) return false;
            if (c == 'x' && !crosses) return false;
            if (c == 'X' && crosses) return false;
        }
        return true;
    }

    std::string cells(std::uint64_t cell, std::uint64_t previous) const {
        return std::to_string(cell) + "/" + std::to_string(previous) + " state " +
               std::to_string(state_);
    }

    std::string apply(const Rule& rule, std::uint64_t t, std::uint64_t cell) {
        const std::uint64_t line = previous_ * f_;
        const std::uint64_t oldStart = start_;
        const std::uint64_t oldCell = current_;
        state_ = rule.next;
        if (rule.ending != "sample") {
            previous_ = current_;
            current_ = cell;
        }
        if (rule.ending == "openOnLine") start_ = (cell - 1) * f_;
        if (rule.ending == "openAtSample" || rule.ending == "sample" || rule.ending == "both") {
            start_ = t;
        }
        if (rule.ending == "grid") start_ = line;
        if (rule.kind == "None") return "None 0 [0,0) " + cells(cell, current_);
        return rule.kind + " " + std::to_string(oldStart / f_ + 1) + " [" +
               std::to_string(oldStart) + "," + std::to_string(start_) + ") " +
               cells(cell, oldCell);
    }

    std::uint64_t f_;
    int state_ = 0;
    std::uint64_t start_ = 0;
    std::uint64_t current_ = 0;
    std::uint64_t previous_ = 0;
};

std::vector<FragmenterSample> randomSamples(kz::test::Random& random, std::uint64_t f,
                                            bool withVideo) {
    const unsigned keyEvery = 1 + random() % 60;
    const std::uint64_t step = 1 + random() % (f / (1 + random() % 8) + 1);
    std::uint64_t t = random() % 2 == 0 ? 0 : random() % (3 * f);
    std::vector<FragmenterSample> samples;
    for (int i = 0; i < 200; ++i) {
        FragmenterSample sample;
        sample.trackKind = withVideo ? random() % 3 : (random() % 2) * 2;
        sample.isKeyFrame = random() % keyEvery == 0;
        sample.time = milliseconds(t);
        samples.push_back(sample);
        if (random() % 3 != 0) t += random() % 2 == 0 ? step : random() % (2 * step);
        if (random() % 8 == 0) t = (t / f + 1) * f;       // onto a line
        if (random() % 40 == 0) t += f * (random() % 6);  // over some cells
    }
    return samples;
}

TEST(FragmenterPropertyTest, AVFollowsItsRulesOnRandomInputs) {
    for (unsigned seed = 1; seed <= 400; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        kz::test::Random random(seed);
        const std::uint32_t f = 1 + random() % 500;
        AVFragmenter fragmenter(f, false);
        ModelOfAV model(f);
        for (const FragmenterSample& sample : randomSamples(random, f, true)) {
            ASSERT_EQ(textOf(fragmenter.addSample(sample)), model.add(sample));
        }
    }
}

TEST(FragmenterPropertyTest, AVFragmentsJoinWithoutGapsAndItsNumbersRise) {
    for (unsigned seed = 1; seed <= 400; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        kz::test::Random random(seed);
        const std::uint32_t f = 1 + random() % 500;
        AVFragmenter fragmenter(f, false);
        std::optional<FragmentEvent> before;
        for (const FragmenterSample& sample : randomSamples(random, f, true)) {
            const FragmentEvent event = fragmenter.addSample(sample);
            if (event.kind == FragmentEventKind::None) continue;
            ASSERT_LT(event.start.value, event.end.value);
            if (before) {
                ASSERT_EQ(event.start.value, before->end.value);
                ASSERT_GT(event.fragmentNumber, before->fragmentNumber);
            }
            before = event;
        }
    }
}

TEST(FragmenterPropertyTest, AudioCutsWhereASampleIsTheFirstOfItsCell) {
    for (unsigned seed = 1; seed <= 400; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        kz::test::Random random(seed);
        const std::uint32_t f = 1 + random() % 500;
        const auto samples = randomSamples(random, f, false);
        // The list of all cuts: samples that lie in a later cell than the one before. The first
        // sample is one only on a line.
        std::vector<std::uint64_t> cuts;
        for (std::size_t i = 0; i < samples.size(); ++i) {
            const std::uint64_t t = samples[i].time.value;
            const bool later = i == 0 ? t % f == 0 : t / f > samples[i - 1].time.value / f;
            if (later) cuts.push_back(t);
        }
        std::vector<std::uint64_t> got;
        AudioFragmenter fragmenter(f, false);
        for (const FragmenterSample& sample : samples) {
            const FragmentEvent event = fragmenter.addSample(sample);
            if (event.kind == FragmentEventKind::None) continue;
            if (got.empty()) got.push_back(event.start.value);
            ASSERT_EQ(event.start.value, got.back());
            ASSERT_EQ(event.fragmentNumber, event.start.value / f + 1);
            got.push_back(event.end.value);
        }
        if (got.empty() && !cuts.empty()) {
            got.push_back(fragmenter.finish(samples.back()).start.value);
        }
        EXPECT_EQ(got, cuts);
    }
}

}  // namespace
}  // namespace torvo::kzs
