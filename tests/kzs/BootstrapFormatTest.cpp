#include <sstream>

#include <gtest/gtest.h>

#include "kzs/BootstrapInfo.h"
#include "kzs/BootstrapReader.h"
#include "kzs/BootstrapWriter.h"
#include "support/Bytes.h"

namespace torvo::kzs {
namespace {

using kz::test::Bytes;
using kz::test::bytesOf;
using kz::test::difference;
using kz::test::hex;
using kz::test::hexTable;
using kz::test::u32;

BootstrapInfo everyField() {
    BootstrapInfo info;
    info.version = 3;
    info.profile = 2;
    info.live = true;
    info.timescale = 1000;
    info.currentMediaTime = milliseconds(0x0102030405060708);
    info.smpteTimeCodeOffset = 9;
    info.movieIdentifier = "mv";
    info.servers = {"s1", ""};
    info.qualities = {"q"};
    info.drmData = "d";
    info.metadata = "m";
    SegmentRunTable segments;
    segments.update = true;
    segments.qualities = {"x"};
    segments.entries = {{1, 4}, {2, 5}};
    info.segmentRunTables = {segments};
    FragmentRunTable fragments;
    fragments.timescale = 1000;
    fragments.entries = {{1, milliseconds(0), 4000, 0}, {5, milliseconds(16000), 0, 1}};
    info.fragmentRunTables = {fragments};
    return info;
}

// The size words count by hand: 89 bytes up to the fragment run table, 54 for the table.
Bytes everyFieldBytes() {
    return hexTable(R"(
        0    0000008f           size 143
        4    61627374           'abst'
        8    00000000           version 0, flags 0
        12   00000003           bootstrap version
        16   a0                 profile 2, live
        17   000003e8           timescale 1000
        21   0102030405060708   current media time
        29   0000000000000009   time code offset
        37   6d7600             "mv"
        40   02                 servers
        41   733100             "s1"
        44   00                 ""
        45   01                 qualities
        46   7100               "q"
        48   6400               "d"
        50   6d00               "m"
        52   01                 segment run tables
        53   00000023           size 35
        57   61737274           'asrt'
        61   00000001           version 0, update
        65   01                 qualities
        66   7800               "x"
        68   00000002           entries
        72   0000000100000004   segment 1 has 4 fragments
        80   0000000200000005   segment 2 has 5 fragments
        88   01                 fragment run tables
        89   00000036           size 54
        93   61667274           'afrt'
        97   00000000           version 0, no update
        101  000003e8           timescale 1000
        105  00                 qualities
        106  00000002           entries
        110  00000001           fragment 1
        114  0000000000000000   at 0
        122  00000fa0           4000 ms; 16 bytes in all
        126  00000005           fragment 5
        130  0000000000003e80   at 16000
        138  00000000           no duration
        142  01                 indicator; 17 bytes in all
    )");
}

Bytes written(const BootstrapInfo& info, bool bodyOnly = false) {
    std::ostringstream stream;
    const std::uint64_t count = writeBootstrap(stream, info, bodyOnly);
    EXPECT_EQ(count, stream.str().size());
    return bytesOf(stream.str());
}

BootstrapInfo readFrom(const Bytes& bytes) {
    std::istringstream stream(bytes.str());
    BootstrapInfo info;
    readBootstrap(stream, info);
    return info;
}

std::string refusalOf(const Bytes& bytes) {
    try {
        readFrom(bytes);
    } catch (const InvalidBootstrapFormat& e) {
        return e.what();
    }
    return "";
}

constexpr const char* kRefusal = "Could not parse bootstrap info";

TEST(BootstrapWriterTest, LaysOutEveryField) {
    EXPECT_EQ(difference(written(everyField()), everyFieldBytes()), "");
}

TEST(BootstrapWriterTest, StartsAtTheBootstrapVersionWithoutTheHeader) {
    EXPECT_EQ(difference(written(everyField(), true), everyFieldBytes().slice(12, 131)), "");
}

TEST(BootstrapWriterTest, LaysOutAnEmptyInfo) {
    EXPECT_EQ(difference(written(BootstrapInfo()), hexTable(R"(
        0    0000002c           size 44
        4    61627374           'abst'
        8    00000000
        12   00000000           bootstrap version
        16   00                 bits
        17   000003e8           timescale 1000
        21   0000000000000000   current media time
        29   0000000000000000   time code offset
        37   00                 movie identifier
        38   00                 no servers
        39   00                 no qualities
        40   00                 DRM data
        41   00                 metadata
        42   00                 no segment run tables
        43   00                 no fragment run tables
    )")),
              "");
}

TEST(BootstrapWriterTest, WritesTheUpdateBits) {
    BootstrapInfo info;
    info.profile = 7;  // only two bits fit
    info.update = true;
    info.fragmentRunTables.resize(1);
    info.fragmentRunTables[0].update = 5;
    const Bytes bytes = written(info);
    EXPECT_EQ(bytes[16], 0xD0);
    EXPECT_EQ(bytes.slice(52, 4), u32(1));
}

TEST(BootstrapWriterTest, WritesTimesAsTheyStandWhateverTheirTimescale) {
    BootstrapInfo info;
    info.currentMediaTime = Timestamp{90000, 90000, {0, 0}};
    EXPECT_EQ(written(info).slice(21, 8), kz::test::u64(90000));
}

TEST(BootstrapWriterTest, CutsTheCountOfServersToAByte) {
    BootstrapInfo info;
    info.servers.assign(257, "s");
    const Bytes bytes = written(info);
    EXPECT_EQ(bytes[38], 1);
    EXPECT_EQ(bytes.size(), 44U + 257 * 2);
}

TEST(BootstrapWriterTest, FailsAsTheStreamDoesAndRestoresItsSetting) {
    std::ostringstream stream;
    stream.setstate(std::ios::badbit);
    EXPECT_THROW(writeBootstrap(stream, everyField(), false), std::ios_base::failure);
    EXPECT_EQ(stream.exceptions(), std::ios::goodbit);
}

TEST(BootstrapReaderTest, ReadsEveryField) {
    EXPECT_TRUE(readFrom(everyFieldBytes()) == everyField());
}

TEST(BootstrapReaderTest, StandsBehindTheBoxAndRestoresTheSetting) {
    std::istringstream stream((everyFieldBytes() + hex("ab")).str());
    BootstrapInfo info;
    readBootstrap(stream, info);
    EXPECT_EQ(stream.get(), 0xAB);
    EXPECT_EQ(stream.exceptions(), std::ios::goodbit);
}

TEST(BootstrapReaderTest, RefusesVersion1) {
    EXPECT_EQ(refusalOf(everyFieldBytes().patched(8, hex("01"))), kRefusal);
}

TEST(BootstrapReaderTest, RefusesAnotherType) {
    EXPECT_EQ(refusalOf(everyFieldBytes().patched(4, kz::test::text("abss"))), kRefusal);
    EXPECT_EQ(refusalOf(everyFieldBytes().patched(57, kz::test::text("afrt"))), kRefusal);
    EXPECT_EQ(refusalOf(everyFieldBytes().patched(93, kz::test::text("asrt"))), kRefusal);
}

TEST(BootstrapReaderTest, RefusesAFileThatStopsAnywhereWithTheSameText) {
    for (std::size_t length = 0; length < 143; ++length) {
        EXPECT_EQ(refusalOf(everyFieldBytes().cutTo(length)), kRefusal) << length;
    }
}

TEST(BootstrapReaderTest, RefusesCountsBeyondTheFileWithoutTakingMemoryForThem) {
    EXPECT_EQ(refusalOf(everyFieldBytes().patched(68, u32(0xFFFFFFFF))), kRefusal);
    EXPECT_EQ(refusalOf(everyFieldBytes().patched(106, u32(0xFFFFFFFF))), kRefusal);
}

TEST(BootstrapReaderTest, LeavesTheInfoAloneWhenItFails) {
    BootstrapInfo info;
    info.version = 42;
    std::istringstream stream(everyFieldBytes().cutTo(100).str());
    EXPECT_THROW(readBootstrap(stream, info), InvalidBootstrapFormat);
    EXPECT_EQ(info.version, 42U);
    EXPECT_EQ(stream.exceptions(), std::ios::goodbit);
}

TEST(BootstrapReaderTest, TakesTablesOfAnyVersion) {
    const Bytes bytes = everyFieldBytes().patched(61, hex("09")).patched(97, hex("07"));
    EXPECT_TRUE(readFrom(bytes) == everyField());
}

TEST(BootstrapReaderTest, LooksAtTheLowestFlagOnly) {
    const BootstrapInfo info =
        readFrom(everyFieldBytes().patched(61, u32(0xFE)).patched(97, u32(3)));
    EXPECT_FALSE(info.segmentRunTables[0].update);
    EXPECT_EQ(info.fragmentRunTables[0].update, 1U);
}

TEST(BootstrapReaderTest, GivesTimestampsInMillisecondsWhateverTheTableSays) {
    const BootstrapInfo info = readFrom(everyFieldBytes().patched(101, u32(90000)));
    EXPECT_EQ(info.fragmentRunTables[0].timescale, 90000U);
    EXPECT_EQ(info.fragmentRunTables[0].entries[1].firstFragmentTimestamp.timescale, 1000U);
    EXPECT_EQ(info.currentMediaTime.timescale, 1000U);
}

TEST(BootstrapReaderTest, DoesNotBelieveBoxSizes) {
    const Bytes bytes =
        everyFieldBytes().patched(0, u32(0)).patched(53, u32(8)).patched(89, u32(0x7FFFFFFF));
    EXPECT_TRUE(readFrom(bytes) == everyField());
}

TEST(BootstrapReaderTest, ReadsABoxWith64BitsOfSize) {
    const Bytes small = everyFieldBytes();
    const Bytes large = u32(1) + small.slice(4, 4) + kz::test::u64(151) + small.slice(8, 135);
    EXPECT_TRUE(readFrom(large) == everyField());
}

TEST(BootstrapInfoTest, DiffersWhereAnyFieldDoes) {
    const BootstrapInfo info = everyField();
    const auto differs = [&](auto change) {
        BootstrapInfo other = info;
        change(other);
        return other != info;
    };
    EXPECT_FALSE(differs([](BootstrapInfo&) {}));
    EXPECT_TRUE(differs([](BootstrapInfo& i) { ++i.version; }));
    EXPECT_TRUE(differs([](BootstrapInfo& i) { ++i.profile; }));
    EXPECT_TRUE(differs([](BootstrapInfo& i) { i.live = false; }));
    EXPECT_TRUE(differs([](BootstrapInfo& i) { i.update = true; }));
    EXPECT_TRUE(differs([](BootstrapInfo& i) { ++i.timescale; }));
    EXPECT_TRUE(differs([](BootstrapInfo& i) { ++i.currentMediaTime.value; }));
    EXPECT_TRUE(differs([](BootstrapInfo& i) { ++i.smpteTimeCodeOffset; }));
    EXPECT_TRUE(differs([](BootstrapInfo& i) { i.movieIdentifier = "x"; }));
    EXPECT_TRUE(differs([](BootstrapInfo& i) { i.servers.pop_back(); }));
    EXPECT_TRUE(differs([](BootstrapInfo& i) { i.qualities = {"r"}; }));
    EXPECT_TRUE(differs([](BootstrapInfo& i) { i.drmData.clear(); }));
    EXPECT_TRUE(differs([](BootstrapInfo& i) { i.metadata = "n"; }));
    EXPECT_TRUE(differs([](BootstrapInfo& i) { i.segmentRunTables.emplace_back(); }));
    EXPECT_TRUE(differs([](BootstrapInfo& i) { i.fragmentRunTables.emplace_back(); }));
}

TEST(BootstrapInfoTest, DiffersWhereAnyFieldOfASegmentRunTableDoes) {
    const SegmentRunTable table = everyField().segmentRunTables[0];
    const auto differs = [&](auto change) {
        SegmentRunTable other = table;
        change(other);
        return !(other == table);
    };
    EXPECT_FALSE(differs([](SegmentRunTable&) {}));
    EXPECT_TRUE(differs([](SegmentRunTable& t) { t.update = false; }));
    EXPECT_TRUE(differs([](SegmentRunTable& t) { t.qualities = {"y"}; }));
    EXPECT_TRUE(differs([](SegmentRunTable& t) { t.entries.pop_back(); }));
    EXPECT_TRUE(differs([](SegmentRunTable& t) { ++t.entries[1].firstSegment; }));
    EXPECT_TRUE(differs([](SegmentRunTable& t) { ++t.entries[1].fragmentsPerSegment; }));
}

TEST(BootstrapInfoTest, DiffersWhereAnyFieldOfAFragmentRunTableDoes) {
    const FragmentRunTable table = everyField().fragmentRunTables[0];
    const auto differs = [&](auto change) {
        FragmentRunTable other = table;
        change(other);
        return !(other == table);
    };
    EXPECT_FALSE(differs([](FragmentRunTable&) {}));
    EXPECT_TRUE(differs([](FragmentRunTable& t) { t.update = 1; }));
    EXPECT_TRUE(differs([](FragmentRunTable& t) { ++t.timescale; }));
    EXPECT_TRUE(differs([](FragmentRunTable& t) { t.qualities = {"y"}; }));
    EXPECT_TRUE(differs([](FragmentRunTable& t) { t.entries.pop_back(); }));
    EXPECT_TRUE(differs([](FragmentRunTable& t) { ++t.entries[1].firstFragment; }));
    EXPECT_TRUE(differs([](FragmentRunTable& t) { ++t.entries[1].firstFragmentTimestamp.value; }));
    EXPECT_TRUE(differs([](FragmentRunTable& t) { ++t.entries[0].fragmentDuration; }));
    EXPECT_TRUE(differs([](FragmentRunTable& t) { ++t.entries[1].discontinuityIndicator; }));
}

TEST(BootstrapInfoTest, ComparesTimestampsInTheTimescaleOfTheLeftOne) {
    BootstrapInfo left;
    BootstrapInfo right;
    left.currentMediaTime = milliseconds(2000);
    right.currentMediaTime = Timestamp{180000, 90000, {0, 0}};
    EXPECT_TRUE(left == right);
}

}  // namespace
}  // namespace torvo::kzs
