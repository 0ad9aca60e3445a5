#include <gtest/gtest.h>

#include "kzm/WriterHarness.h"
#include "kzm/impl/Writer.h"

namespace qlix::kzm {
namespace {

using namespace kz::test;

using Types = std::vector<std::string>;

/// A plain or fragmented writer with one video track.
struct Plain {
    explicit Plain(bool isFragmented, std::uint32_t capacity = kDefaultSampleTableCapacity,
                   std::uint32_t optionBits = 0, std::uint32_t timescale = 1000)
        : writer(stream, configurationFor(isFragmented), nullptr) {
        KZMTrackInfo info = trackInfo("vide", timescale);
        info.optionBits = optionBits;
        track = writer.addTrack(info, trackParams(3), "name", 5, capacity);
        VideoSampleDescriptor description;
        description.handler = info.handler;
        description.format = torvo::kzs::fourCc("VP6F");
        writer.addSampleDescription(track, description, {});
    }

    static WriterConfiguration configurationFor(bool isFragmented) {
        WriterConfiguration out;
        out.fragmented = isFragmented;
        return out;
    }

    void sample(std::uint64_t time, const Bytes& bytes, std::uint32_t kind = 0) {
        writer.writeSample(
            track, sampleOf("vide", time, 1000, static_cast<std::uint32_t>(bytes.size()), kind),
            pool.data(bytes));
    }
    void marker(std::uint64_t time) {
        writer.writeSample(track, sampleOf("vide", time, 1000, 0, kEndOfEditMarker), {});
    }
    const Bytes& file() const { return stream.content; }
    Bytes bodyOf(std::string_view table) const {
        const BoxSpan box = boxAt(file(), "moov/trak/mdia/minf/stbl/" + std::string(table));
        return file().slice(box.offset + 12, box.size - 12);
    }

