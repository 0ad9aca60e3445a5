#include <gtest/gtest.h>

#include "kzm/impl/BoxIterator.h"
#include "kzm/impl/BoxSupport.h"
#include "kzm/impl/RootBox.h"
#include "kzm/impl/TrafBoxIterator.h"

namespace qlix::kzm::impl {
namespace {

using namespace kz::test;

const Bytes kFile = box("ftyp", fill(8, 0)) + box("free") + box("skip") + box("free") + box("skip");

template <class Iterator>
std::vector<std::uint64_t> positions(Iterator iterator) {
    std::vector<std::uint64_t> out;
    for (; iterator.hasCurrent(); iterator.next()) out.push_back(iterator.current()->position());
    EXPECT_EQ(iterator.current(), nullptr);
    iterator.next();  // stays at the end
    EXPECT_EQ(iterator.current(), nullptr);
    return out;
}

TEST(BoxIteratorTest, WalksTheFileAsItGoes) {
    ReadFile file(kFile);
    RootBox root(file.context());
    BoxIterator iterator(root);
    EXPECT_EQ(root.childCount(), 1U);
    iterator.next();
    EXPECT_EQ(root.childCount(), 2U);
    EXPECT_EQ(iterator.index(), 1U);
    EXPECT_EQ(positions(BoxIterator(root)), (std::vector<std::uint64_t>{0, 16, 24, 32, 40}));
    EXPECT_EQ(positions(BoxIterator(root, 3)), (std::vector<std::uint64_t>{32, 40}));
}

TEST(BoxIteratorTest, SkipsOtherCodes) {
    ReadFile file(kFile);
    RootBox root(file.context());
    EXPECT_EQ(positions(BoxIteratorByType(root, fourCc("skip"))),
              (std::vector<std::uint64_t>{24, 40}));
    EXPECT_EQ(positions(BoxIteratorByType(root, fourCc("free"), 2)),
              (std::vector<std::uint64_t>{32}));
    EXPECT_TRUE(positions(BoxIteratorByType(root, fourCc("moof"))).empty());
}

TEST(BoxIteratorTest, NeverGivesTheFirstChildBackwards) {
    ReadFile file(kFile);
    RootBox root(file.context());
    EXPECT_TRUE(positions(ReverseBoxIterator(root)).empty());  // nothing was read yet
    root.child(100);
    EXPECT_EQ(positions(ReverseBoxIterator(root)), (std::vector<std::uint64_t>{40, 32, 24, 16}));
    EXPECT_EQ(positions(ReverseBoxIteratorByType(root, fourCc("free"))),
              (std::vector<std::uint64_t>{32, 16}));
    EXPECT_TRUE(positions(ReverseBoxIteratorByType(root, fourCc("ftyp"))).empty());
}

TEST(BoxIteratorTest, FindsTheFragmentsOfOneTrack) {
    const auto fragmentOf = [](std::uint32_t track) {
        return box("traf", fullBox("tfhd", 0, 0, u32(track)));
    };
    const Bytes fragment = box("moof", fullBox("mfhd", 0, 0, u32(1)), fragmentOf(1), fragmentOf(2),
                               box("traf"), fragmentOf(1));
    ReadFile file(fragment);
    const BoxPtr moof = file.make();
    moof->loadTree(BoxFactory::standard());
    for (std::size_t i = 1; i < moof->childCount(); ++i) {
        if (moof->child(i)->childCount() > 0) moof->child(i)->child(0)->parse(nullptr, false);
    }
    EXPECT_EQ(positions(TrafBoxIterator(*moof, 1)), (std::vector<std::uint64_t>{24, 80}));
    EXPECT_EQ(positions(TrafBoxIterator(*moof, 2)), (std::vector<std::uint64_t>{48}));
    EXPECT_EQ(positions(ReverseTrafBoxIterator(*moof, 1)), (std::vector<std::uint64_t>{80, 24}));
    EXPECT_TRUE(positions(TrafBoxIterator(*moof, 3)).empty());
}

}  // namespace
}  // namespace qlix::kzm::impl
