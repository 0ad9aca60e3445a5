#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace kz::test {

/// What an outside probe says of an MP4 file of the test media; see tools/make_sample_tables.py.

struct TableSample {
    std::uint64_t dts = 0;  ///< ticks of the track
    std::int32_t compositionOffset = 0;
    std::uint32_t size = 0;
    bool isKey = false;  ///< by the probe, to which every sample of sound is one
    std::uint64_t offset = 0;
};

struct TableEdit {
    std::uint64_t duration = 0;  ///< ticks of the movie
    std::int64_t mediaTime = 0;  ///< ticks of the track; -1 for a pause
};

struct TableTrack {
    std::string handler;
    std::string format;
    std::uint32_t timescale = 0;
    bool hasSyncTable = false;
    std::vector<TableEdit> edits;
    std::vector<TableSample> samples;
};

struct SampleTable {
    std::string path;  ///< of the media file
    std::uint32_t movieTimescale = 0;
    std::uint64_t movieDuration = 0;
    bool isFragmented = false;
    std::uint64_t fragmentsDuration = 0;  ///< 0 where the file doesn't tell it
    std::vector<TableTrack> tracks;

    /// Sync samples as the formats define them: by the table, or by the flags of a fragment.
    bool isSync(const TableTrack& track, const TableSample& sample) const {
        return (isFragmented || track.hasSyncTable) && sample.isKey;
    }
    /// Duration to take samples up to, in ticks of the movie; 0 for all there are.
    std::uint64_t endTicks() const {
        return isFragmented && movieDuration == 0 ? fragmentsDuration : movieDuration;
    }
};

/// Reads tests/data/samples/NAME.txt. Throws std::runtime_error where it isn't one.
SampleTable readSampleTable(const std::string& name);
/// The names of all tables, in alphabetical order.
std::vector<std::string> sampleTableNames();

/// A sample at its place in time.
struct PresentedSample {
    std::size_t track = 0;
    std::uint64_t time = 0;  ///< ticks of the track
    bool isPause = false;    ///< stands for an edit that shows nothing
    TableSample sample;
};

enum class Edits { kIgnored, kFollowed };

/// The samples of the tracks in `selection`, by time; of equal times the one of the track that
/// comes first in the selection goes first. Slow and obvious.
std::vector<PresentedSample> presented(const SampleTable& table,
                                       const std::vector<std::size_t>& selection, Edits edits);

/// A time in whole milliseconds, cut off.
std::uint64_t milliseconds(std::uint64_t ticks, std::uint32_t timescale);

}  // namespace kz::test
