#include <limits>

#include <gtest/gtest.h>

#include "kzm/impl/BoxSupport.h"
#include "kzm/impl/EdtsBox.h"
#include "kzm/impl/ElstBox.h"

namespace qlix::kzm::impl {
namespace {

using namespace kz::test;

Edit edit(std::uint64_t duration, std::int64_t mediaTime, std::uint64_t start) {
    Edit out;
    out.duration = duration;
    out.mediaTime = mediaTime;
    out.presentationStart = start;
    return out;
}

TEST(ElstBoxTest, SetsRoomForTwiceTheEditsAndOneAside) {
    EXPECT_EQ(ElstBox({}, 0).size(), 36U);
    EXPECT_EQ(ElstBox({}, 1).size(), 76U);
    EXPECT_EQ(ElstBox({}, 1000).size(), 40036U);
}

TEST(ElstBoxTest, FillsItsRoomWithZeros) {
    WriteFile file;
    ElstBox box(file.context(), 1);
    EXPECT_EQ(written(file, box), fullBox("elst", 1, 0, fill(64, 0)));
}

TEST(ElstBoxTest, WritesItsRowsInFrontOfTheZeros) {
    WriteFile file;
    ElstBox box(file.context(), 1);
    box.addEdit(0x100000002, 5);
    box.addEdit(7, -1);
    EXPECT_EQ(written(file, box), hexTable(R"(
        0   0000004c          size 76
        4   656c7374          'elst'
        8   01000000          version 1, flags 0
        12  00000002          two rows
        16  0000000100000002  duration
        24  0000000000000005  media time
        32  00010000          rate 1.0
        36  0000000000000007  duration
        44  ffffffffffffffff  an empty edit
        52  00010000          rate 1.0
        56  0000000000000000000000000000000000000000  room for one more
    )"));
}

TEST(ElstBoxTest, RewritesCountAndRowsOnly) {
    WriteFile file;
    ElstBox box(file.context(), 0);
    box.write();
    file.stream.seek(0);
    file.stream.write("kept kept kept kept kept kept kept!!", 36);
    box.write();
    EXPECT_EQ(file.bytes(),
              text("kept kept ke") + u32(0) + text("kept kept kept kept!!").slice(1, 20));
    box.addEdit(3, 4);
    box.setLastDuration(6);
    box.write();
    EXPECT_EQ(file.bytes(), text("kept kept ke") + u32(1) + u64(6) + u64(4) + u32(0x10000));
}

TEST(ElstBoxTest, IsFullAtItsCapacity) {
    ElstBox box({}, 1);
    for (int i = 0; i < 3; ++i) box.addEdit(1, 0);
    EXPECT_EQ(codeThrownBy([&] { box.addEdit(1, 0); }), 16U);
    EXPECT_EQ(box.edits().size(), 3U);
}

TEST(ElstBoxTest, ReadsVersionOne) {
    ReadFile file(fullBox("elst", 1, 0, u32(2), u64(10), u64(0x100000000), u16(1), u16(2), u64(5),
                          u64(0xFFFFFFFFFFFFFFFF), u16(0xFFFF), u16(0)));
    const auto read = readAs<ElstBox>(file);
    Edit first = edit(10, 0x100000000, 0);
    first.rateFraction = 2;
    Edit second = edit(5, -1, 10);
    second.rateInteger = -1;
    EXPECT_EQ(read->edits(), (std::vector<Edit>{first, second}));
    EXPECT_EQ(read->emptyEditCount(), 1U);
    EXPECT_EQ(read->capacity(), 2U);  // 44 bytes of body
    EXPECT_TRUE(file.warnings.empty());
}

TEST(ElstBoxTest, ReadsVersionZero) {
    ReadFile file(fullBox("elst", 0, 0, u32(2), u32(10), u32(0xFFFFFFFF), u32(0x10000), u32(5),
                          u32(8), u32(0x10000)));
    const auto read = readAs<ElstBox>(file);
    EXPECT_EQ(read->edits(), (std::vector<Edit>{edit(10, -1, 0), edit(5, 8, 10)}));
    EXPECT_EQ(read->capacity(), 2U);  // 28 bytes of body
}

TEST(ElstBoxTest, IsLegalWithoutRows) {
    ReadFile file(fullBox("elst", 1, 0, u32(0), fill(40, 0)));
    EXPECT_TRUE(readAs<ElstBox>(file)->edits().empty());
}

TEST(ElstBoxTest, WarnsOfABodyThatIsNoMultipleOfFour) {
    ReadFile file(fullBox("elst", 1, 0, u32(0), fill(3, 0)));
    EXPECT_TRUE(readAs<ElstBox>(file)->edits().empty());
    EXPECT_EQ(file.warnings, std::vector<std::uint32_t>{3073});
}

TEST(ElstBoxTest, RefusesACountBeyondTheBoxOrTheLimit) {
    const std::pair<std::uint32_t, std::uint32_t> cases[] = {
        {2, 27}, {100000000, 27}, {100000001, 9}, {0xFFFFFFFF, 9}};
    for (const auto& each : cases) {
        ReadFile file(fullBox("elst", 1, 0, u32(each.first), fill(39, 0)));
        EXPECT_EQ(codeThrownBy([&] { file.read(); }), each.second) << each.first;
    }
}

TEST(ElstBoxTest, NeedsAllItsBytes) {
    EXPECT_EQ(codesWhenCut(fullBox("elst", 1, 0, u32(1), fill(20, 0))), codesOfAFullBox(36));
    EXPECT_EQ(codesWhenCut(fullBox("elst", 0, 0, u32(1), fill(12, 0))), codesOfAFullBox(28));
}

TEST(ElstBoxTest, HoldsPresentationTimesAtTheLargestValue) {
    ReadFile file(fullBox("elst", 1, 0, u32(3), u64(~0ULL), u64(0), u32(0x10000), u64(9), u64(0),
                          u32(0x10000), u64(9), u64(0), u32(0x10000)));
    const auto read = readAs<ElstBox>(file);
    EXPECT_EQ(read->edits()[2].presentationStart, ~0ULL);
    EXPECT_EQ(read->edits()[2].presentationEnd(), ~0ULL);
}

TEST(EdtsBoxTest, HoldsItsEditList) {
    WriteFile file;
    EdtsBox box(file.context(), 0);
    EXPECT_EQ(written(file, box), kz::test::box("edts", fullBox("elst", 1, 0, fill(24, 0))));
    ReadFile read(file.bytes());
    EXPECT_NE(readAs<EdtsBox>(read)->elst(), nullptr);
}

TEST(EditTest, IsEmptyFromAllOnesLessOneOn) {
    EXPECT_TRUE(edit(1, -1, 0).isEmpty());
    EXPECT_TRUE(edit(1, -2, 0).isEmpty());
    EXPECT_FALSE(edit(1, -3, 0).isEmpty());
    EXPECT_FALSE(edit(1, 0, 0).isEmpty());
}

// Movie ticks: 600 a second; media ticks: 1000 a second.
const std::vector<Edit> kEdits = {edit(600, -1, 0), edit(1200, 500, 600), edit(600, 9000, 1800)};

TEST(EditListTest, IsWholeFromTheStart) {
    EXPECT_EQ(clippedAt(kEdits, {0, 1000}, 600, 1000), kEdits);
}

TEST(EditListTest, KeepsAnEmptyEditWholeThatTheStartLiesIn) {
    EXPECT_EQ(clippedAt(kEdits, {500, 1000}, 600, 1000), kEdits);
}

TEST(EditListTest, DropsEditsThatEndAtTheStart) {
    EXPECT_EQ(clippedAt(kEdits, {1000, 1000}, 600, 1000),
              (std::vector<Edit>{kEdits[1], kEdits[2]}));
    EXPECT_EQ(clippedAt(kEdits, {3000, 1000}, 600, 1000), (std::vector<Edit>{kEdits[2]}));
    EXPECT_TRUE(clippedAt(kEdits, {4000, 1000}, 600, 1000).empty());
}

TEST(EditListTest, CutsTheFrontOffTheFirstEdit) {
    // 1.5 s is half a second into the second edit: 300 movie ticks, 500 media ticks.
    EXPECT_EQ(clippedAt(kEdits, {1500, 1000}, 600, 1000),
              (std::vector<Edit>{edit(900, 1000, 900), kEdits[2]}));
}

TEST(EditListTest, RoundsAHalfDownWhenItCuts) {
    // One media tick of 3 a second is 2/6 movie ticks of 1 a second: it rounds to 0.
    const std::vector<Edit> edits = {edit(10, 0, 0)};
    EXPECT_EQ(clippedAt(edits, {1, 3}, 1, 3), edits);
    // Two ticks are 2/3: (1 x 2 + 1) / 3 is 1, which is 3 media ticks.
    EXPECT_EQ(clippedAt(edits, {2, 3}, 1, 3), (std::vector<Edit>{edit(9, 3, 1)}));
}

TEST(EditListTest, StaysWithinItsNumbers) {
    const std::vector<Edit> edits = {edit(~0ULL, std::numeric_limits<std::int64_t>::max(), 0)};
    const auto clipped = clippedAt(edits, {1ULL << 62, 1}, 0xFFFFFFFF, 1);
    for (const Edit& each : clipped) EXPECT_GE(each.mediaTime, 0);
}

TEST(EditListTest, RefusesATimescaleOfZero) {
    EXPECT_EQ(codeThrownBy([] { clippedAt(kEdits, {10, 0}, 600, 1000); }), 10U);
}

}  // namespace
}  // namespace qlix::kzm::impl
