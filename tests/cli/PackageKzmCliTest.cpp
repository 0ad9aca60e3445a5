#include <sstream>

#include "cli/PackageFixture.h"
#include "support/IsoFile.h"

namespace kz::test {
namespace {

const std::string kMedia = KZ_TEST_DATA_DIR "/media/";

/// The longest base64 line of a piece of XML, decoded.
std::string decoded(const std::string& xml) {
    const std::string alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string longest;
    std::istringstream words(xml);
    for (std::string word; words >> word;) {
        if (word.size() > longest.size()) longest = word;
    }
    std::string out;
    std::uint32_t bits = 0;
    int count = 0;
    for (const char c : longest) {
        const std::size_t value = alphabet.find(c);
        if (value == std::string::npos) break;
        bits = bits << 6 | static_cast<std::uint32_t>(value);
        count += 6;
        if (count >= 8) {
            count -= 8;
            out += static_cast<char>(bits >> count);
        }
    }
    return out;
}

class PackageKzmCliTest : public PackageFixture {
protected:
    ProcessResult packageFile(const std::string& path, std::vector<std::string> arguments = {}) {
        arguments.insert(arguments.begin(), {"--input-file=" + path, "--output-path=out",
                                             "--output-manifest-file=clip"});
        return packagerIn(folder.path(), arguments);
    }

    /// The FLV times of all audio tags, in file order.
    static std::vector<std::uint32_t> audioTimes(const Presentation& presentation) {
        std::vector<std::uint32_t> times;
        for (const Bytes& tag : tagImages(presentation)) {
            if (tag[0] != 8) continue;
            times.push_back(std::uint32_t{tag[7]} << 24 | std::uint32_t{tag[4]} << 16 |
                            std::uint32_t{tag[5]} << 8 | tag[6]);
        }
        return times;
    }
};

TEST_F(PackageKzmCliTest, AnMp4FileIsPackagedLikeAnFlvFile) {
    const ProcessResult result = packageFile(kMedia + "h264_aac_faststart.mp4");
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.status, 0);
    const Presentation presentation = read();
    ASSERT_EQ(presentation.segments.size(), 1U);
    EXPECT_EQ(presentation.segments[0].fragments.size(), 4U);
}

TEST_F(PackageKzmCliTest, TheMetadataDescribesTheSourceAndNotTheSegments) {
    EXPECT_EQ(packageFile(kMedia + "h264_aac_faststart.mp4").status, 0);
    const std::string whole = manifest();
    const std::size_t begin = whole.find("<metadata");
    ASSERT_NE(begin, std::string::npos);
    const std::string metadata =
        decoded(whole.substr(begin, whole.find("</metadata", begin) - begin));
    // The frame rate comes from the count of samples, which the segments' tracks don't have.
    EXPECT_NE(metadata.find("videoframerate"), std::string::npos);
}

TEST_F(PackageKzmCliTest, AFragmentedFileIsReadToItsEnd) {
    const ProcessResult result = packageFile(kMedia + "frag_dbm.mp4");
    EXPECT_EQ(result.status, 0);
    const Presentation presentation = read();
    ASSERT_EQ(presentation.segments.size(), 1U);
    EXPECT_EQ(presentation.segments[0].fragments.size(), 3U);
}

TEST_F(PackageKzmCliTest, EditListsCountOnlyWhenAskedFor) {
    EXPECT_EQ(packageFile(kMedia + "empty_edit.mp4").status, 0);
    const std::vector<std::uint32_t> without = audioTimes(read());
    EXPECT_EQ(packageFile(kMedia + "empty_edit.mp4", {"--edit-list"}).status, 0);
    const std::vector<std::uint32_t> with = audioTimes(read());
    // The audio was delayed by 0.6 s. The headers in front of the first key frame are at 0.
    const auto firstBehindZero = [](const std::vector<std::uint32_t>& times) {
        const auto first =
            std::find_if(times.begin(), times.end(), [](std::uint32_t ms) { return ms > 0; });
        return first == times.end() ? 0 : *first;
    };
    EXPECT_GT(firstBehindZero(without), 0U);
    EXPECT_LT(firstBehindZero(without), 100U);
    EXPECT_GE(firstBehindZero(with), 500U);
}

TEST_F(PackageKzmCliTest, ASegmentFileCanBePackagedAgain) {
    folder.write("clip.flv", avClip(9000, 1000));
    expectPackaged();
    const std::vector<Bytes> before = tagImages(read());
    const ProcessResult result = packagerIn(
        folder.path(),
        {"--input-file=out/clipSeg1.kzs", "--output-path=out", "--output-manifest-file=again"});
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.status, 0);
    EXPECT_FALSE(read("again").segments.empty());
    EXPECT_FALSE(before.empty());
}

