#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "support/Bytes.h"

namespace kz::test {

/// One sample of a track to build.
struct IsoSample {
    Bytes data;
    std::uint32_t duration = 40;  ///< ticks of the media
    bool isSync = false;
    std::uint32_t compositionOffset = 0;
    std::uint8_t dependency = 0;  ///< for `sdtp`
    std::uint32_t description = 1;
};

/// A row of an edit list; a media time of -1 is a pause.
struct IsoEdit {
    std::uint64_t duration = 0;  ///< ticks of the movie
    std::int64_t mediaTime = 0;  ///< ticks of the media
};

struct IsoTrack {
    std::uint32_t id = 1;
    std::string handler = "vide";
    std::uint32_t timescale = 1000;
    std::vector<Bytes> entries;  ///< whole sample entries
    std::optional<std::vector<IsoEdit>> edits;
    std::vector<IsoSample> samples;
    /// Of a plain file.
    unsigned samplesPerChunk = 3;
    bool hasSync = true;
    bool hasComposition = true;
    bool hasDependencies = false;
    bool hasLargeOffsets = false;
    std::optional<std::uint32_t> fixedSize;  ///< written in place of a table of sizes
    Bytes moreTables;                        ///< whole boxes at the end of `stbl`
};

/// What the data offsets of fragments count from.
enum class IsoBase { kFileOffset, kMoof, kImplied };

/// A whole file, plain or fragmented. All sizes and offsets are honest.
///
///   plain       ftyp, moov, mdat; or ftyp, mdat, moov
///   fragmented  ftyp, moov with mvex, then a moof and an mdat for each fragment; and an mdat in
///               front of them if there are samples in tables
struct IsoFile {
    std::uint32_t movieTimescale = 1000;
    std::uint64_t movieDuration = 100000;  ///< ticks of the movie
    std::uint8_t version = 0;              ///< of `mvhd`, `tkhd`, `mdhd` and `elst`
    std::vector<IsoTrack> tracks;
    bool isMoovFirst = true;
    /// Samples of each track in a fragment; 0 makes a plain file.
    unsigned samplesPerFragment = 0;
    /// So many samples of each track in front of the fragments, in tables.
    unsigned samplesInTables = 0;
    unsigned samplesPerRun = 100;
    IsoBase base = IsoBase::kFileOffset;
    bool usesTrackDefaults = false;                 ///< durations are in `trex`, not in the runs
    std::optional<std::uint64_t> fragmentDuration;  ///< makes an `mehd`

    Bytes build() const;
};

/// A sample entry of video or sound with codec data.
Bytes isoVideoEntry(const std::string& format, unsigned width, unsigned height,
                    const Bytes& codecData = {});
Bytes isoAudioEntry(const std::string& format, unsigned channels, unsigned rate,
                    const Bytes& codecData = {});

/// `count` samples of different sizes and contents, a sync sample every `syncEvery`.
std::vector<IsoSample> isoSamples(unsigned count, std::uint32_t duration, unsigned syncEvery = 1,
                                  unsigned seed = 1);
/// A track of video or sound with one entry and such samples.
IsoTrack isoVideoTrack(std::uint32_t id, unsigned count, std::uint32_t duration = 40,
                       unsigned syncEvery = 5);
IsoTrack isoAudioTrack(std::uint32_t id, unsigned count, std::uint32_t duration = 20);

}  // namespace kz::test
