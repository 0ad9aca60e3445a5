#include <deque>
#include <vector>

#include <gtest/gtest.h>

#include "kzm/impl/BoxSupport.h"
#include "kzm/impl/MdatBox.h"

namespace qlix::kzm::impl {
namespace {

using namespace kz::test;

/// Hands blocks out and notes in which order they come back.
class Blocks {
public:
    SampleBlock make(const Bytes& bytes) {
        tags_.push_back({this, kept_.size()});
        kept_.push_back(bytes);
        return SampleBlock({kept_.back().data(), &tags_.back(), &Blocks::onRelease}, bytes.size());
    }

    std::vector<std::size_t> released;

private:
    struct Tag {
        Blocks* owner;
        std::size_t index;
    };
    static void onRelease(void* context) {
        const auto* tag = static_cast<Tag*>(context);
        tag->owner->released.push_back(tag->index);
    }

    std::deque<Bytes> kept_;
    std::deque<Tag> tags_;
};

TEST(MdatBoxTest, HasAlwaysALargeHeader) {
    WriteFile file;
    MdatBox box(file.context(), true);
    EXPECT_EQ(written(file, box), hexTable(R"(
        0   00000001          the size follows
        4   6d646174          'mdat'
        8   0000000000000010  size
    )"));
}

TEST(MdatBoxTest, ABufferedOneWritesItsBlocksInTheOrderTheyCame) {
    Blocks blocks;
    WriteFile file;
    MdatBox box(file.context(), true);
    EXPECT_EQ(box.addSample(blocks.make(text("first"))), 16U);
    EXPECT_EQ(box.addSample(blocks.make(text("second"))), 21U);
    EXPECT_EQ(file.bytes().size(), 0U) << "nothing is written before its time";
    EXPECT_EQ(written(file, box), hexTable(R"(
        0   00000001          the size follows
        4   6d646174          'mdat'
        8   000000000000001b  size 16 + 11
        16  6669727374        'first'
        21  7365636f6e64      'second'
    )"));
    EXPECT_TRUE(blocks.released.empty());
}

TEST(MdatBoxTest, GivesTheLastBlockBackFirst) {
    Blocks blocks;
    {
        MdatBox box({}, true);
        box.addSample(blocks.make(text("a")));
        box.addSample(blocks.make(text("b")));
        box.addSample(blocks.make(text("c")));
        EXPECT_TRUE(blocks.released.empty());
    }
    EXPECT_EQ(blocks.released, (std::vector<std::size_t>{2, 1, 0}));
}

TEST(MdatBoxTest, AnUnbufferedOneWritesAtOnceAndGivesTheBlockBack) {
    Blocks blocks;
    WriteFile file;
    MdatBox box(file.context(), false);
    box.setPosition(4);
    EXPECT_EQ(box.addSample(blocks.make(text("first"))), 20U);
    EXPECT_EQ(blocks.released, (std::vector<std::size_t>{0}));
    EXPECT_EQ(box.addSample(blocks.make(text("second"))), 25U);
    EXPECT_EQ(file.bytes().slice(20, 11), text("firstsecond"));
    box.write();
    EXPECT_EQ(file.bytes().slice(4, 16), u32(1) + text("mdat") + u64(27));
    EXPECT_EQ(file.bytes().slice(20, 11), text("firstsecond"));
}

TEST(MdatBoxTest, CountsOffsetsFromItsPosition) {
    Blocks blocks;
    MdatBox box({}, true);
    box.setPosition(1000);
    EXPECT_EQ(box.addSample(blocks.make(text("x"))), 1016U);
}

TEST(MdatBoxTest, ThrowsWhenTheStreamTakesNoMore) {
    Blocks blocks;
    WriteFile file;
    file.memory.capacity = 20;
    MdatBox box(file.context(), true);
    box.addSample(blocks.make(fill(100000, 1)));
    EXPECT_EQ(codeThrownBy([&] {
                  box.write();
                  file.stream.flush();
              }),
              1024U);
}

TEST(MdatBoxTest, ReadAsAWholeItHasNoChildren) {
    ReadFile file(box("mdat", fullBox("mfhd", 0, 0, u32(1))));
    const BoxPtr mdat = file.read();
    EXPECT_NE(dynamic_cast<MdatBox*>(mdat.get()), nullptr);
    EXPECT_EQ(mdat->childCount(), 0U);
    EXPECT_EQ(mdat->size(), 24U);
}

}  // namespace
}  // namespace qlix::kzm::impl
