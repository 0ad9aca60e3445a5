#include <algorithm>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/Presentation.h"
#include "support/Process.h"
#include "support/SampleTable.h"
#include "support/TempDir.h"

namespace kz::test {
namespace {

/// A sample as it must come out.
struct Expected {
    std::string handler;
    std::uint64_t ms = 0;
    std::int32_t compositionMs = 0;
    bool isKey = false;
    Bytes data;
    Bytes tag;
};

Bytes timeBytes(std::uint64_t ms) { return u24(ms & 0xFFFFFF) + u8(ms >> 24); }

Bytes tagOf(int type, std::uint64_t ms, const Bytes& codecHeader, const Bytes& data) {
    const std::uint64_t size = codecHeader.size() + data.size();
    return u8(static_cast<std::uint64_t>(type)) + u24(size) + timeBytes(ms) + u24(0) + codecHeader +
           data + u32(size + 11);
}

Bytes sampleTag(const std::string& format, const Expected& sample) {
    if (format == "avc1" || format == "mp4v") {
        const auto composition = static_cast<std::uint32_t>(sample.compositionMs) & 0xFFFFFF;
        return tagOf(9, sample.ms, u8(sample.isKey ? 0x17 : 0x27) + u8(1) + u24(composition),
                     sample.data);
    }
    if (format == "mp4a") return tagOf(8, sample.ms, hex("af 01"), sample.data);
    if (format == "ac-3") return tagOf(8, sample.ms, hex("df 01"), sample.data);
    if (format == "ec-3") return tagOf(8, sample.ms, hex("df 02"), sample.data);
    throw std::logic_error("no tag is known for " + format);
}

/// The set-up bytes of the decoders, found in the input by their letters.
struct DecoderSetup {
    Bytes avc;  ///< what an avcC box holds
    Bytes aac;  ///< the AudioSpecificConfig of an esds box
};

/// The contents of the first box of this type in a description of the format; empty when there is
/// none.
Bytes contentsOf(const Bytes& file, const std::string& format, const std::string& type) {
    const std::string letters = file.str();
    const std::size_t at = letters.find(type, letters.find(format, letters.find("moov")));
    if (at == std::string::npos) return {};
    const Bytes size = file.slice(at - 4, 4);
    return file.slice(at + 4, (size[2] * 256U + size[3]) - 8);
}

DecoderSetup setupOf(const SampleTable& table, const Bytes& file) {
    DecoderSetup setup;
    for (const TableTrack& track : table.tracks) {
        if (track.format == "avc1") setup.avc = contentsOf(file, "avc1", "avcC");
        if (track.format != "mp4a") continue;
        const Bytes esds = contentsOf(file, "mp4a", "esds");
        // Tag 5 with a length of four bytes, of which the last one counts.
        const std::size_t at = esds.str().find("\x05\x80\x80\x80");
        if (at != std::string::npos) setup.aac = esds.slice(at + 5, esds.at(at + 4));
    }
    return setup;
}

/// The first track of each kind that can be packaged.
std::vector<std::size_t> packagedTracks(const SampleTable& table) {
    const std::set<std::string> known = {"avc1", "mp4v", "mp4a", "ac-3", "ec-3"};
    std::set<std::string> wanted = {"vide", "soun", "meta"};
    std::vector<std::size_t> numbers;
    for (std::size_t i = 0; i < table.tracks.size(); ++i) {
        const TableTrack& track = table.tracks[i];
        if (known.count(track.format) == 1 && wanted.erase(track.handler) == 1) {
            numbers.push_back(i);
        }
    }
    return numbers;
}

struct Recording {
    std::vector<std::string> handlers;  ///< in the order of the tracks
    std::vector<Expected> samples;
    DecoderSetup setup;

