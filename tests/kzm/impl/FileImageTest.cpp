#include <algorithm>
#include <random>

#include <gtest/gtest.h>

#include "kzm/impl/BoxSupport.h"
#include "kzm/impl/FileImage.h"

namespace qlix::kzm::impl {
namespace {

using namespace kz::test;

/// An image over a file in memory; `put` writes bytes at a position.
struct Image {
    Image() : image(file.stream) {}

    void put(std::uint64_t position, const Bytes& bytes) {
        image.seek(position);
        image.write(bytes.data(), bytes.size());
    }
    const Bytes& flushed() {
        image.flush();
        return file.bytes();
    }

    WriteFile file;
    FileImage image;
};

TEST(FileImageTest, KeepsBytesUntilItIsFlushed) {
    Image test;
    test.put(0, text("abc"));
    EXPECT_TRUE(test.file.bytes().empty());
    EXPECT_EQ(test.flushed(), text("abc"));
    EXPECT_EQ(test.image.tell(), 3U);
}

TEST(FileImageTest, WritesOnlyWhatDiffers) {
    Image test;
    test.put(0, fill(20000, 1));
    test.flushed();
    test.file.memory.writes = 0;
    test.put(0, fill(20000, 1));
    test.flushed();
    EXPECT_EQ(test.file.memory.writes, 0U);
    test.put(10000, u32(7));
    EXPECT_EQ(test.flushed().slice(9998, 8), fill(2, 1) + u32(7) + fill(2, 1));
    EXPECT_EQ(test.file.memory.writes, 1U);
}

TEST(FileImageTest, JoinsChangesThatLieCloseTogether) {
    Image test;
    test.put(0, fill(50000, 1));
    test.flushed();
    test.file.memory.writes = 0;
    test.put(100, u32(7));
    test.put(100 + 4 + 16384, u32(8));
    test.put(100 + 4 + 16384 + 4 + 16385, u32(9));
    const Bytes& file = test.flushed();
    EXPECT_EQ(test.file.memory.writes, 2U);
    EXPECT_EQ(file.slice(100, 4), u32(7));
    EXPECT_EQ(file.slice(16488, 4), u32(8));
    EXPECT_EQ(file.slice(32877, 4), u32(9));
}

TEST(FileImageTest, JoinsTwoChangesByOneBetweenThem) {
    Image test;
    test.put(0, fill(20000, 1));
    test.flushed();
    test.file.memory.writes = 0;
    test.put(0, u32(7));
    test.put(17000, u32(8));
    test.put(9000, u32(9));
    const Bytes& file = test.flushed();
    EXPECT_EQ(test.file.memory.writes, 1U);
    EXPECT_EQ(file.slice(0, 4), u32(7));
    EXPECT_EQ(file.slice(9000, 4), u32(9));
    EXPECT_EQ(file.slice(17000, 4), u32(8));
    EXPECT_EQ(file.slice(17004, 4), fill(4, 1));
}

TEST(FileImageTest, WritesChangesInTheOrderInWhichTheyCame) {
    Image test;
    test.image.begin(100);
    test.put(100 + 20000, text("first"));
    test.put(100, text("last"));
    test.file.memory.capacity = 10000;  // the first write fails, the other would not
    EXPECT_EQ(codeThrownBy([&] { test.flushed(); }), 1024U);
    EXPECT_TRUE(test.file.memory.content.empty());
}

TEST(FileImageTest, FillsRoomBetweenTwoChangesWithZeros) {
    Image test;
    test.image.begin(10);
    test.put(16, text("x"));
    test.put(10, text("ab"));
    EXPECT_EQ(test.flushed(), fill(10, 0) + text("ab") + fill(4, 0) + text("x"));
}

TEST(FileImageTest, KnowsWhichBytesItHolds) {
    Image test;
    test.image.begin(100);
    EXPECT_FALSE(test.image.holds(100, 1));
    test.put(100, fill(10, 1));
    EXPECT_TRUE(test.image.holds(100, 10));
    EXPECT_TRUE(test.image.holds(106, 4));
    EXPECT_FALSE(test.image.holds(107, 4));
    EXPECT_FALSE(test.image.holds(99, 4));
    EXPECT_FALSE(test.image.holds(200, 4));
    test.image.begin(500);
    EXPECT_FALSE(test.image.holds(100, 1));
}

TEST(FileImageTest, RefusesAPlaceInFrontOfItsStart) {
    Image test;
    test.image.begin(100);
    EXPECT_EQ(codeThrownBy([&] { test.put(99, u8(1)); }), 1024U);
}

TEST(FileImageTest, IsTheSameAsAPlainArrayForAnyWrites) {
    const unsigned seed = 20240817;
    std::mt19937 random(seed);
    Image test;
    Bytes model;
    for (int i = 0; i < 2000; ++i) {
        const std::size_t at = random() % 60000;
        const Bytes bytes = fill(1 + random() % 300, static_cast<int>(random() % 3));
        test.put(at, bytes);
        if (model.size() < at + bytes.size()) model.resize(at + bytes.size());
        std::copy(bytes.begin(), bytes.end(), model.begin() + static_cast<std::ptrdiff_t>(at));
        if (random() % 20 == 0) {
            ASSERT_EQ(difference(test.flushed(), model), "") << "seed " << seed << " step " << i;
        }
    }
}

}  // namespace
}  // namespace qlix::kzm::impl
