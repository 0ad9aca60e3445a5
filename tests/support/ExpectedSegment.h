#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "support/Bytes.h"

namespace kz::test {

/// A writer of segment files from the format's rules alone, for comparing the program's output
/// byte by byte. A test gives the facts: tracks, tags of each fragment, the bootstrap copies.

/// One tag in a fragment.
struct ExpectedTag {
    Bytes image;
    std::uint64_t timeMs = 0;
    /// Which media track holds it; 0 for a sequence header, which is the hint track's alone.
    int track = 0;
    std::uint32_t dataOffset = 0;  ///< of the sample proper in the image
    bool isSync = false;
    std::int32_t compositionOffset = 0;
    bool isIndexed = false;  ///< has a row in the fragment's afra box
};

struct ExpectedFragment {
    Bytes bootstrap;  ///< from its version field on
    std::vector<ExpectedTag> tags;
};

struct ExpectedMediaTrack {
    std::string handler;      ///< "vide" or "soun"
    std::uint32_t width = 0;  ///< pixels
    std::uint32_t height = 0;
    Bytes description;  ///< the whole entry of the stsd box
};

/// Three edit rows at most: duration, media time.
struct ExpectedEdit {
    std::uint64_t duration = 0;
    std::int64_t mediaTime = 0;
};

/// What the header tells of a track; the hint track comes last.
struct ExpectedTrackTimes {
    std::uint64_t firstTime = 0;  ///< taken off its decode times
    std::uint64_t mediaDuration = 0;
    std::uint64_t trackDuration = 0;
    std::vector<ExpectedEdit> edits;
};

/// The entries of descriptions that an FLV recording gets.
Bytes expectedVideoEntry(const std::string& format, std::uint32_t width, std::uint32_t height,
                         const std::string& compressorName);
Bytes expectedAudioEntry(const std::string& format, std::uint32_t channels, std::uint32_t bits,
                         std::uint32_t rate);

/// The whole file; dates are zero. `rowDurations` follow from the times: each row lasts until the
/// track's next one, the last one of the file for 1.
Bytes expectedSegment(const std::vector<ExpectedMediaTrack>& tracks,
                      const std::vector<ExpectedTrackTimes>& times, std::uint64_t movieDuration,
                      const std::vector<ExpectedFragment>& fragments);

/// A bootstrap from its version field on.
struct ExpectedRun {
    std::uint32_t first = 0;
    std::uint64_t time = 0;
    std::uint32_t duration = 0;
    int discontinuity = 0;  ///< written only where the duration is 0
};
Bytes expectedBootstrap(std::uint32_t version, std::uint64_t currentTime,
                        const std::vector<std::pair<std::uint32_t, std::uint32_t>>& segments,
                        const std::vector<ExpectedRun>& runs);

/// Zeroes the dates of a segment's mvhd, tkhd and mdhd boxes.
Bytes withoutDates(Bytes segment);

}  // namespace kz::test
