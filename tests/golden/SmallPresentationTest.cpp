#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/ExpectedSegment.h"
#include "support/FlvBuilder.h"
#include "support/IsoBuilder.h"
#include "support/Process.h"
#include "support/TempDir.h"

namespace kz::test {
namespace {

constexpr std::uint64_t kNone = 0xFFFFFFFFFFFFFFFF;

struct ExpectedIndexRow {
    std::uint64_t time = 0;
    std::uint32_t segment = 1;
    std::uint32_t fragment = 0;
    std::uint64_t offset = 0;
};

Bytes expectedIndex(const std::vector<ExpectedIndexRow>& rows) {
    Bytes body = u8(0xE0) + u32(1000) + u32(0) + u32(rows.size());
    for (const ExpectedIndexRow& row : rows) {
        body += u64(row.time) + u32(row.segment) + u32(row.fragment) + u64(row.offset) + u64(0);
    }
    return fullBox("afra", 0, 0, body);
}

/// Packages `tags` as in.flv with an external bootstrap into its folder.
class Packaged {
public:
    explicit Packaged(const std::vector<FlvTag>& tags, const std::vector<std::string>& more = {}) {
        std::vector<std::string> argv = {KZ_PACKAGER,
                                         "--input-file=" + folder_.write("in.flv", flvFile(tags)),
                                         "--output-path=" + folder_.path(), "--external-bootstrap"};
        argv.insert(argv.end(), more.begin(), more.end());
        const ProcessResult result = run(argv);
        EXPECT_EQ(result.status, 0) << result.err;
    }

