#include <algorithm>
#include <sstream>

#include <gtest/gtest.h>

#include "cli/CommandLine.h"
#include "support/FlvBuilder.h"
#include "support/IsoBuilder.h"
#include "support/TempDir.h"

namespace kz::test {
namespace {

const std::string kMedia = KZ_TEST_DATA_DIR "/media/";

struct Sample {
    Bytes data;
    std::uint32_t ticks;  ///< to the next one
    bool isKey;
};

/// A track of samples that lie one behind the other from `offset` on.
Bytes track(std::uint32_t id, const std::string& handler, std::uint32_t timescale,
            const Bytes& entry, const std::vector<Sample>& samples, std::uint64_t offset) {
    Bytes times;
    Bytes sizes;
    Bytes keys;
    std::uint32_t keyCount = 0;
    std::uint32_t number = 0;
    std::uint32_t duration = 0;
    for (const Sample& sample : samples) {
        ++number;
        duration += sample.ticks;
        times += u32(1) + u32(sample.ticks);
        sizes += u32(sample.data.size());
        if (sample.isKey) {
            keys += u32(number);
            ++keyCount;
        }
    }
    const Bytes stbl =
        box("stbl", fullBox("stsd", 0, 0, u32(1), entry), fullBox("stts", 0, 0, u32(number), times),
            fullBox("stss", 0, 0, u32(keyCount), keys),
            fullBox("stsc", 0, 0, u32(1), u32(1), u32(number), u32(1)),
            fullBox("stsz", 0, 0, u32(0), u32(number), sizes),
            fullBox("stco", 0, 0, u32(1), u32(offset)));
    const Bytes dinf = box("dinf", fullBox("dref", 0, 0, u32(1), fullBox("url ", 0, 1)));
    const Bytes header = handler == "vide" ? Bytes(fullBox("vmhd", 0, 1, u64(0)))
                                           : Bytes(fullBox("smhd", 0, 0, u32(0)));
    const Bytes mdia = box(
        "mdia",
        fullBox("mdhd", 0, 0, u32(0), u32(0), u32(timescale), u32(duration), u16(0x55c4), u16(0)),
        fullBox("hdlr", 0, 0, u32(0), text(handler), fill(12, 0), text("h"), u8(0)),
        box("minf", header, dinf, stbl));
    const Bytes matrix = u32(0x10000) + fill(12, 0) + u32(0x10000) + fill(12, 0) + u32(0x40000000);
    return box("trak",
               fullBox("tkhd", 0, 7, u32(0), u32(0), u32(id), u32(0), u32(60000), fill(8, 0),
                       u16(0), u16(0), u16(0), u16(0), matrix, u32(0), u32(0)),
               mdia);
}

/// Video at 100 ticks a second, audio and messages at 1000, in a movie of 60 s.
Bytes clip(const std::vector<Sample>& video, const std::vector<Sample>& audio,
           const std::vector<Sample>& messages = {}) {
    const Bytes ftyp = box("ftyp", text("isom"), u32(0), text("isom"));
    Bytes data;
    const std::uint64_t videoAt = ftyp.size() + 8;
    for (const Sample& sample : video) data += sample.data;
    const std::uint64_t audioAt = videoAt + data.size();
    for (const Sample& sample : audio) data += sample.data;
    const std::uint64_t messagesAt = ftyp.size() + 8 + data.size();
    for (const Sample& sample : messages) data += sample.data;

    const Bytes videoEntry = box("s263", fill(6, 0), u16(1), fill(70, 0));
    const Bytes audioEntry = box("samr", fill(6, 0), u16(1), fill(20, 0));
    const Bytes matrix = u32(0x10000) + fill(12, 0) + u32(0x10000) + fill(12, 0) + u32(0x40000000);
    const Bytes mvhd = fullBox("mvhd", 0, 0, u32(0), u32(0), u32(1000), u32(60000), u32(0x10000),
                               u16(0x100), u16(0), u64(0), matrix, fill(24, 0), u32(3));
    Bytes tracks;
    if (!video.empty()) tracks += track(1, "vide", 100, videoEntry, video, videoAt);
    if (!audio.empty()) tracks += track(2, "soun", 1000, audioEntry, audio, audioAt);
    if (!messages.empty()) {
        const Bytes entry = box("mett", fill(6, 0), u16(1));
        tracks += track(3, "meta", 1000, entry, messages, messagesAt);
    }
    return ftyp + box("mdat", data) + box("moov", mvhd, tracks);
}

ProcessResult dump(const TempDir& folder, const Bytes& content,
                   std::vector<std::string> arguments = {}) {
    arguments.insert(arguments.begin(),
                     {"--sample-dump", "--input-file", folder.write("clip.mp4", content)});
    return packager(arguments);
}

std::string line(int fragment, int ms, const std::string& type, int length, const std::string& kind,
                 const std::string& data) {
    return "in | fragment : " + std::to_string(fragment) + ", timestamp : " + std::to_string(ms) +
           ", media-type : " + type + " , length : " + std::to_string(length) +
           ", sample-type : " + kind + ", data : " + data + "\n";
}

TEST(SampleDumpCliTest, SamplesArePrintedUnderTheNumberOfTheFragmentThatHoldsThem) {
    const TempDir folder;
    const ProcessResult result =
        dump(folder, clip({{raw({0x17, 0x01, 0xab}), 300, true},
                           {pattern(20, 0), 150, false},
                           {raw({0xff}), 100, true}},
                          {{raw({0x00, 0x10}), 4000, false}, {raw({9}), 1000, false}}));
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.status, 0);
    // The key frame at 4500 closes the first fragment; the audio at 4000 belongs in front of it.
    EXPECT_EQ(
        result.out,
        line(1, 0, "video", 3, "key", "0 17 1 ab") + line(1, 0, "audio", 2, "normal", "0 0 10") +
            line(1, 3000, "video", 20, "normal", "0 0 7 e 15 1c 23 2a 31 38 3f 46 4d 54 5b 62 69") +
            line(1, 4000, "audio", 1, "normal", "0 9") + line(2, 4500, "video", 1, "key", "0 ff"));
}

TEST(SampleDumpCliTest, MessagesAreData) {
    const TempDir folder;
    const ProcessResult result = dump(folder, clip({{raw({1}), 300, true}, {raw({2}), 100, true}},
                                                   {}, {{raw({3, 4}), 1000, false}}));
    EXPECT_EQ(result.status, 0);
    EXPECT_NE(result.out.find(line(1, 0, "data", 2, "normal", "0 3 4")), std::string::npos)
        << result.out;
}

TEST(SampleDumpCliTest, EveryClosingEventEndsAPrintedFragment) {
    const TempDir folder;
    std::vector<Sample> video;
    for (int i = 0; i < 7; ++i) video.push_back({raw({i}), 200, i == 0 || i == 6});
    // Key frames at 0 and 12 s only: the grid lines between them close fragments too.
    const ProcessResult result = dump(folder, clip(video, {}));
    EXPECT_EQ(result.status, 0);
    std::string expected;
    for (int i = 0; i < 4; ++i) {
        expected +=
            line(1, i * 2000, "video", 1, i == 0 ? "key" : "normal", "0 " + std::to_string(i));
    }
    expected += line(2, 8000, "video", 1, "normal", "0 4");
    expected += line(2, 10000, "video", 1, "normal", "0 5");
    expected += line(3, 12000, "video", 1, "key", "0 6");
    EXPECT_EQ(result.out, expected);
}

TEST(SampleDumpCliTest, AudioAloneIsCutAsIfThereWereVideo) {
    const TempDir folder;
    const ProcessResult result = dump(
        folder, clip({}, {{raw({1}), 5000, true}, {raw({2}), 5000, true}, {raw({3}), 1, true}}));
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out, line(1, 0, "audio", 1, "key", "0 1") +
                              line(1, 5000, "audio", 1, "key", "0 2") +
                              line(1, 10000, "audio", 1, "key", "0 3"));
}

