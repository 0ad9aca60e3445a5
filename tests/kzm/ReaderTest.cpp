#include <gtest/gtest.h>

#include "kzm/Reader.h"
#include "kzm/ReaderSupport.h"
#include "kzs/base/ByteOrder.h"
#include "support/IsoBuilder.h"

namespace qlix::kzm {
namespace {

using namespace kz::test;
using torvo::kzs::fourCc;

// Answers no to every warning.
class Strict : public WarningHandler {
public:
    bool warn(std::uint32_t code) override {
        codes.push_back(code);
        return false;
    }
    std::vector<std::uint32_t> codes;
};

TEST(PeekTypeTest, AnswersTheCodeOfTheFirstBox) {
    MemoryStream stream(twoTracks().build());
    EXPECT_EQ(peekType(stream), fourCc("ftyp"));
    EXPECT_FALSE(stream.isOpen);
}

TEST(PeekTypeTest, AnswersZeroForFewerThanEightBytes) {
    MemoryStream stream(hex("00000010 667479"));
    EXPECT_EQ(peekType(stream), 0U);
    EXPECT_FALSE(stream.isOpen);
}

TEST(PeekTypeTest, AnswersAlsoWhereTheStreamCantBeClosed) {
    MemoryStream stream(twoTracks().build());
    stream.closeFails = true;
    EXPECT_EQ(peekType(stream), fourCc("ftyp"));
}

TEST(PeekTypeTest, ReadsPieceByPieceAndClosesAfterAFailure) {
    MemoryStream pieces(text("0000moov"));
    pieces.mostPerRead = 3;
    EXPECT_EQ(peekType(pieces), fourCc("moov"));
    MemoryStream failing(text("0000moov"));
    failing.failAtCall = 1;
    failing.failure = 3;
    EXPECT_EQ(codeThrownBy([&] { peekType(failing); }), 3U);
    EXPECT_FALSE(failing.isOpen);
}

TEST(ReaderTest, TellsAboutTheMovie) {
    IsoFile file = twoTracks();
    file.movieTimescale = 600;
    file.movieDuration = 1234;
    const DocInfo info = OpenIso(file).reader.docInfo();
    EXPECT_EQ(info.recordSize, 48U);
    EXPECT_FALSE(info.fragmented);
    EXPECT_EQ(info.timescale, 600U);
    EXPECT_EQ(info.duration, 1234U);
    EXPECT_EQ(info.rate, 1.0F);
    EXPECT_EQ(info.volume, 1.0F);
    EXPECT_EQ(info.creationDate, DateRecord());
}

TEST(ReaderTest, TellsAboutEachTrackInFileOrder) {
    IsoFile file = twoTracks();
    file.movieTimescale = 600;
    file.movieDuration = 6000;
    file.tracks[0].timescale = 90000;
    file.tracks[0].entries = {isoVideoEntry("avc1", 320, 180, pattern(30, 1)),
                              isoVideoEntry("avc1", 640, 360, pattern(70, 2))};
    file.tracks[0].hasDependencies = true;
    file.tracks[0].edits = {{{100, -1}, {500, 0}, {200, -1}}};
    const OpenIso open(file);
    const std::vector<Track> tracks = open.reader.tracks();
    ASSERT_EQ(tracks.size(), 2U);
    const TrackRecord& video = tracks[0].info();
    EXPECT_EQ(video.recordSize, 72U);
    EXPECT_EQ(video.handler, fourCc("vide"));
    EXPECT_EQ(video.flags, 7U);
    EXPECT_EQ(video.trackId, 1U);
    EXPECT_EQ(video.timescale, 90000U);
    EXPECT_EQ(video.duration, 900000U);  // 10 s, brought to the media timescale here and only here
    EXPECT_STREQ(video.language, "und");
    EXPECT_EQ(video.optionBits, 1U);
    EXPECT_EQ(video.handlerName, std::string("name\0", 5));
    EXPECT_EQ(video.descriptionCount, 2U);
    EXPECT_EQ(video.largestDataLength, 70U);
    EXPECT_EQ(video.emptyEditCount, 2U);
    EXPECT_EQ(tracks[1].info().handler, fourCc("soun"));
    EXPECT_EQ(tracks[1].info().trackId, 2U);
    EXPECT_EQ(tracks[1].info().volume, 1.0F);
    EXPECT_EQ(tracks[1].info().optionBits, 0U);
    EXPECT_EQ(tracks[1].sampleCount(), 20U);
}

TEST(ReaderTest, GivesDescriptionsByReference) {
    const OpenIso open(twoTracks());
    const std::vector<Track> tracks = open.reader.tracks();
    ASSERT_EQ(tracks[0].descriptionCount(), 1U);
    const auto& video = dynamic_cast<const VideoSampleDescriptor&>(tracks[0].description(0));
    EXPECT_EQ(video.width, 320U);
    EXPECT_EQ(video.format, fourCc("avc1"));
    EXPECT_EQ(&tracks[0].description(0), &open.reader.tracks()[0].description(0));
    const auto& audio = dynamic_cast<const AudioSampleDescriptor&>(tracks[1].description(0));
    EXPECT_EQ(audio.channelCount, 2);
    EXPECT_EQ(audio.sampleRate, 44100.0F);
    EXPECT_EQ(codeThrownBy([&] { tracks[0].description(1); }), 20U);
}

TEST(ReaderTest, FiltersTracksByHandlerInFileOrder) {
    IsoFile file = twoTracks();
    file.tracks.push_back(isoVideoTrack(3, 1));
    const OpenIso open(file);
    const auto ids = [&](const std::vector<std::uint32_t>& handlers) {
        std::string out;
        for (const Track& track : open.reader.tracks(handlers)) {
            out += std::to_string(track.info().trackId);
        }
        return out;
    };
    EXPECT_EQ(ids({}), "123");
    EXPECT_EQ(ids({fourCc("vide")}), "13");
    EXPECT_EQ(ids({fourCc("soun"), fourCc("vide")}), "123");
    EXPECT_EQ(ids({fourCc("hint")}), "");
}

TEST(ReaderTest, OpensAndClosesTheStream) {
    MemoryStream memory(twoTracks().build());
    {
        const Reader reader(memory, nullptr, nullptr, true);
        EXPECT_TRUE(memory.isOpen);
        EXPECT_EQ(memory.references, 1);
    }
    EXPECT_FALSE(memory.isOpen);
    EXPECT_EQ(memory.references, 0);
}

TEST(ReaderTest, ClosesTheStreamWhenOpeningFails) {
    MemoryStream memory(box("free"));
    EXPECT_EQ(codeThrownBy([&] { Reader(memory, nullptr, nullptr, true); }), 6U);
    EXPECT_FALSE(memory.isOpen);
    EXPECT_EQ(memory.references, 0);
}

// What was read is not wrong because of it.
TEST(ReaderTest, SwallowsAFailureOfTheClosing) {
    class FailingClose : public MemoryStream {
    public:
        using MemoryStream::MemoryStream;
        void close() override {
            MemoryStream::close();
            throw Exception(1);
        }
    };
    FailingClose memory(twoTracks().build());
    EXPECT_EQ(codeThrownBy([&] { Reader(memory, nullptr, nullptr, true); }), 0U);
    EXPECT_FALSE(memory.isOpen);
}

TEST(ReaderTest, IsKeptOpenByItsIterators) {
    MemoryStream memory(twoTracks().build());
    std::shared_ptr<SampleIterator> iterator;
    {
        const Reader reader(memory, nullptr, nullptr, true);
        iterator =
            reader.createIterator({0, 1000}, reader.wholeEnd(), std::vector<std::uint32_t>{});
    }
    EXPECT_TRUE(memory.isOpen);
    EXPECT_EQ(iterator->next().time, 0U);
    iterator.reset();
    EXPECT_FALSE(memory.isOpen);
}

TEST(ReaderTest, ThrowsSixWithoutAMovie) {
    EXPECT_EQ(codeThrownBy([] { OpenIso{Bytes()}; }), 6U);
    EXPECT_EQ(codeThrownBy([] { OpenIso{Bytes(box("ftyp", text("isom"), u32(0)))}; }), 6U);
}

TEST(ReaderTest, ThrowsTenWhereATimescaleIsZero) {
    IsoFile movie = twoTracks();
    movie.movieTimescale = 0;
    EXPECT_EQ(codeThrownBy([&] { OpenIso{movie}; }), 10U);
    IsoFile media = twoTracks();
    media.tracks[1].timescale = 0;
    EXPECT_EQ(codeThrownBy([&] { OpenIso{media}; }), 10U);
}

TEST(ReaderTest, PassesOnWhatTheStreamThrows) {
    MemoryStream memory(twoTracks().build());
    memory.failAtCall = 0;
    memory.failure = 3;
    EXPECT_EQ(codeThrownBy([&] { Reader(memory, nullptr, nullptr, true); }), 3U);
}

TEST(ReaderTest, AsksTheHandlerAboutStrayBytes) {
    const Bytes stray = twoTracks().build() + hex("000000");
    // The media data is found before the end is reached, so nothing is asked on opening.
    Strict handler;
    const OpenIso open(stray, true, &handler);
    EXPECT_TRUE(handler.codes.empty());
    IsoFile fragmented = twoTracks();
    fragmented.samplesPerFragment = 5;
    const OpenIso second(fragmented.build() + hex("000000"), true, &handler);
    EXPECT_EQ(codeThrownBy([&] { second.samples(); }), 1028U);
    EXPECT_EQ(handler.codes, std::vector<std::uint32_t>{3073});
}

TEST(ReaderTest, EndsWithTheMovieItsFragmentsOrNever) {
    IsoFile file = twoTracks();
    EXPECT_EQ(OpenIso(file).reader.wholeEnd().value, 100000U);
    file.movieDuration = 0;
    EXPECT_EQ(OpenIso(file).reader.wholeEnd().value, 0U);
    file.samplesPerFragment = 5;
    EXPECT_EQ(OpenIso(file).reader.wholeEnd().value, 0xFFFFFFFFFFFFFFFFU);
    file.fragmentDuration = 0;
    EXPECT_EQ(OpenIso(file).reader.wholeEnd().value, 0xFFFFFFFFFFFFFFFFU);
    file.fragmentDuration = 1500;
    EXPECT_EQ(OpenIso(file).reader.wholeEnd().value, 1500U);
    file.movieDuration = 7;
    EXPECT_EQ(OpenIso(file).reader.wholeEnd().value, 7U);
    EXPECT_EQ(OpenIso(file).reader.wholeEnd().timescale, 1000U);
}

TEST(ReaderTest, HasNoDurationFromAHeaderThatTellsOfTheTablesInFrontOfFragments) {
    IsoFile file = twoTracks();
    file.movieDuration = 120;  // of the three samples of the video
    file.samplesPerFragment = 5;
    EXPECT_EQ(OpenIso(file).reader.docInfo().duration, 120U);
    file.samplesInTables = 3;
    EXPECT_EQ(OpenIso(file).reader.docInfo().duration, 0U);
    EXPECT_EQ(OpenIso(file).reader.wholeEnd().value, 0xFFFFFFFFFFFFFFFFU);
    file.fragmentDuration = 400;
    EXPECT_EQ(OpenIso(file).reader.docInfo().duration, 400U);
    EXPECT_EQ(OpenIso(file).reader.wholeEnd().value, 400U);
}

TEST(ReaderTest, ReadsAMovieThatGivesNoDurationWhole) {
    IsoFile file = twoTracks();
    file.movieDuration = 0;
    file.samplesPerFragment = 4;
    EXPECT_EQ(OpenIso(file).samples().size(), 30U);
}

TEST(ReaderTest, HasTracksButNoSamplesInAFragmentedFileWithoutFragments) {
    IsoFile file;
    file.tracks = {isoVideoTrack(1, 0)};
    file.samplesPerFragment = 5;
    const OpenIso open(file);
    EXPECT_EQ(open.reader.tracks().size(), 1U);
    EXPECT_TRUE(open.reader.docInfo().fragmented);
    EXPECT_EQ(timesOf(open.samples()), "");
}

TEST(ReaderTest, CountsTheSamplesOfTheFragmentsReadSoFar) {
    IsoFile file = twoTracks();
    file.samplesPerFragment = 4;
    const OpenIso open(file);
    const Track video = open.reader.tracks()[0];
    // Opening looks for the first media data, so it has read the first fragment.
    EXPECT_EQ(video.sampleCount(), 4U);
    open.samples();
    EXPECT_EQ(video.sampleCount(), 10U);
}

TEST(ReaderTest, ReadsBothVersionsOfTheHeaders) {
    IsoFile file = twoTracks();
    file.version = 1;
    file.tracks[0].edits = {{{100000, 0}}};
    file.tracks[0].hasLargeOffsets = true;
    const OpenIso open(file, false);
    EXPECT_EQ(open.reader.docInfo().duration, 100000U);
    EXPECT_EQ(open.samples().size(), 30U);
}

TEST(ReaderTest, ReadsAFragmentInFrontOfTheMovie) {
    IsoFile file;
    file.tracks = {isoVideoTrack(1, 4)};
    file.samplesPerFragment = 2;
    file.base = IsoBase::kMoof;
    const Bytes bytes = file.build();
    // The movie goes from its place to the end.
    const std::size_t at = 24;
    const auto size = torvo::kzs::loadU32(bytes.data() + at);
    const Bytes moved = bytes.slice(0, at) + bytes.slice(at + size, bytes.size() - at - size) +
                        bytes.slice(at, size);
    const OpenIso open(moved);
    const std::vector<Sample> samples = open.samples();
    EXPECT_EQ(timesOf(samples), "0k 40 80 120");
    for (std::size_t i = 0; i < samples.size(); ++i) {
        EXPECT_EQ(open.dataOf(samples[i]), file.tracks[0].samples[i].data);
    }
}

TEST(ReaderTest, ReadsALastBoxOfSizeZeroAndA64BitSize) {
    IsoFile file = twoTracks();
    const Bytes bytes = file.build();
    const std::size_t mdat = bytes.find("mdat") - 4;
    const OpenIso toEnd(bytes.patched(mdat, u32(0)));
    EXPECT_EQ(toEnd.dataOf(toEnd.samples()[0]), file.tracks[0].samples[0].data);
    // Bytes of the media move by the 8 that the longer header takes, so only the walk is the same.
    const Bytes large = bytes.slice(0, mdat) + u32(1) + text("mdat") +
                        u64(bytes.size() - mdat + 8) +
                        bytes.slice(mdat + 8, bytes.size() - mdat - 8);
    EXPECT_EQ(OpenIso(large).samples().size(), 30U);
}

TEST(ReaderTest, ThrowsTwelveForATrackWithoutTables) {
    IsoFile file = twoTracks();
    Bytes bytes = file.build();
    // A `stbl` with these boxes missing is refused on opening already.
    const std::size_t stts = bytes.find("stts");
    EXPECT_EQ(codeThrownBy([&] { OpenIso(bytes.patched(stts, text("sttx"))); }), 14U);
}

TEST(ReaderTest, RefusesANullTrackAndATimeWithoutATimescale) {
    const OpenIso open(twoTracks());
    EXPECT_EQ(codeThrownBy([&] {
                  open.reader.createIterator({0, 1000}, {1, 1000}, std::vector<Track>{Track()});
              }),
              20U);
    EXPECT_EQ(codeThrownBy([&] { open.samples({0, 0}, {1, 1000}); }), 10U);
    EXPECT_EQ(codeThrownBy([&] { open.samples({0, 1000}, {1, 0}); }), 10U);
}

}  // namespace
}  // namespace qlix::kzm
