#include <algorithm>
#include <deque>
#include <map>
#include <random>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "qlix_flv/FlvFixture.h"
#include "support/FlvBuilder.h"

namespace kz::test {
namespace {

using ::testing::ElementsAre;

FlvTag audio(std::uint32_t timeMs) { return mp3Frame(timeMs, raw({1})); }
FlvTag video(std::uint32_t timeMs) { return avcFrame(timeMs, true, raw({1})); }

Drained ordered(const std::vector<FlvTag>& tags, const std::vector<std::uint8_t>& types = {9, 8}) {
    FlvFixture file(flvFile(tags));
    file.open();
    return drain(file.ordered(types));
}

TEST(TimeOrderTest, TheEarlierTimeGoesFirstAmongTheTypes) {
    const Drained tags = ordered({video(40), audio(0), audio(23), audio(46), video(80)});
    EXPECT_THAT(tags.times(), ElementsAre(0, 23, 40, 46, 80));
    EXPECT_THAT(tags.types(), ElementsAre(8, 8, 9, 8, 9));
}

TEST(TimeOrderTest, TiesStayAsInTheFile) {
    EXPECT_THAT(ordered({audio(0), video(0), video(40), audio(40)}).types(),
                ElementsAre(8, 9, 9, 8));
}

TEST(TimeOrderTest, TagsOfOneTypeKeepTheirOrder) {
    EXPECT_THAT(ordered({audio(50), audio(10), video(20), audio(60)}).times(),
                ElementsAre(20, 50, 10, 60));
    EXPECT_THAT(ordered({audio(50), audio(10), audio(30)}).times(), ElementsAre(50, 10, 30));
}

TEST(TimeOrderTest, AnEndOfSequenceTagBehindLaterAudioIsPutBeforeIt) {
    const Drained tags = ordered(
        {video(0), audio(0), video(40), audio(23), audio(46), audio(69), audio(92), avcEnd(80)});
    EXPECT_THAT(tags.times(), ElementsAre(0, 0, 23, 40, 46, 69, 80, 92));
}

TEST(TimeOrderTest, NegativeTimesComeFirst) {
    EXPECT_THAT(ordered({audio(0), video(0xfffffff6)}).times(), ElementsAre(-10, 0));
}

TEST(TimeOrderTest, TypesThatAreNotListedAreLeftOut) {
    EXPECT_THAT(ordered({video(40), audio(0), flvTag(18, 0, Bytes()), video(80)}, {9}).times(),
                ElementsAre(40, 80));
    EXPECT_THAT(ordered({video(40), audio(0)}, {}).times(), ElementsAre());
    EXPECT_THAT(ordered({video(40), audio(0)}, {8, 8, 9}).times(), ElementsAre(0, 40));
}

TEST(TimeOrderTest, TagsBeforeDamageAreGivenOutFirst) {
    FlvFixture file(flvFile({video(40), audio(0), video(80)}) + fill(7, 1));
    file.open();
    const Drained tags = drain(file.ordered());
    EXPECT_EQ(tags.result, 8U);
    EXPECT_THAT(tags.times(), ElementsAre(0, 40, 80));
}

TEST(TimeOrderTest, TheLookAheadEndsAfterAThousandTags) {
    for (const int between : {999, 1000}) {
        std::vector<FlvTag> tags;
        for (int i = 0; i < between; ++i) tags.push_back(video(100));
        tags.push_back(audio(0));
        const std::vector<std::int32_t> times = ordered(tags).times();
        // The audio tag is the thousandth or the one behind it: then it waits for one video tag.
        EXPECT_EQ(std::find(times.begin(), times.end(), 0) - times.begin(), between - 999);
    }
}

TEST(TimeOrderTest, TheLookAheadEndsAfterFourMebibytes) {
    const std::size_t limit = 4 * 1024 * 1024;
    // Behind the first tag: its size word, and a tag of 11 + 5 + n bytes with its size word.
    for (const std::size_t excess : {0U, 1U}) {
        const std::vector<FlvTag> tags{video(100), avcFrame(100, false, Bytes()),
                                       avcFrame(100, false, fill(limit - 44 + excess, 0)),
                                       audio(0)};
        const std::vector<std::int32_t> times = ordered(tags).times();
        EXPECT_EQ(std::find(times.begin(), times.end(), 0) - times.begin(),
                  static_cast<std::ptrdiff_t>(excess));
    }
}

TEST(TimeOrderTest, ATagLargerThanTheLookAheadIsStillPutInOrder) {
    EXPECT_THAT(
        ordered({avcFrame(40, true, fill(5 * 1024 * 1024, 0)), audio(0), video(80)}).times(),
        ElementsAre(0, 40, 80));
}

/// The slow and obvious merge: all tags in one list, and the rule word for word.
std::vector<SeenTag> mergedByHand(const std::vector<FlvTag>& tags,
                                  const std::vector<std::uint8_t>& types) {
    struct Placed {
        SeenTag tag;
        std::uint64_t end;
    };
    std::vector<Placed> file;
    std::uint64_t end = 13;
    for (const FlvTag& tag : tags) {
        file.push_back({{tag.type, static_cast<std::int32_t>(tag.timeMs),
                         static_cast<std::uint32_t>(tag.body.size())},
                        end + 11 + tag.body.size()});
        end = file.back().end + 4;
    }
    std::vector<SeenTag> out;
    std::deque<Placed> held;
    std::size_t next = 0;
    std::uint64_t position = 13;
    const auto isWanted = [&](int type) {
        return std::find(types.begin(), types.end(), type) != types.end();
    };
    const auto knowsAll = [&] {
        return std::all_of(types.begin(), types.end(), [&](int type) {
            return std::any_of(held.begin(), held.end(),
                               [&](const Placed& p) { return p.tag.type == type; });
        });
    };
    for (;;) {
        while (next < file.size() && !knowsAll() &&
               (held.empty() ||
                (held.size() < 1000 && position - held.front().end <= 4 * 1024 * 1024))) {
            position = file[next].end + 4;
            if (isWanted(file[next].tag.type)) held.push_back(file[next]);
            ++next;
        }
        if (held.empty()) return out;
        std::map<int, std::size_t> heads;
        for (std::size_t i = 0; i < held.size(); ++i) heads.emplace(held[i].tag.type, i);
        std::size_t best = held.size();
        for (const auto& head : heads) {
            if (best == held.size() || std::make_pair(held[head.second].tag.timeMs, head.second) <
                                           std::make_pair(held[best].tag.timeMs, best)) {
                best = head.second;
            }
        }
        out.push_back(held[best].tag);
        held.erase(held.begin() + static_cast<std::ptrdiff_t>(best));
    }
}

TEST(TimeOrderTest, AgreesWithAPlainListOnRandomFiles) {
    for (unsigned seed = 1; seed <= 40; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        std::mt19937 engine(seed);
        const auto random = [&] { return static_cast<std::uint32_t>(engine()); };
        std::vector<FlvTag> tags;
        const unsigned count = seed % 10 == 0 ? 2500 : random() % 60;
        const unsigned rareness = seed % 20 == 0 ? 1100 : 1 + random() % 8;
        const std::size_t largest = seed % 7 == 0 ? 900000 : 300;
        for (unsigned i = 0; i < count; ++i) {
            const std::uint32_t time = i * 20 + random() % 300;
            const int type = random() % rareness == 0 ? 8 : random() % 9 == 0 ? 18 : 9;
            tags.push_back(flvTag(
                type, time,
                fill(random() % largest / (count > 99 ? 100 : 1), static_cast<int>(i & 0xff))));
        }
        const std::vector<std::uint8_t> types =
            seed % 3 == 0 ? std::vector<std::uint8_t>{9, 8, 18} : std::vector<std::uint8_t>{9, 8};
        const Drained drained = ordered(tags, types);
        EXPECT_EQ(drained.result, 0U);
        EXPECT_EQ(drained.tags, mergedByHand(tags, types));
    }
}

}  // namespace
}  // namespace kz::test