TEST(SampleDumpCliTest, ADurationOfZeroIsToldBeforeTheInputIsOpened) {
    const ProcessResult result =
        packager({"--sample-dump", "--input-file=none.mp4", "--fragment-duration=0"});
    EXPECT_EQ(result.status, 12);
    EXPECT_EQ(result.err, "Error 12: Standard Exception: invalid fragment duration specified\n");
}

TEST(SampleDumpCliTest, AnFlvFileIsNotReadHere) {
    const TempDir folder;
    const ProcessResult result = dump(folder, flvFile({mp3Frame(0, pattern(50, 1))}, 4));
    EXPECT_EQ(result.status, 3);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err, "Error 3: invalid input file \n");
}

TEST(SampleDumpCliTest, AMissingFileIsAnInvalidOne) {
    const TempDir folder;
    const ProcessResult result =
        packagerIn(folder.path(), {"--sample-dump", "--input-file=none.mp4"});
    EXPECT_EQ(result.status, 3);
    EXPECT_EQ(result.err, "Error 3: invalid input file \n");
}

TEST(SampleDumpCliTest, PausesOfAnEditListShowAsGapsWithoutData) {
    const std::string file = kMedia + "empty_edit.mp4";
    const ProcessResult with = packager({"--sample-dump", "--edit-list", "--input-file", file});
    EXPECT_EQ(with.status, 0);
    EXPECT_NE(with.out.find(line(1, 0, "audio", 0, "gap", "")), std::string::npos);
    const ProcessResult without = packager({"--sample-dump", "--input-file", file});
    EXPECT_EQ(without.status, 0);
    EXPECT_EQ(without.out.find("sample-type : gap"), std::string::npos);
}