    Bytes segment(int number = 1) const {
        return withoutDates(readFile(folder_ / ("inSeg" + std::to_string(number) + ".kzs")));
    }
    Bytes index(int number = 1) const {
        return readFile(folder_ / ("inSeg" + std::to_string(number) + ".kzx"));
    }
    Bytes bootstrap() const { return readFile(folder_ / "in.bootstrap"); }
    /// With the random numbers of ids taken out.
    std::string manifest() const {
        std::string text = readFile(folder_ / "in.kzd").str();
        const std::string id = "bootstrapInfoId=\"bootstrap";
        const std::size_t at = text.find(id) + id.size();
        const std::string number = text.substr(at, text.find('"', at) - at);
        for (auto hit = text.find("\"bootstrap" + number); hit != std::string::npos;
             hit = text.find("\"bootstrap" + number)) {
            text.replace(hit, 10 + number.size(), "\"bootstrapN");
        }
        return text;
    }

private:
    TempDir folder_;
};

/// A tag of a media track whose sample proper begins `codecHeader` bytes into the body.
ExpectedTag mediaTag(const FlvTag& tag, int track, std::uint32_t codecHeader, bool isSync = false,
                     bool isIndexed = false) {
    return ExpectedTag{tag.image(), tag.timeMs, track, 11 + codecHeader, isSync, 0, isIndexed};
}

/// A sequence header: a sync sample of the hint track alone.
ExpectedTag headerTag(const FlvTag& tag, bool isIndexed) {
    return ExpectedTag{tag.image(), tag.timeMs, 0, 0, true, 0, isIndexed};
}

Bytes bootstrapBox(const Bytes& payload) { return fullBox("abst", 0, 0, payload); }

const ExpectedMediaTrack kAvcTrack{"vide", 0, 0, expectedVideoEntry("avc1", 0, 0, "AVC Coding")};
const ExpectedMediaTrack kAacTrack{"soun", 0, 0, expectedAudioEntry("mp4a", 2, 16, 44000)};

// Key frames at 0 and 4100, grid 4000, the last tag at 4140.
TEST(SmallPresentationTest, AvcAndAacMakeTwoFragments) {
    const FlvTag videoHeader = avcConfig(0);
    const FlvTag audioHeader = aacConfig(0);
    const FlvTag key = avcFrame(0, true, pattern(40, 1));
    const FlvTag sound = aacFrame(0, pattern(9, 2));
    const FlvTag frame = avcFrame(2000, false, pattern(20, 3), 80);
    const FlvTag late = aacFrame(4010, pattern(8, 4));
    const FlvTag secondKey = avcFrame(4100, true, pattern(30, 5));
    const FlvTag last = aacFrame(4140, pattern(7, 6));
    const Packaged packaged({videoHeader, audioHeader, key, sound, frame, late, secondKey, last});

    // Fragment 1 closes at the key frame of 4100: 4100 ms in steps of 100. The second one ends a
    // millisecond behind the last tag: 41 ms, which rounds to nothing and so counts as 100.
    const Bytes first = expectedBootstrap(1, 4100, {{1, 1}}, {{1, 0, 4100, 0}});
    const Bytes whole =
        expectedBootstrap(2, 4140, {{1, 2}}, {{1, 0, 4100, 0}, {2, 4100, 100, 0}, {0, 0, 0, 0}});
    ExpectedTag delayed = mediaTag(frame, 1, 5);
    delayed.compositionOffset = 80;
    // The last times are 4100 (video) and 4140; each track lasts one tick longer.
    const Bytes expected = expectedSegment(
        {kAvcTrack, kAacTrack},
        {{0, 4101, 4101, {{4101, 0}}}, {0, 4141, 4141, {{4141, 0}}}, {0, 4141, 4141, {{4141, 0}}}},
        4141,
        {{first,
          {headerTag(videoHeader, true), headerTag(audioHeader, false), mediaTag(key, 1, 5, true),
           mediaTag(sound, 2, 2), delayed, mediaTag(late, 2, 2)}},
         {whole, {mediaTag(secondKey, 1, 5, true), mediaTag(last, 2, 2)}}});
    EXPECT_EQ(difference(packaged.segment(), expected), "");
    EXPECT_EQ(difference(packaged.bootstrap(), bootstrapBox(whole)), "");

    // The header takes 32 bytes of ftyp and the moov, whose size stands behind it.
    const std::uint64_t start = 32 + 0x01000000 * std::uint64_t{expected[32]} +
                                0x10000 * std::uint64_t{expected[33]} +
                                0x100 * std::uint64_t{expected[34]} + expected[35];
    // afra with one row, abst, moof, mdat of the six tags.
    const std::uint64_t afra = 21 + 16;
    const std::uint64_t abst = 12 + first.size();
    // mfhd 16; hint: traf 8, tfhd 28, one run of six; video: two runs of one; audio: two.
    const std::uint64_t moof = 8 + 16 + (36 + 20 + 6 * 16) + (36 + 2 * 36) + (36 + 2 * 36);
    const std::uint64_t mdat = 16 + videoHeader.image().size() + audioHeader.image().size() +
                               key.image().size() + sound.image().size() + frame.image().size() +
                               late.image().size();
    EXPECT_EQ(difference(packaged.index(),
                         expectedIndex(
                             {{0, 1, 1, start}, {4100, 1, 2, start + afra + abst + moof + mdat}})),
              "");
}

TEST(SmallPresentationTest, TheManifestHoldsTheBootstrapUrlAndTheTrackRecord) {
    const Packaged packaged(
        {mp3Frame(0, pattern(5, 1)), mp3Frame(26, pattern(5, 2)), mp3Frame(52, pattern(5, 3))});
    // onMetaData: duration 0.052, audiocodecid ".mp3", audiosamplerate 44000, audiochannels 2,
    // trackinfo of one object: length 52, timescale 1000, language "eng".
    EXPECT_EQ(packaged.manifest(),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
              "<manifest xmlns=\"http://ns.kzspackager.example/kzd/1.0\">\n"
              "\t<id>\n\t\tin\n\t</id>\n"
              "\t<mimeType>\n\t\t\n\t</mimeType>\n"
              "\t<streamType>\n\t\trecorded\n\t</streamType>\n"
              "\t<duration>\n\t\t0.051999999999999998\n\t</duration>\n"
              "\t<bootstrapInfo\n"
              "\t\t profile=\"named\"\n\t\t url=\"in.bootstrap\"\n\t\t id=\"bootstrapN\"\n"
              "\t>\n\t</bootstrapInfo>\n"
              "\t<media\n"
              "\t\t streamId=\"in\"\n\t\t url=\"in\"\n\t\t bootstrapInfoId=\"bootstrapN\"\n"
              "\t>\n"
              "\t\t<metadata>\n"
              "\t\t\tAgAKb25NZXRhRGF0YQgAAAAAAAhkdXJhdGlvbgA/qp++dsi0OQAMYXVkaW9jb2RlY2lkAgAEL"
              "m1wMwAPYXVkaW9zYW1wbGVyYXRlAEDlfAAAAAAAAA1hdWRpb2NoYW5uZWxzAEAAAAAAAAAAAAl0cmFj"
              "a2luZm8KAAAAAQMABmxlbmd0aABASgAAAAAAAAAJdGltZXNjYWxlAECPQAAAAAAAAAhsYW5ndWFnZQIA"
              "A2VuZwAACQAACQ==\n"
              "\t\t</metadata>\n"
              "\t</media>\n"
              "</manifest>\n");
}

// VP6 at 0, 3000, 9000 with key frames at 0 and 9000: a line is crossed twice without one.
TEST(SmallPresentationTest, ALateKeyFrameOfVp6MakesASpan) {
    const FlvTag key = vp6Frame(0, true, pattern(20, 1));
    const FlvTag second = vp6Frame(4500, false, pattern(10, 2));
    const FlvTag third = vp6Frame(8500, false, pattern(11, 3));
    const FlvTag nextKey = vp6Frame(9000, true, pattern(21, 4));
    const FlvTag last = vp6Frame(9500, false, pattern(12, 5));
    const Packaged packaged({key, second, third, nextKey, last});

    // 8500 closes [0, 4000) on the grid; 9000 ends the span: cell 2 has no data of its own. The
    // copy is written with the span, and so knows of the gap; the media time is that of 8500.
    const Bytes span = expectedBootstrap(2, 8500, {{1, 2}}, {{1, 0, 4000, 0}, {2, 4000, 0, 1}});
    // 9000 to 9501 are 501 ms, 500 in steps of 100.
    const Bytes whole = expectedBootstrap(
        3, 9500, {{1, 3}}, {{1, 0, 4000, 0}, {2, 4000, 0, 1}, {3, 9000, 500, 0}, {0, 0, 0, 0}});
    const Bytes expected = expectedSegment(
        {{"vide", 0, 0, expectedVideoEntry("VP6F", 0, 0, "VP6 Coding")}},
        {{0, 9501, 9501, {{9501, 0}}}, {0, 9501, 9501, {{9501, 0}}}}, 9501,
        {{span, {mediaTag(key, 1, 2, true, true), mediaTag(second, 1, 2), mediaTag(third, 1, 2)}},
         {whole, {mediaTag(nextKey, 1, 2, true, true), mediaTag(last, 1, 2)}}});
    EXPECT_EQ(difference(packaged.segment(), expected), "");
    EXPECT_EQ(difference(packaged.bootstrap(), bootstrapBox(whole)), "");
    const std::uint64_t header =
        32 + 120 + 8 + 20 + 2 * 32 + 8 +
        // video track: tkhd, mdia, edts
        (8 + 104 + (8 + 44 + 44 + (8 + 20 + 36 + (8 + 16 + 86 + 100))) + 40044) +
        // hint track: tkhd, tref, mdia, edts
        (8 + 104 + 20 + (8 + 44 + 67 + (8 + 28 + 36 + (8 + 16 + 1046 + 100))) + 40044);
    const std::uint64_t firstSize =
        (21 + 16) + (12 + span.size()) + (24 + (36 + 20 + 3 * 16) + (36 + 3 * 36)) + 16 +
        key.image().size() + second.image().size() + third.image().size();
    EXPECT_EQ(difference(packaged.index(), expectedIndex({{0, 1, 1, header},
                                                          {4000, 1, 2, kNone},
                                                          {9000, 1, 3, header + firstSize}})),
              "");
}

// MP3 every 500 ms to 4500: cut at 4000; the last tag is not written.
TEST(SmallPresentationTest, AudioAloneHasAnIndexEntryForEachSecond) {
    std::vector<FlvTag> tags;
    for (std::uint32_t n = 0; n <= 9; ++n) tags.push_back(mp3Frame(n * 500, pattern(6 + n, n)));
    const Packaged packaged(tags);

    const Bytes first = expectedBootstrap(1, 4000, {{1, 1}}, {{1, 0, 4000, 0}});
    // The second fragment lasts from 4000 to the last time, 4500.
    const Bytes whole =
        expectedBootstrap(2, 4500, {{1, 2}}, {{1, 0, 4000, 0}, {2, 4000, 500, 0}, {0, 0, 0, 0}});
    ExpectedFragment opening{first, {}};
    // A second counts from the last base: none at 0, which stays without one; 500 becomes the
    // base; then 1500, 2500 and 3500 are due.
    for (std::size_t n = 0; n < 8; ++n) {
        opening.tags.push_back(mediaTag(tags[n], 1, 1, false, n == 3 || n == 5 || n == 7));
    }
    // The second call begins anew with a base of 0, so its first tag is due.
    const ExpectedFragment closing{whole, {mediaTag(tags[8], 1, 1, false, true)}};
    const Bytes expected = expectedSegment(
        {{"soun", 0, 0, expectedAudioEntry(".mp3", 2, 16, 44000)}},
        {{0, 4001, 4001, {{4001, 0}}}, {0, 4001, 4001, {{4001, 0}}}}, 4001, {opening, closing});
    EXPECT_EQ(difference(packaged.segment(), expected), "");
    EXPECT_EQ(difference(packaged.bootstrap(), bootstrapBox(whole)), "");
}

// Everything begins at 9200, in cell 3; the key frame behind the line of 12000 closes it.
TEST(SmallPresentationTest, ALateStartStandsBehindAnEmptyEdit) {
    const FlvTag key = h263Frame(9200, true, pattern(20, 1));
    const FlvTag sound = speexFrame(9210, pattern(9, 2));
    const FlvTag nextKey = h263Frame(12100, true, pattern(21, 3));
    const FlvTag last = h263Frame(16100, true, pattern(22, 4));
    const Packaged packaged({key, sound, nextKey, last});

    // No line is crossed before 12100, where the first fragment's stated span begins: what lies
    // ahead of it goes out with it. 16100 - 12100 is 4000.
    const Bytes first = expectedBootstrap(1, 16100, {{1, 1}}, {{4, 12100, 4000, 0}});
    const Bytes whole = expectedBootstrap(2, 16100, {{1, 2}},
                                          {{4, 12100, 4000, 0}, {5, 16100, 100, 0}, {0, 0, 0, 0}});
    // Decode times begin at 0 behind an empty edit as long as the time of the first tag. Speex
    // tags say rate index 0, which is told as 5500.
    const Bytes expected =
        expectedSegment({{"vide", 0, 0, expectedVideoEntry("H263", 0, 0, "")},
                         {"soun", 0, 0, expectedAudioEntry("spex", 1, 16, 5500)}},
                        {{9200, 6901, 16101, {{0, 0}, {9200, -1}, {6901, 0}}},
                         {9210, 1, 9211, {{0, 0}, {9210, -1}, {1, 0}}},
                         {9200, 6901, 16101, {{0, 0}, {9200, -1}, {6901, 0}}}},
                        16101,
                        {{first,
                          {mediaTag(key, 1, 1, true, true), mediaTag(sound, 2, 1),
                           mediaTag(nextKey, 1, 1, true, true)}},
                         {whole, {mediaTag(last, 1, 1, true, true)}}});
    EXPECT_EQ(difference(packaged.segment(), expected), "");
    EXPECT_EQ(difference(packaged.bootstrap(), bootstrapBox(whole)), "");
}

// Nothing between 1000 and 21000: cells 2 to 5 have no sample at all.
TEST(SmallPresentationTest, AGapOverSeveralCellsSkipsTheirNumbers) {
    const FlvTag key = h263Frame(0, true, pattern(20, 1));
    const FlvTag frame = h263Frame(1000, false, pattern(10, 2));
    const FlvTag nextKey = h263Frame(21000, true, pattern(21, 3));
    const FlvTag last = h263Frame(21040, false, pattern(11, 4));
    const Packaged packaged({key, frame, nextKey, last});

    // The key frame of 21000 closes 21 s as one fragment and is number 6: 2 to 5 were skipped.
    const Bytes first = expectedBootstrap(1, 21000, {{1, 1}}, {{1, 0, 21000, 0}});
    const Bytes whole = expectedBootstrap(
        3, 21040, {{1, 6}}, {{1, 0, 21000, 0}, {2, 0, 0, 2}, {6, 21000, 100, 0}, {0, 0, 0, 0}});
    const Bytes expected =
        expectedSegment({{"vide", 0, 0, expectedVideoEntry("H263", 0, 0, "")}},
                        {{0, 21041, 21041, {{21041, 0}}}, {0, 21041, 21041, {{21041, 0}}}}, 21041,
                        {{first, {mediaTag(key, 1, 1, true, true), mediaTag(frame, 1, 1)}},
                         {whole, {mediaTag(nextKey, 1, 1, true, true), mediaTag(last, 1, 1)}}});
    EXPECT_EQ(difference(packaged.segment(), expected), "");
    EXPECT_EQ(difference(packaged.bootstrap(), bootstrapBox(whole)), "");
    const Bytes index = packaged.index();
    const std::uint64_t second = withoutDates(expected).size() -
                                 (37 + 12 + whole.size() + 24 + (36 + 20 + 2 * 16) + (36 + 2 * 36) +
                                  16 + nextKey.image().size() + last.image().size());
    const std::uint64_t start =
        second - (37 + 12 + first.size() + 24 + (36 + 20 + 2 * 16) + (36 + 2 * 36) + 16 +
                  key.image().size() + frame.image().size());
    // Filled rows carry the time of the row ahead of them.
    EXPECT_EQ(difference(index, expectedIndex({{0, 1, 1, start},
                                               {0, 1, 2, kNone},
                                               {0, 1, 3, kNone},
                                               {0, 1, 4, kNone},
                                               {0, 1, 5, kNone},
                                               {21000, 1, 6, second}})),
              "");
}

// Times above 2^24 ms need the extension byte of a tag: 16777216 is 0x01000000.
TEST(SmallPresentationTest, TimesAboveTwentyFourBitsKeepTheirHighByte) {
    const FlvTag key = h263Frame(16777216, true, pattern(20, 1));
    const FlvTag frame = h263Frame(16777316, false, pattern(10, 2));
    const FlvTag nextKey = h263Frame(16780300, true, pattern(21, 3));
    const Packaged packaged({key, frame, nextKey});
    EXPECT_EQ(key.image().slice(4, 4), raw({0, 0, 0, 1}));

    // Cell 4195 of [16776000, 16780000): the key frame at its 1216th ms crosses no line. Behind
    // the line the next one opens fragment 4196, which is also the last.
    const Bytes whole =
        expectedBootstrap(1, 16780300, {{1, 1}}, {{4196, 16780300, 100, 0}, {0, 0, 0, 0}});
    const Bytes expected =
        expectedSegment({{"vide", 0, 0, expectedVideoEntry("H263", 0, 0, "")}},
                        {{16777216, 3085, 16780301, {{0, 0}, {16777216, -1}, {3085, 0}}},
                         {16777216, 3085, 16780301, {{0, 0}, {16777216, -1}, {3085, 0}}}},
                        16780301,
                        {{whole,
                          {mediaTag(key, 1, 1, true, true), mediaTag(frame, 1, 1),
                           mediaTag(nextKey, 1, 1, true, true)}}});
    EXPECT_EQ(difference(packaged.segment(), expected), "");
    EXPECT_EQ(difference(packaged.bootstrap(), bootstrapBox(whole)), "");
}

// Fragments of 1 s and segments of 2 s: the third fragment passes the limit.
TEST(SmallPresentationTest, SegmentsBeginAnewBehindTheirLimit) {
    std::vector<FlvTag> tags;
    for (std::uint32_t n = 0; n <= 4; ++n) tags.push_back(h263Frame(n * 1000, true, pattern(9, n)));
    const Packaged packaged(tags, {"--fragment-duration=1", "--segment-duration=2"});

    const auto copyOf = [](std::uint32_t count, std::uint64_t time) {
        return expectedBootstrap(1, time, {{1, count}}, {{1, 0, 1000, 0}});
    };
    const ExpectedMediaTrack track{"vide", 0, 0, expectedVideoEntry("H263", 0, 0, "")};
    const Bytes first =
        expectedSegment({track}, {{0, 2001, 2001, {{2001, 0}}}, {0, 2001, 2001, {{2001, 0}}}}, 2001,
                        {{copyOf(1, 1000), {mediaTag(tags[0], 1, 1, true, true)}},
                         {copyOf(2, 2000), {mediaTag(tags[1], 1, 1, true, true)}},
                         {copyOf(3, 3000), {mediaTag(tags[2], 1, 1, true, true)}}});
    EXPECT_EQ(difference(packaged.segment(1), first), "");

    const Bytes fourth = expectedBootstrap(1, 4000, {{1, 3}, {2, 1}}, {{1, 0, 1000, 0}});
    const Bytes whole = expectedBootstrap(2, 4000, {{1, 3}, {2, 2}},
                                          {{1, 0, 1000, 0}, {5, 4000, 100, 0}, {0, 0, 0, 0}});
    const Bytes second = expectedSegment({track},
                                         {{3000, 1001, 4001, {{0, 0}, {3000, -1}, {1001, 0}}},
                                          {3000, 1001, 4001, {{0, 0}, {3000, -1}, {1001, 0}}}},
                                         4001,
                                         {{fourth, {mediaTag(tags[3], 1, 1, true, true)}},
                                          {whole, {mediaTag(tags[4], 1, 1, true, true)}}});
    EXPECT_EQ(difference(packaged.segment(2), second), "");
    EXPECT_EQ(difference(packaged.bootstrap(), bootstrapBox(whole)), "");
}

}  // namespace
}  // namespace kz::test
