#include <sys/stat.h>

#include <gtest/gtest.h>

#include "kzspkgutil/KZMStream.h"
#include "support/Bytes.h"
#include "support/OrdinaryUser.h"
#include "support/TempDir.h"
#include "support/ThrownCode.h"

namespace torvo::kzspkgutil {
namespace {

using kz::test::Bytes;
using kz::test::codeThrownBy;
using kz::test::text;

class KZMStreamTest : public testing::Test {
protected:
    kz::test::TempDir folder_;
    std::string input_ = folder_.write("in", text("0123456789"));
};

TEST_F(KZMStreamTest, ReadsAndSeeksLikeTheFile) {
    KZMStream stream(input_, kzs::openFlagsFor(false, false));
    stream.open();
    Bytes buffer(4);
    EXPECT_EQ(stream.seek(-3, qlix::kzm::kSeekFromEnd), 7U);
    EXPECT_EQ(stream.read(buffer.data(), 4), 3U);
    EXPECT_EQ(buffer.cutTo(3), text("789"));
    EXPECT_EQ(stream.tell(), 10U);
    EXPECT_EQ(stream.seek(-6, qlix::kzm::kSeekFromCurrent), 4U);
    EXPECT_EQ(stream.seek(2, qlix::kzm::kSeekFromStart), 2U);
    EXPECT_EQ(stream.read(buffer.data(), 1), 1U);
    EXPECT_EQ(buffer[0], '2');
}

TEST_F(KZMStreamTest, WritesAndCutsTheFile) {
    KZMStream stream(folder_ / "out", kzs::openFlagsFor(true, false));
    stream.open();
    EXPECT_EQ(stream.write("abcdef", 6), 6U);
    stream.truncate(4);
    stream.close();
    EXPECT_EQ(kz::test::readFile(folder_ / "out"), text("abcd"));
}

TEST_F(KZMStreamTest, WritesPartsInTheirOrder) {
    KZMStream stream(folder_ / "out", kzs::openFlagsFor(true, false));
    stream.open();
    stream.seek(1, qlix::kzm::kSeekFromStart);
    const qlix::kzm::WritePart parts[] = {{"ab", 2}, {"", 0}, {"cdef", 4}};
    EXPECT_EQ(stream.writeParts(parts, 3), 6U);
    EXPECT_EQ(stream.writeParts(parts, 1), 2U);
    EXPECT_EQ(stream.writeParts(parts, 0), 0U);
    EXPECT_EQ(stream.tell(), 9U);
    EXPECT_EQ(kz::test::readFile(folder_ / "out"), kz::test::u8(0) + text("abcdefab"));
}

TEST_F(KZMStreamTest, TakesNoFurtherPartBehindAQuarterOfAMegabyte) {
    KZMStream stream(folder_ / "out", kzs::openFlagsFor(true, false));
    stream.open();
    const Bytes large = kz::test::pattern(262144, 1);
    const qlix::kzm::WritePart parts[] = {{"a", 1}, {large.data(), 262143}, {"b", 1}};
    EXPECT_EQ(stream.writeParts(parts, 3), 262144U);
    EXPECT_EQ(stream.writeParts(parts + 2, 1), 1U);
    const qlix::kzm::WritePart whole[] = {{large.data(), 262144}, {"c", 1}};
    EXPECT_EQ(stream.writeParts(whole, 2), 262144U);
    const qlix::kzm::WritePart small[] = {{large.data(), 262143}, {"d", 1}, {"e", 1}};
    EXPECT_EQ(stream.writeParts(small, 3), 262144U) << "one byte was missing";
}

TEST_F(KZMStreamTest, PartsThatCantBeWrittenAreWriteFailed) {
    KZMStream stream(input_, kzs::openFlagsFor(false, false));
    stream.open();
    const qlix::kzm::WritePart parts[] = {{"ab", 2}};
    EXPECT_EQ(codeThrownBy([&] { stream.writeParts(parts, 1); }), 1024U);
}

TEST_F(KZMStreamTest, ClosesTheFileWithItsLastReference) {
    KZMStream stream(input_, kzs::openFlagsFor(false, false));
    stream.addRef();
    stream.addRef();
    stream.open();
    Bytes buffer(1);

    stream.release();
    EXPECT_EQ(stream.read(buffer.data(), 1), 1U);
    stream.release();
    EXPECT_EQ(codeThrownBy([&] { stream.read(buffer.data(), 1); }), 1U);
}

TEST_F(KZMStreamTest, OpensNothingWhenMade) {
    KZMStream stream(folder_ / "out", kzs::openFlagsFor(true, false));
    EXPECT_FALSE(kz::test::fileExists(folder_ / "out"));
}

TEST_F(KZMStreamTest, GivesAMissingFileTheNumber6) {
    KZMStream stream(folder_ / "missing", kzs::openFlagsFor(false, false));
    EXPECT_EQ(codeThrownBy([&] { stream.open(); }), 6U);
}

TEST_F(KZMStreamTest, GivesAFolderTheNumberOfAnyOtherError) {
    KZMStream stream(folder_.path(), kzs::openFlagsFor(true, false));
    EXPECT_EQ(codeThrownBy([&] { stream.open(); }), 1U);
}

TEST_F(KZMStreamTest, GivesAClosedDoorTheNumber3) {
    // The folder is open to anybody, the file to nobody.
    ASSERT_EQ(::chmod(folder_.path().c_str(), 0755), 0);
    ASSERT_EQ(::chmod(input_.c_str(), 0), 0);
    const kz::test::OrdinaryUser user;
    KZMStream stream(input_, kzs::openFlagsFor(false, false));
    EXPECT_EQ(codeThrownBy([&] { stream.open(); }), 3U);
}

TEST_F(KZMStreamTest, GivesAnExistingFileTheNumber4WhenItMustBeNew) {
    KZMStream stream(input_, kzs::openFlagsFor(true, true) | kzs::kOpenExclusive);
    EXPECT_EQ(codeThrownBy([&] { stream.open(); }), 4U);
}

TEST_F(KZMStreamTest, GivesASeekAheadOfTheFileTheNumber2) {
    KZMStream stream(input_, kzs::openFlagsFor(false, false));
    stream.open();
    EXPECT_EQ(codeThrownBy([&] { stream.seek(-1, qlix::kzm::kSeekFromStart); }), 2U);
}

TEST_F(KZMStreamTest, GivesFailedWritesTheNumberOfTheWriterWhateverTheCause) {
    KZMStream readOnly(input_, kzs::openFlagsFor(false, false));
    readOnly.open();
    EXPECT_EQ(codeThrownBy([&] { readOnly.write("x", 1); }), 1024U);
    EXPECT_EQ(codeThrownBy([&] { readOnly.truncate(1); }), 1024U);

    KZMStream full("/dev/full", kzs::kOpenBinary | kzs::kOpenReadWrite);
    full.open();
    EXPECT_EQ(codeThrownBy([&] { full.write("x", 1); }), 1024U);
}

}  // namespace
}  // namespace torvo::kzspkgutil
