#include <gtest/gtest.h>

#include "kzm/impl/BoxSupport.h"
#include "kzm/impl/Co64Box.h"
#include "kzm/impl/StcoBox.h"
#include "kzm/impl/StssBox.h"
#include "kzm/impl/StszBox.h"
#include "kzm/impl/TableCursors.h"

namespace qlix::kzm::impl {
namespace {

using namespace kz::test;

// A table box as it is read from the file that this object holds.
template <class T>
class Table {
public:
    explicit Table(const Bytes& bytes) : file_(bytes), box_(file_.read()) {}

    const T& operator*() const { return dynamic_cast<const T&>(*box_); }
    const T* operator->() const { return &**this; }

private:
    ReadFile file_;
    BoxPtr box_;
};

Bytes rows(std::initializer_list<std::uint32_t> words) {
    Bytes out;
    for (const std::uint32_t word : words) out += u32(word);
    return out;
}

Table<SttsBox> stts(std::uint32_t count, std::initializer_list<std::uint32_t> words) {
    return Table<SttsBox>(fullBox("stts", 0, 0, u32(count), rows(words)));
}

std::string rangeOf(const SttsBox& box, std::uint64_t start, std::uint64_t end) {
    const SampleRange range = samplesBetween(box.rows(), start, end);
    if (range.isEmpty()) return "none";
    return std::to_string(range.first) + "-" + std::to_string(range.end - 1);
}

std::string timesOf(const SttsBox& box, const SampleRange& range) {
    std::string out;
    for (DecodeTimeCursor cursor(box.rows(), range); cursor.isValid(); cursor.next()) {
        out += std::to_string(cursor.sample()) + "@" + std::to_string(cursor.time()) + " ";
    }
    return out;
}

TEST(SamplesBetweenTest, TakesTheStartAndLeavesTheEnd) {
    const auto box = stts(2, {3, 10, 2, 20});  // 0 10 20, 30 50
    EXPECT_EQ(rangeOf(*box, 0, 70), "1-5");
    EXPECT_EQ(rangeOf(*box, 10, 30), "2-3");
    EXPECT_EQ(rangeOf(*box, 11, 31), "3-4");
    EXPECT_EQ(rangeOf(*box, 21, 50), "4-4");
    EXPECT_EQ(rangeOf(*box, 50, 51), "5-5");
    EXPECT_EQ(rangeOf(*box, 51, 1000), "none");
    EXPECT_EQ(rangeOf(*box, 0, 0), "none");
    EXPECT_EQ(rangeOf(*box, 30, 10), "none");
}

TEST(SamplesBetweenTest, IsEmptyWithoutRows) { EXPECT_EQ(rangeOf(*stts(0, {}), 0, 100), "none"); }

TEST(SamplesBetweenTest, KeepsSamplesOfNoDurationAtTheStart) {
    const auto box = stts(4, {1, 10, 2, 0, 1, 10, 1, 0});  // 0, 10 10, 10, 20
    EXPECT_EQ(rangeOf(*box, 10, 11), "2-4");
    EXPECT_EQ(rangeOf(*box, 0, 10), "1-1");
    EXPECT_EQ(rangeOf(*box, 20, 21), "5-5");
    EXPECT_EQ(rangeOf(*box, 11, 20), "none");
}

TEST(DecodeTimeCursorTest, GoesFromRowToRow) {
    const auto box = stts(4, {2, 10, 0, 99, 2, 20, 1, 5});
    EXPECT_EQ(timesOf(*box, {1, 6}), "1@0 2@10 3@20 4@40 5@60 ");
    EXPECT_EQ(timesOf(*box, {2, 4}), "2@10 3@20 ");
    EXPECT_EQ(timesOf(*box, {4, 6}), "4@40 5@60 ");
    EXPECT_EQ(timesOf(*box, {3, 3}), "");
}

TEST(DecodeTimeCursorTest, EndsWithTheTable) {
    EXPECT_EQ(timesOf(*stts(1, {2, 10}), {1, 100}), "1@0 2@10 ");
    EXPECT_EQ(timesOf(*stts(0, {}), {1, 100}), "");
}

Table<CttsBox> ctts(std::uint32_t count, std::initializer_list<std::uint32_t> words) {
    return Table<CttsBox>(fullBox("ctts", 0, 0, u32(count), rows(words)));
}

std::string offsetsFrom(const CttsBox& box, std::uint32_t sample, int count) {
    CompositionCursor cursor(&box.rows(), sample);
    std::string out;
    for (int i = 0; i < count; ++i, cursor.next()) out += std::to_string(cursor.offset()) + " ";
    return out;
}

TEST(CompositionCursorTest, GoesFromRowToRow) {
    const auto box = ctts(3, {2, 7, 0, 99, 1, 9});
    EXPECT_EQ(offsetsFrom(*box, 1, 3), "7 7 9 ");
    EXPECT_EQ(offsetsFrom(*box, 2, 2), "7 9 ");
    EXPECT_EQ(offsetsFrom(*box, 3, 1), "9 ");
}

TEST(CompositionCursorTest, HoldsTheLastOffsetBehindTheTable) {
    EXPECT_EQ(offsetsFrom(*ctts(2, {1, 7, 1, 9}), 1, 5), "7 9 9 9 9 ");
}

TEST(CompositionCursorTest, GivesZeroWhenPlacedBehindTheTable) {
    EXPECT_EQ(offsetsFrom(*ctts(2, {1, 7, 1, 9}), 3, 3), "0 0 0 ");
    EXPECT_EQ(offsetsFrom(*ctts(0, {}), 1, 2), "0 0 ");
}

TEST(CompositionCursorTest, GivesZeroWithoutATable) {
    CompositionCursor cursor(nullptr, 5);
    EXPECT_EQ(cursor.offset(), 0U);
    cursor.next();
    EXPECT_EQ(cursor.offset(), 0U);
}

Table<StscBox> stsc(std::uint32_t count, std::initializer_list<std::uint32_t> words) {
    return Table<StscBox>(fullBox("stsc", 0, 0, u32(count), rows(words)));
}

// "sample:chunk/description" of the sample placed at and of those behind it.
std::string chunksFrom(const StscBox& box, std::uint32_t sample, int count) {
    ChunkCursor cursor(box.rows(), sample);
    cursor.skipTo(sample);
    std::string out;
    for (int i = 0; i < count && cursor.isValid(); ++i, cursor.next()) {
        out += std::to_string(cursor.sample()) + ":" + std::to_string(cursor.chunk()) + "/" +
               std::to_string(cursor.descriptionIndex()) + " ";
    }
    return out;
}

TEST(ChunkCursorTest, GoesFromChunkToChunkAndFromRowToRow) {
    // Chunks 1 and 2 have two samples each, chunk 3 and all behind it have one.
    const auto box = stsc(2, {1, 2, 1, 3, 1, 2});
    EXPECT_EQ(chunksFrom(*box, 1, 7), "1:1/1 2:1/1 3:2/1 4:2/1 5:3/2 6:4/2 7:5/2 ");
    EXPECT_EQ(chunksFrom(*box, 4, 2), "4:2/1 5:3/2 ");
    EXPECT_EQ(chunksFrom(*box, 1000, 2), "1000:998/2 1001:999/2 ");
}

TEST(ChunkCursorTest, StartsAtTheFirstSampleOfTheChunk) {
    const auto box = stsc(1, {1, 10, 1});
    const ChunkCursor cursor(box->rows(), 25);
    EXPECT_EQ(cursor.sample(), 21U);
    EXPECT_EQ(cursor.chunk(), 3U);
}

TEST(ChunkCursorTest, PassesOverRowsWithoutChunks) {
    const auto box = stsc(3, {1, 2, 1, 2, 5, 7, 2, 1, 2});
    EXPECT_EQ(chunksFrom(*box, 1, 4), "1:1/1 2:1/1 3:2/2 4:3/2 ");
    EXPECT_EQ(chunksFrom(*box, 3, 1), "3:2/2 ");
}

TEST(ChunkCursorTest, IsNotValidWithoutRows) {
    const auto box = stsc(0, {});
    const ChunkCursor cursor(box->rows(), 1);
    EXPECT_FALSE(cursor.isValid());
    EXPECT_EQ(cursor.descriptionIndex(), 0U);
}

TEST(SampleSizeIteratorTest, WalksAFixedSize) {
    const Table<StszBox> box(fullBox("stsz", 0, 0, u32(7), u32(3)));
    const auto sizes = box->sizesFrom(2);
    EXPECT_EQ(sizes->size(), 7U);
    EXPECT_EQ(sizes->skip(1), 7U);
    EXPECT_TRUE(sizes->isValid());
    EXPECT_EQ(sizes->skip(100), 7U);
    EXPECT_FALSE(sizes->isValid());
    EXPECT_EQ(sizes->size(), 0U);
    EXPECT_FALSE(box->sizesFrom(0)->isValid());
    EXPECT_FALSE(box->sizesFrom(4)->isValid());
}

TEST(SampleSizeIteratorTest, WalksATableOfSizes) {
    const Table<StszBox> box(fullBox("stsz", 0, 0, u32(0), u32(3), rows({5, 6, 7})));
    const auto sizes = box->sizesFrom(1);
    EXPECT_EQ(sizes->size(), 5U);
    sizes->next();
    EXPECT_EQ(sizes->size(), 6U);
    EXPECT_EQ(sizes->skip(2), 13U);
    EXPECT_FALSE(sizes->isValid());
    sizes->next();
    EXPECT_EQ(sizes->size(), 0U);
    EXPECT_FALSE(box->sizesFrom(0)->isValid());
    EXPECT_FALSE(box->sizesFrom(4)->isValid());
}

TEST(SampleSizeIteratorTest, IsNeverValidWithoutSizes) {
    const Table<StszBox> box(fullBox("stsz", 0, 0, u32(0), u32(0)));
    const auto sizes = box->sizesFrom(1);
    EXPECT_FALSE(sizes->isValid());
    EXPECT_EQ(sizes->size(), 0U);
    EXPECT_EQ(sizes->skip(5), 0U);
}

TEST(ChunkOffsetIteratorTest, WalksOffsetsOfBothWidths) {
    const Table<StcoBox> narrow(fullBox("stco", 0, 0, u32(2), rows({0xFFFFFFF0, 16})));
    const auto offsets = narrow->offsetsFrom(1);
    EXPECT_EQ(offsets->offset(), 0xFFFFFFF0U);
    offsets->next();
    EXPECT_EQ(offsets->offset(), 16U);
    offsets->next();
    EXPECT_FALSE(offsets->isValid());
    EXPECT_EQ(offsets->offset(), 0U);
    EXPECT_FALSE(narrow->offsetsFrom(0)->isValid());
    EXPECT_FALSE(narrow->offsetsFrom(3)->isValid());

    const Table<Co64Box> wide(fullBox("co64", 0, 0, u32(1), u64(0x100000000)));
    EXPECT_EQ(wide->offsetsFrom(1)->offset(), 0x100000000U);
}

TEST(SyncSampleIteratorTest, StartsAtTheFirstNumberThatIsAtLeastTheSample) {
    const Table<StssBox> box(fullBox("stss", 0, 0, u32(3), rows({1, 5, 9})));
    const auto syncs = box->syncSamplesFrom(2);
    std::string out;
    for (std::uint32_t sample = 2; sample <= 10; ++sample) {
        if (syncs->takes(sample)) out += std::to_string(sample) + " ";
    }
    EXPECT_EQ(out, "5 9 ");
}

}  // namespace
}  // namespace qlix::kzm::impl
