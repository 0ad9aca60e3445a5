#include <gtest/gtest.h>

#include "kzm/impl/BoxSupport.h"
#include "kzm/impl/SkipBox.h"
#include "kzm/impl/UuidBox.h"

namespace qlix::kzm::impl {
namespace {

using namespace kz::test;

const ExtendedType kType = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};

TEST(UuidBoxTest, WritesItsBodyBehindTheExtendedType) {
    WriteFile file;
    const Bytes body = text("body");
    UuidBox box(file.context(), kType, body.data(), body.size());
    EXPECT_EQ(box.fieldsSize(), 4U);
    EXPECT_EQ(written(file, box), hexTable(R"(
        0   0000001c                          size 28
        4   75756964                          'uuid'
        8   0102030405060708090a0b0c0d0e0f10  extended type
        24  626f6479                          body
    )"));
}

TEST(UuidBoxTest, WritesNothingBehindTheTypeWithoutABody) {
    WriteFile file;
    XMPDataBox box(file.context(), nullptr, 0);
    EXPECT_EQ(written(file, box), uuidBox(hex("BE7ACFCB97A942E89C71999491E3AFAC")));
}

TEST(UuidBoxTest, ReadsItsBodyWhole) {
    const Bytes body = pattern(1000, 3);
    ReadFile file(uuidBox(pattern(16, 1), body) + box("free"));
    const auto read = readAs<UuidBox>(file);
    EXPECT_EQ(Bytes(read->body().begin(), read->body().end()), body);

    ReadFile empty(uuidBox(pattern(16, 1)));
    EXPECT_TRUE(readAs<UuidBox>(empty)->body().empty());
}

TEST(SkipBoxTest, WritesZerosOnceAndThenOnlyItsHeader) {
    WriteFile file;
    file.stream.write("xxxxxxxxxxxxxxxxxxxxxxxx", 24);
    SkipBox box(file.context(), 20);
    box.setPosition(2);
    box.write();
    EXPECT_EQ(file.bytes(), text("xx") + kz::test::box("skip", fill(12, 0)) + text("xx"));

    file.stream.seek(10);
    file.stream.write("yyyy", 4);
    box.dropFront(6);
    EXPECT_EQ(box.position(), 8U);
    EXPECT_EQ(box.size(), 14U);
    box.write();
    EXPECT_EQ(file.bytes().slice(8, 16), u32(14) + text("skip") + fill(6, 0) + text("xx"));
}

TEST(SkipBoxTest, IsOpaqueWhenRead) {
    ReadFile file(box("skip", pattern(30, 1)));
    EXPECT_EQ(file.read()->ownSize(), 38U);
}

}  // namespace
}  // namespace qlix::kzm::impl