    bool has(const std::string& handler) const {
        return std::count(handlers.begin(), handlers.end(), handler) > 0;
    }
};

Recording expectedOf(const SampleTable& table, Edits edits) {
    const Bytes file = readFile(table.path);
    Recording recording;
    recording.setup = setupOf(table, file);
    const std::vector<std::size_t> tracks = packagedTracks(table);
    for (const std::size_t number : tracks) {
        recording.handlers.push_back(table.tracks[number].handler);
    }
    std::uint64_t lastMs = 0;
    for (const PresentedSample& each : presented(table, tracks, edits)) {
        const TableTrack& track = table.tracks[each.track];
        lastMs = milliseconds(each.time, track.timescale);
        if (each.isPause) continue;
        Expected sample;
        sample.handler = track.handler;
        sample.ms = lastMs;
        sample.compositionMs = static_cast<std::int32_t>(
            std::int64_t{each.sample.compositionOffset} * 1000 / track.timescale);
        sample.isKey = table.isSync(track, each.sample);
        sample.data = file.slice(each.sample.offset, each.sample.size);
        sample.tag = sampleTag(track.format, sample);
        recording.samples.push_back(sample);
    }
    // A recording without video ends in front of its last time.
    while (!recording.has("vide") && !recording.samples.empty() &&
           recording.samples.back().ms >= lastMs) {
        recording.samples.pop_back();
    }
    return recording;
}

bool isHeader(const Bytes& tag) {
    return tag.size() > 16 && tag[12] == 0 &&
           ((tag[0] == 9 && tag[11] == 0x17) || (tag[0] == 8 && tag[11] == 0xAF));
}

/// The tags of a fragment with the headers that must stand among them: both in front of each key
/// frame; for sound also while the time of the last header is 0, and, where there is no video,
/// when a second has passed.
std::vector<Bytes> withHeaders(const Recording& recording, std::size_t first, std::size_t count) {
    std::vector<Bytes> tags;
    const auto putAac = [&](std::uint64_t ms) {
        const Bytes& config = recording.setup.aac;
        if (!config.empty()) tags.push_back(tagOf(8, ms, hex("af 00"), config));
    };
    std::uint64_t lastHeaderMs = 0;
    for (std::size_t i = first; i < first + count; ++i) {
        const Expected& sample = recording.samples[i];
        if (sample.handler == "vide" && sample.isKey) {
            if (!recording.setup.avc.empty()) {
                tags.push_back(tagOf(9, sample.ms, hex("17 00 000000"), recording.setup.avc));
            }
            if (recording.has("soun")) putAac(sample.ms);
        }
        const bool isDue = !recording.has("vide") && sample.ms >= lastHeaderMs + 1000;
        if (sample.handler == "soun" && (lastHeaderMs == 0 || isDue)) {
            lastHeaderMs = sample.ms;
            putAac(sample.ms);
        }
        tags.push_back(sample.tag);
    }
    return tags;
}

std::vector<Bytes> tagsOf(const Segment& segment, const PackedFragment& fragment) {
    std::vector<Bytes> tags;
    for (const PackedSample& sample : fragment.samples.at(segment.track("hint")->id)) {
        tags.push_back(segment.file.slice(sample.offset, sample.size));
    }
    return tags;
}

/// Walks the fragments in step with the samples that they must hold.
void expectTags(const Presentation& presentation, const Recording& recording) {
    std::size_t done = 0;
    for (const Segment& segment : presentation.segments) {
        for (const PackedFragment& fragment : segment.fragments) {
            SCOPED_TRACE("fragment at " + std::to_string(fragment.offset));
            const std::vector<Bytes> tags = tagsOf(segment, fragment);
            const auto headers = std::count_if(tags.begin(), tags.end(), isHeader);
            const std::size_t count = tags.size() - static_cast<std::size_t>(headers);
            ASSERT_LE(done + count, recording.samples.size());
            const std::vector<Bytes> expected = withHeaders(recording, done, count);
            ASSERT_EQ(tags.size(), expected.size());
            for (std::size_t i = 0; i < tags.size(); ++i) {
                ASSERT_EQ(difference(tags[i], expected[i]), "") << "tag " << i;
            }
            done += count;
        }
    }
    EXPECT_EQ(done, recording.samples.size());
}

/// The pauses of a track, which its decode times leave out.
std::uint64_t pausesOf(const PackedTrack& track) {
    std::uint64_t sum = 0;
    for (const EditRow& row : track.edits) sum += row.mediaTime == -1 ? row.duration : 0;
    return sum;
}

/// What the media track of a handler tells of its samples, over all segments.
void expectMediaTrack(const Presentation& presentation, const Recording& recording,
                      const std::string& handler) {
    std::vector<Expected> expected;
    std::copy_if(recording.samples.begin(), recording.samples.end(), std::back_inserter(expected),
                 [&](const Expected& sample) { return sample.handler == handler; });
    std::size_t done = 0;
    for (const Segment& segment : presentation.segments) {
        const PackedTrack& track = *segment.track(handler);
        ASSERT_EQ(track.timescale, 1000U);
        for (const PackedFragment& fragment : segment.fragments) {
            const auto rows = fragment.samples.find(track.id);
            if (rows == fragment.samples.end()) continue;
            for (const PackedSample& row : rows->second) {
                SCOPED_TRACE("sample " + std::to_string(done));
                ASSERT_LT(done, expected.size());
                const Expected& sample = expected[done++];
                ASSERT_EQ(row.decodeTime + pausesOf(track), sample.ms);
                ASSERT_EQ(row.compositionOffset, sample.compositionMs);
                const bool isKey = handler == "vide" && sample.isKey;
                ASSERT_EQ(row.flags, isKey ? 0x02000000U : 0x01010000U);
                ASSERT_EQ(difference(segment.file.slice(row.offset, row.size), sample.data), "");
            }
        }
    }
    EXPECT_EQ(done, expected.size());
}

/// Packages a file into `folder` under the name of `clip`. The run must say nothing.
Presentation package(const std::string& path, const std::string& folder, const std::string& clip,
                     const std::vector<std::string>& options) {
    std::vector<std::string> argv = {KZ_PACKAGER, "--input-file=" + path, "--output-path=" + folder,
                                     "--output-manifest-file=" + clip, "--external-bootstrap"};
    argv.insert(argv.end(), options.begin(), options.end());
    const ProcessResult result = run(argv);
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err, "");
    const Presentation presentation = readPresentation(folder, clip);
    EXPECT_EQ(inconsistencies(presentation), std::vector<std::string>());
    return presentation;
}

void expectPresentation(const std::string& clip, Edits edits, std::vector<std::string> options) {
    const SampleTable table = readSampleTable(clip);
    const TempDir out;
    if (edits == Edits::kFollowed) options.emplace_back("--edit-list");
    const Presentation presentation = package(table.path, out.path(), clip, options);
    const Recording recording = expectedOf(table, edits);
    ASSERT_FALSE(recording.samples.empty());
    std::vector<std::string> handlers = recording.handlers;
    handlers.emplace_back("hint");
    for (const Segment& segment : presentation.segments) {
        std::vector<std::string> actual;
        for (const PackedTrack& track : segment.tracks) actual.push_back(track.handler);
        ASSERT_EQ(actual, handlers);
    }
    expectTags(presentation, recording);
    for (const std::string& handler : recording.handlers) {
        expectMediaTrack(presentation, recording, handler);
    }
}

class KzmMediaTest : public testing::TestWithParam<std::string> {};

TEST_P(KzmMediaTest, EverySampleComesOutOnceInOrder) {
    expectPresentation(GetParam(), Edits::kIgnored, {});
}

TEST_P(KzmMediaTest, ShortFragmentsInManySegmentsHoldTheSameSamples) {
    expectPresentation(GetParam(), Edits::kIgnored,
                       {"--fragment-duration=1", "--segment-duration=3"});
}

TEST_P(KzmMediaTest, EditListsMoveAndCutTheSamples) {
    expectPresentation(GetParam(), Edits::kFollowed, {});
}

TEST_P(KzmMediaTest, EditListsCountInShortFragmentsToo) {
    expectPresentation(GetParam(), Edits::kFollowed,
                       {"--fragment-duration=1", "--segment-duration=3"});
}

INSTANTIATE_TEST_SUITE_P(AllMovies, KzmMediaTest, testing::ValuesIn(sampleTableNames()),
                         [](const auto& parameter) { return parameter.param; });

/// The samples of a kind in the order of the file; headers left out.
std::vector<Bytes> samplesOf(const Presentation& presentation, int type) {
    std::vector<Bytes> tags;
    for (const Bytes& tag : tagImages(presentation)) {
        if (tag[0] == type && !isHeader(tag)) tags.push_back(tag);
    }
    return tags;
}

class RepackagedTest : public testing::TestWithParam<const char*> {};

// A segment is a fragmented movie, with boxes and a hint track of its own.
TEST_P(RepackagedTest, ASegmentFileHoldsTheSameSamplesWhenItIsPackagedAgain) {
    const TempDir first;
    const std::string clip = GetParam();
    const Presentation made = package(readSampleTable(clip).path, first.path(), clip, {});
    for (const std::vector<std::string>& options :
         {std::vector<std::string>(), std::vector<std::string>{"--edit-list"}}) {
        const TempDir second;
        const Presentation again =
            package(first / (clip + "Seg1.kzs"), second.path(), clip, options);
        // Times are in milliseconds now, so that the two kinds may interleave differently.
        EXPECT_EQ(samplesOf(again, 9), samplesOf(made, 9));
        EXPECT_EQ(samplesOf(again, 8), samplesOf(made, 8));
    }
}

INSTANTIATE_TEST_SUITE_P(Clips, RepackagedTest,
                         testing::Values("h264_aac_bframes", "frag_dbm", "ac3", "long_gop_9s"),
                         [](const auto& parameter) { return std::string(parameter.param); });

// What the tests above take from the files by their letters is there, where it has to be.
TEST(KzmMediaSetupTest, TheInputsHoldTheSetupOfTheirDecoders) {
    const auto setup = [](const std::string& clip) {
        const SampleTable table = readSampleTable(clip);
        return setupOf(table, readFile(table.path));
    };
    const DecoderSetup both = setup("h264_aac_bframes");
    ASSERT_GT(both.avc.size(), 7U);
    EXPECT_EQ(both.avc[0], 1);  // the version of the record
    EXPECT_GE(both.aac.size(), 2U);
    EXPECT_EQ(both.aac[0] >> 3, 2);  // low complexity
    EXPECT_TRUE(setup("mpeg4p2").avc.empty());
    EXPECT_TRUE(setup("mp3").aac.empty());
}

}  // namespace
}  // namespace kz::test