TEST(SampleDumpCliTest, EverySampleOfAFileIsPrintedOnce) {
    // 13 s of video at 25 frames a second, and 561 audio samples of 1024 at 44100 Hz, the last of
    // which begins at 13.003 s: behind the end of the movie.
    const ProcessResult result =
        packager({"--sample-dump", "--input-file", kMedia + "h264_aac_faststart.mp4"});
    EXPECT_EQ(result.status, 0);
    std::istringstream lines(result.out);
    int video = 0;
    int audio = 0;
    for (std::string text; std::getline(lines, text);) {
        video += text.find("media-type : video ,") != std::string::npos;
        audio += text.find("media-type : audio ,") != std::string::npos;
    }
    EXPECT_EQ(video, 325);
    EXPECT_EQ(audio, 560);
}

TEST(SampleDumpCliTest, LinesBeforeAFailureStay) {
    const TempDir folder;
    const Bytes whole = readFile(kMedia + "h264_aac_faststart.mp4");
    const ProcessResult cut = dump(folder, whole.cutTo(100000));
    EXPECT_EQ(cut.status, 7);
    EXPECT_EQ(cut.err, "Error 7: KZS writer failed\n");
    // Up to the sample whose bytes are missing: whole lines, the same as those of the whole file.
    const std::string all = dump(folder, whole).out;
    ASSERT_FALSE(cut.out.empty());
    EXPECT_EQ(cut.out.back(), '\n');
    EXPECT_LT(cut.out.size(), all.size());
    EXPECT_EQ(cut.out, all.substr(0, cut.out.size()));
}

TEST(SampleDumpCliTest, OutputThatIsFullIsAFailure) {
    ProcessSettings settings;
    settings.standardOutputFile = "/dev/full";
    const ProcessResult result =
        packager({"--sample-dump", "--input-file", kMedia + "aac_only.m4a"}, settings);
    EXPECT_EQ(result.status, 12);
}

}  // namespace
}  // namespace kz::test
