#include <map>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/Presentation.h"
#include "support/Process.h"
#include "support/SampleTable.h"
#include "support/TempDir.h"

namespace kz::test {
namespace {

std::string outputOf(const std::vector<std::string>& arguments) {
    std::vector<std::string> argv = {KZ_PACKAGER};
    argv.insert(argv.end(), arguments.begin(), arguments.end());
    const ProcessResult result = run(argv);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, "");
    return result.out;
}

/// The first line that differs, so that a failure can be read.
void expectText(const std::string& actual, const std::string& expected) {
    std::istringstream actualLines(actual);
    std::istringstream expectedLines(expected);
    std::string one;
    std::string other;
    for (int number = 1; std::getline(expectedLines, other); ++number) {
        ASSERT_TRUE(std::getline(actualLines, one)) << "no line " << number << ": " << other;
        ASSERT_EQ(one, other) << "line " << number;
    }
    ASSERT_EQ(actual.size(), expected.size());
}

/// A fragment of a dump and the time of the video sample that opens the one behind it.
struct DumpedFragment {
    std::uint32_t number;
    std::uint64_t endMs;
};

struct DumpCase {
    const char* clip;
    Edits edits;
    std::vector<DumpedFragment> fragments;  ///< without the last one
    std::uint32_t last;
};

// Worked out by hand from the key frames in the tables and the cut rule.
const DumpCase kDumps[] = {
    // Sound alone is cut as if there were video: without key frames it is one fragment from the
    // first line on. That is line 0, or the one behind a first sample at 1 ms.
    {"aac_only", Edits::kIgnored, {}, 1},
    {"mp3", Edits::kFollowed, {}, 2},
    {"ac3", Edits::kIgnored, {{1, 4000}, {2, 8000}}, 3},
    {"eac3", Edits::kFollowed, {{1, 4000}, {2, 8000}}, 3},
    {"empty_edit", Edits::kIgnored, {{1, 4000}, {2, 8000}}, 3},
    {"empty_edit", Edits::kFollowed, {{1, 4000}, {2, 8000}}, 3},
    {"frag_base_offset", Edits::kIgnored, {{1, 4000}, {2, 8000}}, 3},
    {"frag_dbm", Edits::kIgnored, {{1, 4000}, {2, 8000}}, 3},
    {"frag_many_per_gop_dur", Edits::kIgnored, {{1, 4023}, {2, 8023}}, 3},
    // Key frames every 2 s.
    {"h264_aac_bframes", Edits::kIgnored, {{1, 4000}, {2, 8000}, {3, 12000}}, 4},
    // The list cuts 1024 / 12800 s off the front and with it the first key frame; the next ones
    // are at 1920, 3920, 5920: the line at 4 s is crossed without one, so the first fragment is
    // open up to the first key frame of the cell behind it.
    {"h264_aac_bframes", Edits::kFollowed, {{1, 5920}, {2, 9920}, {3, 13920}}, 4},
    // Key frames at 0, 9, 18 and 27 s.
    {"long_gop_9s",
     Edits::kIgnored,
     {{1, 8000}, {2, 9000}, {3, 16000}, {4, 18000}, {5, 24000}, {6, 27000}},
     7},
    {"mpeg4p2", Edits::kIgnored, {{1, 4000}, {2, 8000}}, 3},
    {"text_track", Edits::kIgnored, {{1, 4000}, {2, 8000}}, 3},
    {"ts90000", Edits::kIgnored, {{1, 4000}, {2, 8000}}, 3},
};

/// Video, then sound, then data, whatever their order in the file.
std::vector<std::size_t> dumpedTracks(const SampleTable& table) {
    std::vector<std::size_t> numbers;
    for (const char* handler : {"vide", "soun", "meta"}) {
        for (std::size_t i = 0; i < table.tracks.size(); ++i) {
            if (table.tracks[i].handler == handler) numbers.push_back(i);
        }
    }
    return numbers;
}

std::string firstBytes(const Bytes& file, const TableSample& sample) {
    const char* const digits = "0123456789abcdef";
    std::string text;
    for (std::size_t i = 0; i < std::min<std::size_t>(sample.size, 16); ++i) {
        const std::uint8_t byte = file.at(sample.offset + i);
        text += i == 0 ? "0 " : " ";
        if (byte >= 16) text += digits[byte / 16];
        text += digits[byte % 16];
    }
    return text;
}

std::string expectedDump(const DumpCase& dump) {
    const SampleTable table = readSampleTable(dump.clip);
    const Bytes file = readFile(table.path);
    const std::map<std::string, std::string> types = {{"vide", "video"}, {"soun", "audio"}};
    std::ostringstream out;
    std::size_t fragment = 0;
    for (const PresentedSample& each : presented(table, dumpedTracks(table), dump.edits)) {
        const TableTrack& track = table.tracks[each.track];
        const std::uint64_t ms = milliseconds(each.time, track.timescale);
        if (fragment < dump.fragments.size() && track.handler == "vide" &&
            ms == dump.fragments[fragment].endMs) {
            ++fragment;
        }
        const bool isLast = fragment == dump.fragments.size();
        const char* kind = table.isSync(track, each.sample) ? "key" : "normal";
        out << "in | fragment : " << (isLast ? dump.last : dump.fragments[fragment].number)
            << ", timestamp : " << ms << ", media-type : " << types.at(track.handler)
            << " , length : " << each.sample.size
            << ", sample-type : " << (each.isPause ? "gap" : kind)
            << ", data : " << firstBytes(file, each.sample) << '\n';
    }
    return out.str();
}

class SampleDumpMediaTest : public testing::TestWithParam<DumpCase> {};

TEST_P(SampleDumpMediaTest, EveryLineIsWhatTheProbeAndTheCutRuleSay) {
    const DumpCase& dump = GetParam();
    std::vector<std::string> arguments = {"--sample-dump",
                                          "--input-file=" + readSampleTable(dump.clip).path};
    if (dump.edits == Edits::kFollowed) arguments.emplace_back("--edit-list");
    expectText(outputOf(arguments), expectedDump(dump));
}

INSTANTIATE_TEST_SUITE_P(Movies, SampleDumpMediaTest, testing::ValuesIn(kDumps),
                         [](const auto& parameter) {
                             const bool edited = parameter.param.edits == Edits::kFollowed;
                             return std::string(parameter.param.clip) + (edited ? "_edited" : "");
                         });

std::string indexText(const Afra& afra) {
    std::ostringstream out;
    out << "afra:\n\tlong ids: true\n\tlong offsets: true\n\tentries:\n";
    for (const AfraRow& row : afra.local) {
        out << "\t\ttime = " << row.time << ", offset = " << row.offset << '\n';
    }
    out << "\tglobal entries:\n";
    for (const IndexRow& row : afra.global) {
        out << "\t\ttime = " << row.time << ", segment = " << row.segment
            << ", fragment = " << row.fragment << ", afra-offset = " << row.afraOffset
            << ", offset-from-afra = " << row.offsetFromAfra << '\n';
    }
    return out.str();
}

std::string bootstrapText(const Abst& abst) {
    std::ostringstream out;
    out << "bootstrap:\n\tversion: " << abst.version
        << "\n\tis update: false\n\tis live: false\n\tmovie id: \n\ttimescale: " << abst.timescale
        << "\n\tcurrent media time: " << abst.currentMediaTime
        << "\n\tsmpte timecode offset: 0\n\tservers:\n\tqualities:\nsegments:\n"
           "segment run table:\n\tis update: false\n\tqualities:\n\tentries:\n";
    for (const SegmentRun& run : abst.segments) {
        out << "\t\tsegment = " << run.first << ", fragments = " << run.fragments << '\n';
    }
    out << "fragments:\nfragment run table:\n\tis update: false\n\tqualities:\n\tentries:\n";
    for (const FragmentRun& run : abst.fragments) {
        out << "\t\tfragment = " << run.first << ", timestamp = " << run.time
            << ", duration = " << run.duration;
        if (run.duration == 0) out << ", discontinuity = " << run.discontinuity;
        out << '\n';
    }
    return out.str();
}

class InspectMediaTest : public testing::TestWithParam<const char*> {};

TEST_P(InspectMediaTest, WhatWasWrittenIsShownAsAnotherReaderReadsIt) {
    const TempDir out;
    const std::string clip = GetParam();
    outputOf({"--input-file=" + readSampleTable(clip).path, "--output-path=" + out.path(),
              "--external-bootstrap", "--segment-duration=8"});
    const Presentation presentation = readPresentation(out.path(), clip);
    ASSERT_GT(presentation.segments.size(), 1U);

    expectText(outputOf({"--inspect-bootstrap", "--input-file=" + out / (clip + ".bootstrap")}),
               bootstrapText(readAbstBox(presentation.bootstrap)));
    for (std::size_t i = 0; i < presentation.segments.size(); ++i) {
        const std::string segment = clip + "Seg" + std::to_string(i + 1);
        expectText(outputOf({"--inspect-index", "--input-file=" + out / (segment + ".kzx")}),
                   indexText(presentation.indexes.at(i)));
        std::string expected;
        int number = 0;
        for (const PackedFragment& fragment : presentation.segments[i].fragments) {
            expected += "fragment: " + std::to_string(++number) + ", " +
                        std::to_string(fragment.offset) + "\n" + indexText(fragment.afra) +
                        bootstrapText(readAbstPayload(fragment.bootstrap));
        }
        expectText(outputOf({"--inspect-fragments", "--input-file=" + out / (segment + ".kzs")}),
                   expected);
    }
}

INSTANTIATE_TEST_SUITE_P(Movies, InspectMediaTest,
                         testing::Values("long_gop_9s", "h264_aac_bframes", "frag_dbm", "mp3"),
                         [](const auto& parameter) { return std::string(parameter.param); });

}  // namespace
}  // namespace kz::test