    SamplePool pool;
    MemoryStream stream;
    Writer writer;
    TrackHandle track;
};

TEST(PlainWriterTest, FillsTheTablesInFrontOfTheData) {
    Plain test(false, 3);
    test.sample(0, text("aa"), 1);
    test.sample(40, text("bbb"));
    test.sample(80, text("c"), 1);
    test.writer.close();
    EXPECT_EQ(topTypes(test.file()), (Types{"ftyp", "moov", "mdat", "mfra"}));

    const BoxSpan mdat = boxAt(test.file(), "mdat");
    EXPECT_EQ(test.file().slice(mdat.offset, mdat.size),
              u32(1) + text("mdat") + u64(22) + text("aabbbc"));
    EXPECT_EQ(test.bodyOf("stts").slice(0, 20), u32(2) + u32(2) + u32(40) + u32(1) + u32(1));
    EXPECT_EQ(test.bodyOf("stsz").slice(0, 20), u32(0) + u32(3) + u32(2) + u32(3) + u32(1));
    EXPECT_EQ(test.bodyOf("stsc").slice(0, 16), u32(1) + u32(1) + u32(3) + u32(1));
    EXPECT_EQ(test.bodyOf("co64").slice(0, 12), u32(1) + u64(mdat.offset + 16));
    EXPECT_EQ(test.bodyOf("stss").slice(0, 12), u32(2) + u32(1) + u32(3));
    EXPECT_EQ(editsOf(test.file(), 0), (std::vector<EditListRow>{{81, 0}}));
}

TEST(PlainWriterTest, ADescriptionStandsInTheFileAtOnce) {
    Plain test(true);
    EXPECT_EQ(test.bodyOf("stsd").slice(0, 12), u32(1) + u32(86) + text("VP6F"));
}

TEST(PlainWriterTest, TheLastSampleLastsATickOfTheMovie) {
    Plain test(false, 3, 0, 90000);  // the movie has 1000 ticks a second
    test.sample(0, text("a"), 1);
    test.sample(40, text("b"));
    test.writer.close();
    EXPECT_EQ(test.bodyOf("stts").slice(0, 20), u32(2) + u32(1) + u32(3600) + u32(1) + u32(90));
}

TEST(PlainWriterTest, HasNoBoxesOfFragments) {
    Plain test(false);
    test.sample(0, text("a"), 1);
    test.writer.close();
    const BoxSpan moov = boxAt(test.file(), "moov");
    for (const BoxSpan& each : boxesIn(test.file(), moov.offset + 8, moov.end())) {
        EXPECT_NE(each.type, "mvex");
    }
}

TEST(PlainWriterTest, WritesSamplesAtOnceAndGivesThemBack) {
    Plain test(false);
    test.sample(0, text("a"), 1);
    test.sample(40, text("b"));
    EXPECT_EQ(test.pool.released, (std::vector<std::size_t>{0, 1}));
}

TEST(PlainWriterTest, ThrowsSeventeenBeyondItsCapacity) {
    Plain test(false, 2);
    test.sample(0, text("a"), 1);
    test.sample(40, text("b"));
    EXPECT_EQ(codeThrownBy([&] { test.sample(80, text("c")); }), 17U);
    EXPECT_EQ(codeThrownBy([&] { test.sample(80, text("c")); }), 48U);
}

TEST(PlainWriterTest, TakesTheDependencyByteOfASampleWhenTheTrackAsksForIt) {
    Plain test(false, 2, 1);
    test.sample(0, text("a"), 0x2401);
    test.sample(40, text("b"), 0x1800);
    test.writer.close();
    EXPECT_EQ(test.bodyOf("sdtp"), u8(0x24) + u8(0x18));
    EXPECT_EQ(test.bodyOf("stss").slice(0, 8), u32(1) + u32(1));
}

TEST(PlainWriterTest, FlushMakesTheFileWholeAndGoesOn) {
    Plain test(false);
    test.sample(0, text("aa"), 1);
    test.writer.flush();
    EXPECT_EQ(topTypes(test.file()), (Types{"ftyp", "moov", "mdat"}));
    EXPECT_EQ(boxAt(test.file(), "mdat").size, 18U);
    test.sample(40, text("b"));
    test.writer.close();
    EXPECT_EQ(topTypes(test.file()), (Types{"ftyp", "moov", "mdat", "mdat", "mfra"}));
    EXPECT_EQ(test.bodyOf("co64").slice(0, 20), u32(2) +
                                                    u64(boxAt(test.file(), "mdat[0]").offset + 16) +
                                                    u64(boxAt(test.file(), "mdat[1]").offset + 16));
}

TEST(PlainWriterTest, PutsTheDataInFrontOfTheMoofOfAFragment) {
    Plain test(true);
    test.sample(0, text("aa"), 1);
    test.sample(40, text("bbb"));
    test.writer.flush();
    test.sample(80, text("c"));
    test.writer.close();
    EXPECT_EQ(topTypes(test.file()),
              (Types{"ftyp", "moov", "mdat", "moof", "mdat", "moof", "mfra"}));
    for (int i = 0; i < 2; ++i) {
        const std::string index = "[" + std::to_string(i) + "]";
        EXPECT_EQ(u64At(test.file(), boxAt(test.file(), "moof" + index + "/traf").offset + 24),
                  boxAt(test.file(), "mdat" + index).offset + 16);
    }
    EXPECT_EQ(rowsOf(test.file(), 0, 1),
              (std::vector<RunListRow>{{40, 2, 0x02000000, 0}, {40, 3, 0x01010000, 0}}));
    EXPECT_EQ(test.bodyOf("stsz"), u32(0) + u32(0)) << "no room in tables";
}

TEST(PlainWriterTest, EndsAFragmentedFileWithItsRandomAccessPoints) {
    Plain test(true);
    test.sample(0, text("a"), 1);
    test.sample(40, text("b"));
    test.marker(50);
    test.sample(100, text("c"), 1);
    test.writer.flush();
    test.sample(140, text("d"), 1);
    test.writer.close();
    const BoxSpan mfra = boxAt(test.file(), "mfra");
    const std::uint64_t first = boxAt(test.file(), "moof[0]").offset;
    const std::uint64_t second = boxAt(test.file(), "moof[1]").offset;
    // Times count the gap; the number of a run is one too high.
    EXPECT_EQ(
        test.file().slice(mfra.offset, mfra.size),
        u32(8 + 24 + 3 * 28 + 16) + text("mfra") +
            (u32(24 + 3 * 28) + text("tfra") + u32(0x01000000) + u32(1) + u32(0x3F) + u32(3)) +
            (u64(0) + u64(first) + u32(1) + u32(2) + u32(1)) +
            (u64(100) + u64(first) + u32(1) + u32(2) + u32(3)) +
            (u64(140) + u64(second) + u32(1) + u32(2) + u32(1)) +
            (u32(16) + text("mfro") + u32(0) + u32(8 + 24 + 3 * 28 + 16)));
}

TEST(PlainWriterTest, ARandomAccessPointNamesTheTrackInThePlaceOfItsTraf) {
    SamplePool pool;
    MemoryStream stream;
    Writer writer(stream, Plain::configurationFor(true), nullptr);
    writer.addTrack(trackInfo("soun", 1000), trackParams(3), "name", 5, 0);
    const TrackHandle video =
        writer.addTrack(trackInfo("vide", 1000), trackParams(3), "name", 5, 0);
    VideoSampleDescriptor description;
    description.handler = torvo::kzs::fourCc("vide");
    description.format = torvo::kzs::fourCc("VP6F");
    writer.addSampleDescription(video, description, {});
    writer.writeSample(video, sampleOf("vide", 0, 1000, 1, 1), pool.data(text("a")));
    writer.close();
    // The video is track 2 and alone in its fragment.
    const BoxSpan tfra = boxAt(stream.content, "mfra/tfra");
    EXPECT_EQ(stream.content.slice(tfra.offset + 12, tfra.size - 12),
              u32(2) + u32(0x3F) + u32(1) + u64(0) + u64(boxAt(stream.content, "moof").offset) +
                  u32(2) + u32(2) + u32(1));
}

TEST(PlainWriterTest, ALateFirstSampleGetsAllItsRowsAtOnce) {
    Plain test(false);
    test.sample(500, text("a"), 1);
    test.sample(540, text("b"));
    test.writer.close();
    EXPECT_EQ(editsOf(test.file(), 0), (std::vector<EditListRow>{{0, 0}, {500, -1}, {41, 0}}));
}

TEST(PlainWriterTest, AFullDiskGives1024) {
    Plain test(false);
    test.stream.capacity = test.file().size() + 30;
    EXPECT_EQ(codeThrownBy([&] {
                  test.sample(0, pattern(70000, 1), 1);
                  test.writer.flush();
              }),
              1024U);
    EXPECT_EQ(codeThrownBy([&] { test.sample(40, text("b")); }), 48U);
}

/// A writer whose mode can be set to what no configuration gives.
class OddWriter : public impl::Writer {
public:
    explicit OddWriter(QlixIOStream& stream)
        : impl::Writer(stream, WriterConfiguration(), nullptr) {}
    void setMode(std::uint32_t mode) { mode_ = static_cast<Mode>(mode); }
    void reserveTracks() { tracksReserved_ = true; }
    std::uint32_t add() {
        return codeThrownBy([this] { addTrack(trackInfo("vide", 1000), trackParams(1), 0); });
    }
};

TEST(PlainWriterTest, TracksNeedAModeThatIsKnown) {
    MemoryStream stream;
    OddWriter writer(stream);
    writer.setMode(2);
    EXPECT_EQ(writer.add(), 32U);
    writer.setMode(3);
    EXPECT_EQ(writer.add(), 33U);
    writer.setMode(1);
    EXPECT_EQ(writer.add(), 0U);
    writer.reserveTracks();
    EXPECT_EQ(writer.add(), 2052U);
}

}  // namespace
}  // namespace qlix::kzm
