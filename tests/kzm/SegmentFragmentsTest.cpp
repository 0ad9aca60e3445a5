#include <algorithm>

#include <gtest/gtest.h>

#include "kzm/WriterHarness.h"

namespace qlix::kzm {
namespace {

using namespace kz::test;

using Rows = std::vector<RunListRow>;
using Types = std::vector<std::string>;

constexpr std::uint32_t kSync = 0x02000000;
constexpr std::uint32_t kOther = 0x01010000;

/// Ids of the tracks that have a `traf` in the n-th `moof`.
std::vector<std::uint32_t> tracksOf(const Bytes& file, std::size_t fragment) {
    const BoxSpan moof = boxAt(file, "moof[" + std::to_string(fragment) + "]");
    std::vector<std::uint32_t> out;
    for (const BoxSpan& each : boxesIn(file, moof.offset + 8, moof.end())) {
        if (each.type == "traf") out.push_back(u32At(file, each.offset + 20));
    }
    return out;
}

TEST(SegmentFragmentsTest, TheFirstStartPlacesTheHeaders) {
    SegmentDriver test;
    const std::uint64_t start = test.writer.startFragment();
    EXPECT_EQ(start, test.file().size());
    EXPECT_EQ(boxAt(test.file(), "moov").end(), start);
    EXPECT_EQ(boxAt(test.file(), "moov/mvex").end(), start);
}

TEST(SegmentFragmentsTest, ASecondStartWithoutSamplesWritesNothing) {
    SegmentDriver test;
    const std::uint64_t start = test.writer.startFragment();
    const std::size_t writes = test.stream.log.size();
    const Bytes before = test.file();
    EXPECT_EQ(test.writer.startFragment(), start);
    EXPECT_EQ(test.writer.startFragment(), start);
    EXPECT_EQ(test.stream.log.size(), writes);
    EXPECT_EQ(test.file(), before);
}

TEST(SegmentFragmentsTest, StandBehindEachOther) {
    SegmentDriver test;
    const std::uint64_t first = test.writer.startFragment();
    test.video(0, text("a"), 1);
    const std::uint64_t second = test.writer.startFragment();
    EXPECT_EQ(second, test.file().size());
    test.video(40, text("b"));
    test.bootstrap(text("BST"));
    const std::uint64_t third = test.writer.startFragment();
    test.writer.close();
    EXPECT_EQ(topTypes(test.file()),
              (Types{"ftyp", "moov", "afra", "moof", "mdat", "afra", "abst", "moof", "mdat"}));
    EXPECT_EQ(boxAt(test.file(), "afra").offset, first);
    EXPECT_EQ(boxAt(test.file(), "afra[1]").offset, second);
    EXPECT_EQ(test.file().size(), third);
}

TEST(SegmentFragmentsTest, AnAfraOffsetLeadsToTheFirstByteOfItsSample) {
    SegmentDriver test;
    test.writer.startFragment();
    test.video(0, text("first"), 1, true);
    test.audio(10, text("sound"), false);
    test.hintOnly(20, text("header"), true);
    test.video(20, text("Second"), 1, true);
    test.bootstrap(text("some bytes in between"));
    test.writer.close();
    const BoxSpan afra = boxAt(test.file(), "afra");
    EXPECT_EQ(afra.size, 21U + 3 * 16);
    ASSERT_EQ(u32At(test.file(), afra.offset + 17), 3U);
    const std::vector<std::string> starts = {"first", "header", "Second"};
    const std::vector<std::uint64_t> times = {0, 20, 20};
    for (std::size_t i = 0; i < 3; ++i) {
        const std::size_t entry = afra.offset + 21 + 16 * i;
        EXPECT_EQ(u64At(test.file(), entry), times[i]);
        const std::size_t at =
            afra.offset + static_cast<std::size_t>(u64At(test.file(), entry + 8));
        EXPECT_EQ(test.file().slice(at, starts[i].size()).str(), starts[i]);
    }
}

TEST(SegmentFragmentsTest, AHintOnlySampleHasNoMediaRow) {
    SegmentDriver test;
    test.writer.startFragment();
    test.hintOnly(0, text("header"));
    test.video(0, text("a"), 1);
    test.writer.close();
    EXPECT_EQ(rowsOf(test.file(), 0, 1), (Rows{{1, 1, kSync, 0}}));
    EXPECT_EQ(rowsOf(test.file(), 0, 3), (Rows{{0, 6, kSync, 0}, {1, 1, kSync, 0}}));
}

TEST(SegmentFragmentsTest, ATrackWithoutSamplesHasNoTraf) {
    SegmentDriver test;
    test.writer.startFragment();
    test.video(0, text("a"), 1);
    test.writer.startFragment();
    test.audio(10, text("x"));
    test.writer.close();
    EXPECT_EQ(tracksOf(test.file(), 0), (std::vector<std::uint32_t>{1, 3}));
    EXPECT_EQ(tracksOf(test.file(), 1), (std::vector<std::uint32_t>{2, 3}));
}

TEST(SegmentFragmentsTest, TheNextFragmentSettlesTheLastDurationOfTheOneBefore) {
    SegmentDriver test;
    test.writer.startFragment();
    test.video(0, text("a"), 1);
    test.video(40, text("b"));
    test.writer.startFragment();
    EXPECT_EQ(rowsOf(test.file(), 0, 1), (Rows{{40, 1, kSync, 0}, {1, 1, kOther, 0}}));
    test.video(75, text("c"));
    test.writer.close();
    EXPECT_EQ(rowsOf(test.file(), 0, 1), (Rows{{40, 1, kSync, 0}, {35, 1, kOther, 0}}));
    EXPECT_EQ(rowsOf(test.file(), 0, 3), (Rows{{40, 1, kSync, 0}, {35, 1, kOther, 0}}));
    EXPECT_EQ(rowsOf(test.file(), 1, 1), (Rows{{1, 1, kOther, 0}}));
}

TEST(SegmentFragmentsTest, ThePatchOfATrackWaitsForAFragmentThatHasIt) {
    SegmentDriver test;
    test.writer.startFragment();
    test.video(0, text("a"), 1);
    test.audio(10, text("x"));
    test.writer.startFragment();
    test.video(40, text("b"));
    test.writer.startFragment();
    EXPECT_EQ(rowsOf(test.file(), 0, 2), (Rows{{1, 1, kOther, 0}}));
    test.audio(300, text("y"));
    test.writer.close();
    EXPECT_EQ(rowsOf(test.file(), 0, 2), (Rows{{290, 1, kOther, 0}}));
    EXPECT_EQ(rowsOf(test.file(), 1, 1), (Rows{{1, 1, kOther, 0}}));
    EXPECT_EQ(rowsOf(test.file(), 2, 2), (Rows{{1, 1, kOther, 0}}));
}

TEST(SegmentFragmentsTest, TheBytesOfAMediaSampleLieInTheHintSample) {
    SegmentDriver test;
    test.writer.startFragment();
    const Bytes tag = text("..payload..");
    test.writer.writeHintedSample(test.hintTrack, test.videoTrack, sampleOf("hint", 0, 1000, 11, 1),
                                  {2, 7}, test.pool.data(tag), false);
    test.writer.close();
    const std::size_t data = boxAt(test.file(), "mdat").offset + 16;
    const BoxSpan traf = boxAt(test.file(), "moof/traf");
    EXPECT_EQ(u64At(test.file(), traf.offset + 24), data) << "base data offset";
    const BoxSpan run = boxAt(test.file(), "moof/traf/trun");
    const std::size_t at = data + u32At(test.file(), run.offset + 16);
    EXPECT_EQ(test.file().slice(at, 7), text("payload"));
}

TEST(SegmentFragmentsTest, AMediaPartMayBeEmpty) {
    SegmentDriver test;
    test.writer.startFragment();
    test.video(0, text("a"), 1);
    test.writer.writeHintedSample(test.hintTrack, test.videoTrack, sampleOf("hint", 40, 1000, 5),
                                  {5, 0}, test.pool.data(text("empty")), false);
    test.writer.close();
    EXPECT_EQ(rowsOf(test.file(), 0, 1), (Rows{{40, 1, kSync, 0}, {1, 0, kOther, 0}}));
}

TEST(SegmentFragmentsTest, AdjacentMediaPartsShareARun) {
    SegmentDriver test;
    test.writer.startFragment();
    test.video(0, text("aa"), 1);
    test.video(40, text("bbb"));  // the parts are the whole samples, so they touch
    test.audio(50, text("x"));
    test.video(80, text("c"));
    test.writer.close();
    const BoxSpan traf = boxAt(test.file(), "moof/traf");
    EXPECT_EQ(boxesIn(test.file(), traf.offset + 8, traf.end()).size(), 3U) << "tfhd and two runs";
    EXPECT_EQ(rowsOf(test.file(), 0, 1),
              (Rows{{40, 2, kSync, 0}, {40, 3, kOther, 0}, {1, 1, kOther, 0}}));
}

TEST(SegmentFragmentsTest, SamplesComeBackLastFirstOnceTheirFragmentIsWritten) {
    SegmentDriver test;
    test.writer.startFragment();
    test.video(0, text("a"), 1);
    test.video(40, text("b"));
    test.audio(40, text("x"));
    EXPECT_TRUE(test.pool.released.empty());
    test.writer.startFragment();
    EXPECT_EQ(test.pool.released, (std::vector<std::size_t>{2, 1, 0}));
}

TEST(SegmentFragmentsTest, LargeSamplesAreNotCopied) {
    SegmentDriver test;
    test.writer.startFragment();
    const Bytes large = pattern(100000, 3);
    const SampleData data = test.pool.data(large);
    test.writer.writeHintedSample(test.hintTrack, test.videoTrack,
                                  sampleOf("hint", 0, 1000, 100000, 1), {0, 100000}, data, false);
    test.writer.close();
    EXPECT_TRUE(
        std::any_of(test.stream.log.begin(), test.stream.log.end(),
                    [&](const RecordingStream::Write& each) { return each.bytes == data.data; }));
    EXPECT_EQ(test.file().slice(boxAt(test.file(), "mdat").offset + 16, 100000), large);
}

TEST(SegmentFragmentsTest, IsWrittenInOrderWithTheIndexLast) {
    SegmentDriver test;
    const std::uint64_t start = test.writer.startFragment();
    test.video(0, pattern(70000, 1), 1, true);
    test.bootstrap(pattern(20000, 2));  // too far apart for one write of afra and moof
    test.stream.log.clear();
    test.writer.startFragment();

    const Bytes& file = test.file();
    std::vector<std::string> order;
    for (const RecordingStream::Write& each : test.stream.log) {
        const auto at = static_cast<std::size_t>(each.position);
        std::string type;
        for (const BoxSpan& box : boxesIn(file, 0, file.size())) {
            if (box.offset <= at && at < box.end()) type = box.type;
        }
        if (order.empty() || order.back() != type) order.push_back(type);
    }
    EXPECT_EQ(order, (Types{"abst", "moov", "mdat", "moof", "afra"}));
    EXPECT_EQ(test.stream.log.back().position, start);
}

TEST(SegmentFragmentsTest, AFragmentOfManySamplesTakesFewWrites) {
    SegmentDriver test;
    std::uint64_t time = 0;
    std::size_t most = 0;
    for (int fragment = 0; fragment < 3; ++fragment) {
        test.writer.startFragment();
        test.stream.log.clear();
        for (int i = 0; i < 100; ++i, time += 10) {
            test.video(time, text("a"), i == 0 ? 1 : 0, i == 0);
            test.audio(time, text("x"));
        }
        test.bootstrap(text("BST"));
        test.writer.startFragment();
        most = std::max(most, test.stream.log.size());
    }
    // patches of the last fragment, abst, moov (small here), mdat, moof together with afra
    EXPECT_LE(most, 5U);
}

TEST(SegmentFragmentsTest, FlushClosesTheFragmentAndBeginsTheNext) {
    SegmentDriver test;
    test.writer.startFragment();
    test.video(0, text("a"), 1);
    test.writer.flush();
    EXPECT_EQ(topTypes(test.file()), (Types{"ftyp", "moov", "afra", "moof", "mdat"}));
    const std::size_t size = test.file().size();
    EXPECT_EQ(test.writer.startFragment(), size);
    test.video(40, text("b"));
    test.writer.close();
    EXPECT_EQ(test.file().size(), size + 21 + 168 + 17);
}

TEST(SegmentFragmentsTest, FlushWithoutSamplesLeavesTheFragmentOpen) {
    SegmentDriver test;
    const std::uint64_t start = test.writer.startFragment();
    test.writer.flush();
    test.bootstrap(text("B"));
    test.writer.flush();
    EXPECT_EQ(test.file().size(), start);
    test.video(0, text("a"), 1);
    test.writer.close();
    EXPECT_EQ(topTypes(test.file()), (Types{"ftyp", "moov", "afra", "abst", "moof", "mdat"}));
}

TEST(SegmentFragmentsTest, FlushBringsTheDurationOfTheLastFragmentToTheFile) {
    SegmentDriver test;
    test.writer.startFragment();
    test.video(0, text("a"), 1);
    test.writer.startFragment();
    test.video(40, text("b"));
    test.writer.flush();
    EXPECT_EQ(rowsOf(test.file(), 0, 1), (Rows{{40, 1, kSync, 0}}));
}

TEST(SegmentFragmentsTest, CloseFinishesTheFileAndGivesTheStreamBack) {
    SegmentDriver test;
    EXPECT_EQ(test.stream.references, 1);
    EXPECT_TRUE(test.stream.isOpen);
    test.writer.startFragment();
    test.video(0, text("a"), 1);
    test.writer.close();
    EXPECT_FALSE(test.stream.isOpen);
    EXPECT_EQ(test.stream.references, 0);
    const Bytes before = test.file();
    test.writer.close();
    EXPECT_EQ(test.file(), before);
    EXPECT_EQ(codeThrownBy([&] { test.video(40, text("b")); }), 48U);
    EXPECT_EQ(codeThrownBy([&] { test.writer.startFragment(); }), 48U);
}

TEST(SegmentFragmentsTest, TheLastHandleThatGoesClosesTheFile) {
    MemoryStream stream;
    {
        KZSWriter first(stream, WriterConfiguration(), nullptr);
        const KZSWriter second = first;
        EXPECT_EQ(stream.references, 1);
        EXPECT_TRUE(stream.isOpen);
    }
    EXPECT_FALSE(stream.isOpen);
    EXPECT_EQ(stream.references, 0);
    EXPECT_EQ(topTypes(stream.content), (Types{"ftyp", "moov"}));
}

TEST(SegmentFragmentsTest, CloseWithoutAnyFragmentPlacesTheHeaders) {
    SegmentDriver test;
    test.writer.close();
    EXPECT_EQ(topTypes(test.file()), (Types{"ftyp", "moov"}));
    EXPECT_EQ(boxAt(test.file(), "moov/mvex").end(), test.file().size());
}

TEST(SegmentFragmentsTest, AnotherDescriptionCountsForTheSamplesToCome) {
    SegmentDriver::Options options;
    options.descriptionSlots = 2;
    SegmentDriver test(options);
    test.writer.startFragment();
    test.video(0, text("a"), 1);
    test.describe(test.audioTrack, "soun");  // no sample of it in the fragment yet
    test.audio(10, text("x"));
    test.writer.close();
    EXPECT_EQ(topTypes(test.file()), (Types{"ftyp", "moov", "afra", "moof", "mdat"}));
    EXPECT_EQ(u32At(test.file(), boxAt(test.file(), "moof/traf[0]").offset + 32), 1U);
    EXPECT_EQ(u32At(test.file(), boxAt(test.file(), "moof/traf[1]").offset + 32), 2U);
}

TEST(SegmentFragmentsTest, AnotherDescriptionOfATrackWithSamplesClosesTheFragment) {
    SegmentDriver::Options options;
    options.descriptionSlots = 2;
    SegmentDriver test(options);
    test.writer.startFragment();
    test.video(0, text("a"), 1);
    test.describe(test.videoTrack, "vide");
    EXPECT_EQ(topTypes(test.file()), (Types{"ftyp", "moov", "afra", "moof", "mdat"}));
    EXPECT_EQ(codeThrownBy([&] { test.video(40, text("b")); }), 1536U);
    EXPECT_EQ(test.writer.startFragment(), test.file().size());
    test.video(40, text("b"));
    test.writer.close();
    EXPECT_EQ(u32At(test.file(), boxAt(test.file(), "moof[0]/traf").offset + 32), 1U);
    EXPECT_EQ(u32At(test.file(), boxAt(test.file(), "moof[1]/traf").offset + 32), 2U);
    EXPECT_EQ(u32At(test.file(), boxAt(test.file(), "moov/trak/mdia/minf/stbl/stsd").offset + 12),
              2U);
}

TEST(SegmentFragmentsTest, ABootstrapIsGivenBackOnceItIsWritten) {
    SegmentDriver test;
    test.writer.startFragment();
    test.bootstrap(text("BST"));
    test.video(0, text("a"), 1);
    EXPECT_TRUE(test.pool.released.empty());
    test.writer.startFragment();
    EXPECT_EQ(test.pool.released, (std::vector<std::size_t>{0, 1}));
    EXPECT_EQ(test.file().slice(boxAt(test.file(), "abst").offset, 15),
              u32(15) + text("abst") + u32(0) + text("BST"));
}

TEST(SegmentFragmentsTest, AMarkerLeavesNoBytesAndNoIndexEntry) {
    SegmentDriver test;
    test.writer.startFragment();
    test.video(0, text("a"), 1, true);
    const SampleData data = test.pool.data(text("m"));
    test.writer.writeSample(test.hintTrack, sampleOf("hint", 40, 1000, 1, kEndOfEditMarker), data,
                            true);
    EXPECT_EQ(test.pool.released, (std::vector<std::size_t>{1}));
    test.writer.close();
    EXPECT_EQ(boxAt(test.file(), "mdat").size, 17U);
    EXPECT_EQ(boxAt(test.file(), "afra").size, 37U);
}

TEST(SegmentFragmentsTest, ShortWritesGiveTheSameFile) {
    const auto make = [](std::uint64_t mostPerWrite) {
        SegmentDriver test;
        test.stream.mostPerWrite = mostPerWrite;
        test.writer.startFragment();
        test.video(0, pattern(3000, 1), 1, true);
        test.bootstrap(text("BST"));
        test.writer.startFragment();
        test.audio(40, pattern(500, 2));
        test.writer.close();
        return test.file();
    };
    EXPECT_EQ(difference(make(7), make(MemoryStream::kNever)), "");
}

}  // namespace
}  // namespace qlix::kzm