TEST_F(PackageKzmCliTest, AFileCutInItsHeadersIsInvalid) {
    const Bytes whole = readFile(kMedia + "h264_aac_bframes.mp4");
    const std::string path = folder.write("cut.mp4", whole.cutTo(100000));
    expectFailure(packageFile(path), 3, "Error 3: invalid input file ");
}

TEST_F(PackageKzmCliTest, ASampleThatCanNotBeReadIsToldAsTheWritersFailure) {
    const Bytes whole = readFile(kMedia + "h264_aac_faststart.mp4");
    const std::string path = folder.write("cut.mp4", whole.cutTo(100000));
    expectFailure(packageFile(path), 7, "Error 7: KZS writer failed");
    EXPECT_FALSE(fileExists(folder / "out/clip.kzd"));
}

TEST_F(PackageKzmCliTest, AMovieThatGoesOnInFragmentsIsPackagedWhole) {
    IsoFile movie;
    movie.tracks = {isoVideoTrack(1, 250, 40, 50), isoAudioTrack(2, 500, 20)};
    movie.movieDuration = 10000;
    EXPECT_EQ(packageFile(folder.write("plain.mp4", movie.build())).status, 0);
    const std::vector<Bytes> plain = tagImages(read());
    // A recorder writes the first two seconds as a movie, duration and all, and then goes on.
    movie.samplesInTables = 50;
    movie.samplesPerFragment = 50;
    movie.movieDuration = 2000;
    EXPECT_EQ(packageFile(folder.write("mixed.mp4", movie.build())).status, 0);
    EXPECT_EQ(tagImages(read()), plain);
}

TEST_F(PackageKzmCliTest, ASecondDescriptionHasNoRoomInTheSegment) {
    IsoFile movie;
    movie.tracks = {isoVideoTrack(1, 20)};
    EXPECT_EQ(packageFile(folder.write("one.mp4", movie.build())).status, 0);
    // Room is set aside for one description of the size of the first.
    movie.tracks[0].entries.push_back(movie.tracks[0].entries[0]);
    const std::string path = folder.write("two.mp4", movie.build());
    expectFailure(packageFile(path), 3, "Error 3: invalid input file ");
}

TEST_F(PackageKzmCliTest, ATimescaleOfZeroIsAnInvalidFile) {
    IsoFile movie;
    movie.tracks = {isoVideoTrack(1, 20)};
    movie.movieTimescale = 0;
    const std::string path = folder.write("none.mp4", movie.build());
    expectFailure(packageFile(path), 3, "Error 3: invalid input file ");
}

TEST_F(PackageKzmCliTest, AMovieWithoutASupportedTrackIsRefused) {
    const std::string whole = readFile(kMedia + "mp3.mp4").str();
    const std::size_t handler = whole.find("soun");
    ASSERT_NE(handler, std::string::npos);
    const std::string path = folder.write("text.mp4", text(whole).patched(handler, text("text")));
    expectFailure(packageFile(path), 6,
                  "Error 6: Input file does not contain any supported tracks: " + path);
}

}  // namespace
}  // namespace kz::test
