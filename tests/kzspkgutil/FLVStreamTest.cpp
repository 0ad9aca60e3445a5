#include <cstdlib>
#include <filesystem>
#include <iterator>

#include <gtest/gtest.h>

#include "kzspkgutil/FLVFile.h"
#include "kzspkgutil/FLVMediaSourceProvider.h"
#include "kzspkgutil/FLVStream.h"
#include "support/TempDir.h"

namespace torvo::kzspkgutil {
namespace {

using kz::test::flvFile;
using kz::test::flvHeader;
using kz::test::mp3Frame;
using kz::test::raw;
using kz::test::TempDir;
using kz::test::text;

std::ptrdiff_t openDescriptors() {
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"),
                         std::filesystem::directory_iterator());
}

TEST(FLVStreamTest, IsOpenOnceItIsMadeAndForwardsToTheFile) {
    const TempDir dir;
    FLVStream stream(dir.write("x", text("0123456789")), kReadOnly);
    EXPECT_TRUE(stream.isOpen());
    char buffer[4] = {};
    stream.seek(-4, 2);
    EXPECT_EQ(stream.tell(), 6);
    EXPECT_EQ(stream.read(buffer, 2), 2U);
    stream.seek(1, 1);
    EXPECT_EQ(stream.read(buffer, 4), 1U);
    EXPECT_EQ(buffer[0], '9');
    stream.seek(3, 0);
    EXPECT_EQ(stream.tell(), 3);
}

TEST(FLVStreamTest, FailuresOfTheFileBecomeCodeFive) {
    const TempDir dir;
    EXPECT_EQ(flvCodeOf([&] { FLVStream(dir / "missing.flv", kReadOnly); }), 5U);
    FLVStream stream(dir.write("x", text("0123")), kReadOnly);
    EXPECT_EQ(flvCodeOf([&] { stream.seek(-1, 0); }), 5U);
    stream.close();
    char byte = 0;
    EXPECT_EQ(flvCodeOf([&] { stream.read(&byte, 1); }), 5U);
}

TEST(FLVStreamTest, ClosesTheFileWithTheLastReference) {
    const TempDir dir;
    FLVStream stream(dir.write("x", text("0123")), kReadOnly);
    stream.addRef();
    stream.addRef();
    stream.release();
    EXPECT_TRUE(stream.isOpen());
    stream.release();
    EXPECT_FALSE(stream.isOpen());
}

TEST(FLVStreamTest, OpeningItAgainLosesNoDescriptor) {
    const TempDir dir;
    const std::string path = dir.write("x", text("0123"));
    const std::ptrdiff_t before = openDescriptors();
    {
        FLVStream stream(path, kReadOnly);
        stream.open();
        EXPECT_EQ(openDescriptors(), before + 1);
    }
    EXPECT_EQ(openDescriptors(), before);
}

TEST(FLVMediaSourceProviderTest, KnowsAnFLVFileByItsFirstBytes) {
    const TempDir dir;
    FLVMediaSourceProvider provider;
    EXPECT_TRUE(provider.canOpen(dir.write("a", flvHeader()), kReadOnly));
    EXPECT_FALSE(provider.canOpen(dir.write("b", flvHeader().cutTo(8)), kReadOnly));
    EXPECT_FALSE(provider.canOpen(dir.write("c", text("....ftypisom")), kReadOnly));
    EXPECT_FALSE(provider.canOpen(dir.write("d", text("")), kReadOnly));
    EXPECT_EQ(flvCodeOf([&] { provider.canOpen(dir / "missing", kReadOnly); }), 5U);
}

TEST(FLVMediaSourceProviderTest, MakesSourcesAndKeepsNoDescriptorOpen) {
    FLVFile file({mp3Frame(0, raw({1, 2})), mp3Frame(26, raw({1, 2}))});
    FLVFile broken(text("no media"));
    RefCountedMemoryArena arena;
    PackagerContext context(arena);
    const std::ptrdiff_t before = openDescriptors();
    FLVMediaSourceProvider provider;
    EXPECT_TRUE(provider.canOpen(file.path, kReadOnly));
    EXPECT_EQ(openDescriptors(), before);
    {
        const auto source = provider.createSource(context, file.path, kReadOnly);
        EXPECT_EQ(source->getProperties().duration, 26U);
        const auto samples = source->getSampleIterator();
        EXPECT_TRUE(samples->hasNext());
        EXPECT_EQ(openDescriptors(), before + 1);
    }
    EXPECT_NE(flvCodeOf([&] { provider.createSource(context, broken.path, kReadOnly); }), 0U);
    EXPECT_EQ(openDescriptors(), before);
}

}  // namespace
}  // namespace torvo::kzspkgutil
