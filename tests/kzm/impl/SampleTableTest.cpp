#include <tuple>

#include <gtest/gtest.h>

#include "kzm/impl/BoxSupport.h"
#include "kzm/impl/StblBox.h"

namespace qlix::kzm::impl {
namespace {

using namespace kz::test;

template <class Rows>
auto listOf(const Rows& rows) {
    return std::vector<typename Rows::value_type>(rows.begin(), rows.end());
}

std::uint32_t codeOfReading(const Bytes& box) {
    ReadFile file(box);
    return codeThrownBy([&] { file.read(); });
}

/// The bytes of a table made with `arguments` behind its context.
template <class Table, class... Arguments>
Bytes writtenTable(Arguments... arguments) {
    WriteFile file;
    Table table(file.context(), arguments...);
    return written(file, table);
}

TEST(SampleTableTest, HoldsAZeroCountWithoutCapacity) {
    EXPECT_EQ((writtenTable<SttsBox>(0U, 1U)), fullBox("stts", 0, 0, u32(0)));
    EXPECT_EQ(writtenTable<CttsBox>(0U), fullBox("ctts", 0, 0, u32(0)));
    EXPECT_EQ(writtenTable<StscBox>(0U), fullBox("stsc", 0, 0, u32(0)));
    EXPECT_EQ(writtenTable<StszBox>(0U), fullBox("stsz", 0, 0, u32(0), u32(0)));
    EXPECT_EQ(writtenTable<Co64Box>(0U), fullBox("co64", 0, 0, u32(0)));
    EXPECT_EQ(writtenTable<StssBox>(0U), fullBox("stss", 0, 0, u32(0)));
    EXPECT_EQ(writtenTable<SdtpBox>(0U), fullBox("sdtp", 0, 0));
}

TEST(SampleTableTest, RewritesNothingWhenNoSampleCame) {
    WriteFile file;
    SttsBox box(file.context(), 0, 1);
    box.write();
    file.stream.flush();
    const std::uint64_t writes = file.memory.writes;
    box.write();
    file.stream.flush();
    EXPECT_EQ(file.memory.writes, writes);
}

TEST(SampleTableTest, RefusesACountBeyondItsBoxOrItsLimit) {
    struct Case {
        const char* type;
        Bytes head;
        std::size_t rowSize;
        std::uint32_t limitCode;  // 27: no limit of its own
    };
    const Case cases[] = {
        {"stts", {}, 8, 9},  {"ctts", {}, 8, 9},  {"stsc", {}, 12, 27}, {"stsz", u32(0), 4, 31},
        {"stss", {}, 4, 31}, {"stco", {}, 4, 31}, {"co64", {}, 8, 31},
    };
    for (const Case& each : cases) {
        const auto with = [&each](std::uint32_t count, std::size_t bytes) {
            return codeOfReading(fullBox(each.type, 0, 0, each.head, u32(count), fill(bytes, 1)));
        };
        EXPECT_EQ(with(2, 2 * each.rowSize - 1), 27U) << each.type;
        EXPECT_EQ(with(100000000, 50), 27U) << each.type;
        EXPECT_EQ(with(100000001, 50), each.limitCode) << each.type;
        EXPECT_EQ(with(0xFFFFFFFF, 50), each.limitCode) << each.type;
        EXPECT_EQ(with(0, 0), 0U) << each.type;
        EXPECT_EQ(with(0, 50), 0U) << each.type;
    }
}

TEST(SampleTableTest, NeedsAllItsBytes) {
    const Bytes chunkRow = u32(1) + u32(1) + u32(1);
    EXPECT_EQ(codesWhenCut(fullBox("stts", 0, 0, u32(2), fill(16, 1))), codesOfAFullBox(32));
    EXPECT_EQ(codesWhenCut(fullBox("ctts", 0, 0, u32(2), fill(16, 1))), codesOfAFullBox(32));
    EXPECT_EQ(codesWhenCut(fullBox("stsc", 0, 0, u32(1), chunkRow)), codesOfAFullBox(28));
    EXPECT_EQ(codesWhenCut(fullBox("stsz", 0, 0, u32(0), u32(2), fill(8, 1))), codesOfAFullBox(28));
    EXPECT_EQ(codesWhenCut(fullBox("stss", 0, 0, u32(2), fill(8, 1))), codesOfAFullBox(24));
    EXPECT_EQ(codesWhenCut(fullBox("stco", 0, 0, u32(2), fill(8, 1))), codesOfAFullBox(24));
    EXPECT_EQ(codesWhenCut(fullBox("co64", 0, 0, u32(1), fill(8, 1))), codesOfAFullBox(24));
}

TEST(SampleTableTest, ReadsATableInOneRead) {
    Bytes rows;
    for (std::uint32_t i = 0; i < 100000; ++i) rows += u32(i);
    ReadFile file(fullBox("stss", 0, 0, u32(100000), rows));
    const auto read = readAs<StssBox>(file);
    EXPECT_EQ(read->sampleNumbers().size(), 100000U);
    EXPECT_EQ(read->sampleNumbers()[99999], 99999U);
    EXPECT_LE(file.memory.reads, 4U);
}

using SttsTuple = std::tuple<std::uint64_t, std::uint32_t, std::uint32_t, std::uint32_t>;

std::vector<SttsTuple> rowsOf(const SttsBox& box) {
    std::vector<SttsTuple> out;
    for (const SttsRow& row : box.rows()) {
        out.emplace_back(row.startTime, row.firstSample, row.count, row.delta);
    }
    return out;
}

TEST(SttsBoxTest, AddsUpStartTimesAndSampleNumbers) {
    ReadFile file(fullBox("stts", 0, 0, u32(3), u32(10), u32(40), u32(1), u32(0), u32(2), u32(7)));
    EXPECT_EQ(rowsOf(*readAs<SttsBox>(file)),
              (std::vector<SttsTuple>{{0, 1, 10, 40}, {400, 11, 1, 0}, {400, 12, 2, 7}}));
}

TEST(SttsBoxTest, HoldsItsSumsAtTheLargestValue) {
    const Bytes row = u32(0xFFFFFFFF) + u32(0xFFFFFFFF);
    ReadFile file(fullBox("stts", 0, 0, u32(3), row, row, row));
    const auto rows = rowsOf(*readAs<SttsBox>(file));
    EXPECT_EQ(std::get<0>(rows[1]), 0xFFFFFFFE00000001U);
    EXPECT_EQ(std::get<1>(rows[1]), 0xFFFFFFFFU);
    EXPECT_EQ(std::get<0>(rows[2]), 0xFFFFFFFFFFFFFFFFU);
    EXPECT_EQ(std::get<1>(rows[2]), 0xFFFFFFFFU);
}

TEST(SttsBoxTest, EndsWithTheOpenRunAndTheLastSample) {
    WriteFile file;
    SttsBox box(file.context(), 4, 9);
    box.write();
    EXPECT_EQ(file.bytes(), fullBox("stts", 0, 0, u32(0), fill(40, 0)));
    for (const std::uint64_t time : {0U, 40U, 80U, 100U}) box.addSample(time);
    box.write();
    EXPECT_EQ(file.bytes(), hexTable(R"(
        0   00000038  size 56
        4   73747473  'stts'
        8   00000000  version 0, flags 0
        12  00000003  one finished run and two rows more
        16  00000002  two samples
        20  00000028  of 40 ticks
        24  00000001  the open run: one sample
        28  00000014  of 20 ticks
        32  00000001  the last sample
        36  00000009  of the ticks given
        40  0000000000000000  room
        48  0000000000000000
    )"));
}

TEST(SttsBoxTest, GoesOnBehindTheFinishedRuns) {
    WriteFile file;
    SttsBox box(file.context(), 4, 9);
    box.write();
    for (const std::uint64_t time : {0U, 40U}) box.addSample(time);
    box.write();
    for (const std::uint64_t time : {80U, 90U}) box.addSample(time);
    box.write();
    EXPECT_EQ(file.bytes(), fullBox("stts", 0, 0, u32(3), u32(2), u32(40), u32(1), u32(10), u32(1),
                                    u32(9), fill(16, 0)));
}

TEST(SttsBoxTest, GivesASingleSampleTwoRows) {
    WriteFile file;
    SttsBox box(file.context(), 1, 9);
    box.write();
    box.addSample(5);
    box.write();
    EXPECT_EQ(file.bytes(), fullBox("stts", 0, 0, u32(2), u32(0), u32(0), u32(1), u32(9)));
}

TEST(CttsBoxTest, NumbersItsSamplesAndKeepsOffsetsInTheir32Bits) {
    ReadFile file(fullBox("ctts", 1, 0, u32(2), u32(3), u32(0xFFFFFFF8), u32(1), u32(7)));
    const auto read = readAs<CttsBox>(file);
    ASSERT_EQ(read->rows().size(), 2U);
    EXPECT_EQ(read->rows()[0].offset, 0xFFFFFFF8U);
    EXPECT_EQ(read->rows()[0].firstSample, 1U);
    EXPECT_EQ(read->rows()[1].firstSample, 4U);
    EXPECT_EQ(read->rows()[1].count, 1U);
}

TEST(CttsBoxTest, RefusesSampleNumbersAbove32Bits) {
    const Bytes last = u32(1) + u32(0);
    EXPECT_EQ(codeOfReading(fullBox("ctts", 0, 0, u32(2), u32(0xFFFFFFFE), u32(0), last)), 0U);
    EXPECT_EQ(codeOfReading(fullBox("ctts", 0, 0, u32(2), u32(0xFFFFFFFF), u32(0), last)), 30U);
    EXPECT_EQ(codeOfReading(fullBox("ctts", 0, 0, u32(1), u32(0xFFFFFFFF), u32(0))), 0U);
}

TEST(CttsBoxTest, WritesARunWhenItEndsAndTheOpenOneLast) {
    WriteFile file;
    CttsBox box(file.context(), 4);
    box.write();
    for (const std::uint32_t offset : {5U, 5U, 0U}) box.addSample(offset);
    box.write();
    EXPECT_EQ(file.bytes(),
              fullBox("ctts", 0, 0, u32(2), u32(2), u32(5), u32(1), u32(0), fill(16, 0)));
}

TEST(StscBoxTest, LinksItsRuns) {
    ReadFile file(fullBox("stsc", 0, 0, u32(3), u32(1), u32(10), u32(1), u32(4), u32(5), u32(2),
                          u32(5), u32(1), u32(1)));
    const auto read = readAs<StscBox>(file);
    std::vector<std::vector<std::uint32_t>> rows;
    for (const StscRow& row : read->rows()) {
        rows.push_back({row.firstChunk, row.chunkCount, row.samplesPerChunk, row.descriptionIndex,
                        row.firstSample});
    }
    EXPECT_EQ(rows, (std::vector<std::vector<std::uint32_t>>{
                        {1, 3, 10, 1, 1}, {4, 1, 5, 2, 31}, {5, 0xFFFFFFFF, 1, 1, 36}}));
}

TEST(StscBoxTest, RefusesChunksThatAreOutOfOrder) {
    const auto twoRows = [](std::uint32_t first, std::uint32_t second, std::uint32_t samples) {
        return codeOfReading(fullBox("stsc", 0, 0, u32(2), u32(first), u32(1), u32(1), u32(second),
                                     u32(samples), u32(1)));
    };
    EXPECT_EQ(twoRows(1, 2, 1), 0U);
    EXPECT_EQ(twoRows(1, 1, 1), 0U);  // an empty run is no step down
    EXPECT_EQ(twoRows(2, 3, 1), 23U);
    EXPECT_EQ(twoRows(0, 1, 1), 23U);
    EXPECT_EQ(twoRows(1, 0, 1), 23U);
    EXPECT_EQ(codeOfReading(fullBox("stsc", 0, 0, u32(3), u32(1), u32(1), u32(1), u32(5), u32(1),
                                    u32(1), u32(4), u32(1), u32(1))),
              23U);
}

TEST(StscBoxTest, RefusesAChunkWithoutSamples) {
    EXPECT_EQ(codeOfReading(fullBox("stsc", 0, 0, u32(1), u32(1), u32(0), u32(1))), 23U);
}

TEST(StscBoxTest, HoldsSampleNumbersAtTheLargestValue) {
    ReadFile file(fullBox("stsc", 0, 0, u32(2), u32(1), u32(0xFFFFFFFF), u32(1), u32(0xFFFFFFFF),
                          u32(1), u32(1)));
    EXPECT_EQ(readAs<StscBox>(file)->rows()[1].firstSample, 0xFFFFFFFFU);
}

TEST(StszBoxTest, ReadsOneSizeForEachSample) {
    ReadFile file(fullBox("stsz", 0, 0, u32(0), u32(3), u32(5), u32(0), u32(0xFFFFFFFF)));
    const auto read = readAs<StszBox>(file);
    EXPECT_EQ(read->fixedSize(), 0U);
    EXPECT_EQ(read->sampleCount(), 3U);
    EXPECT_EQ(listOf(read->sizes()), (std::vector<std::uint32_t>{5, 0, 0xFFFFFFFF}));
}

TEST(StszBoxTest, NeedsNoTableWithAFixedSize) {
    ReadFile file(fullBox("stsz", 0, 0, u32(188), u32(90000000)));
    const auto read = readAs<StszBox>(file);
    EXPECT_EQ(read->fixedSize(), 188U);
    EXPECT_EQ(read->sampleCount(), 90000000U);
    EXPECT_TRUE(read->sizes().empty());
    EXPECT_EQ(codeOfReading(fullBox("stsz", 0, 0, u32(188), u32(100000001))), 31U);
}

TEST(ChunkOffsetTest, ReadsBothWidths) {
    ReadFile narrow(fullBox("stco", 0, 0, u32(2), u32(0xFFFFFFFF), u32(8)));
    EXPECT_EQ(listOf(readAs<StcoBox>(narrow)->offsets()),
              (std::vector<std::uint64_t>{0xFFFFFFFF, 8}));
    ReadFile wide(fullBox("co64", 0, 0, u32(2), u64(0x100000000), u64(8)));
    EXPECT_EQ(listOf(readAs<Co64Box>(wide)->offsets()),
              (std::vector<std::uint64_t>{0x100000000, 8}));
}

TEST(StssBoxTest, ReadsItsSampleNumbers) {
    ReadFile file(fullBox("stss", 0, 0, u32(2), u32(1), u32(31)));
    EXPECT_EQ(listOf(readAs<StssBox>(file)->sampleNumbers()), (std::vector<std::uint32_t>{1, 31}));
}

TEST(SdtpBoxTest, TakesItsCountFromTheSizes) {
    const auto tables = [](std::uint32_t samples, std::size_t bytes) {
        return box("stbl", fullBox("sdtp", 0, 0, pattern(bytes, 1)),
                   fullBox("stsz", 0, 0, u32(188), u32(samples)));
    };
    ReadFile file(tables(3, 5));
    const auto read = readAs<StblBox>(file);
    EXPECT_EQ(listOf(read->sdtp()->bytes()), pattern(3, 1));
    EXPECT_EQ(codeOfReading(tables(6, 5)), 27U);
}

TEST(SdtpBoxTest, IsEmptyWithoutSizes) {
    ReadFile file(box("stbl", fullBox("sdtp", 0, 0, fill(5, 1))));
    EXPECT_TRUE(readAs<StblBox>(file)->sdtp()->bytes().empty());
}

TEST(SdtpBoxTest, RefusesACountAboveTheLimit) {
    ReadFile file(fullBox("sdtp", 0, 0));
    const BoxPtr made = file.make();
    dynamic_cast<SdtpBox&>(*made).setSampleCount(100000001);
    EXPECT_EQ(codeThrownBy([&] { made->parse(nullptr, false); }), 31U);
}

}  // namespace
}  // namespace qlix::kzm::impl
