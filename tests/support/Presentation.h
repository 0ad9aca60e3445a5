#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "support/Bytes.h"

namespace kz::test {

/// A reader of what a packaging run leaves behind, written from the formats alone: it shares no
/// code with the program, so that a mistake can't hide on both sides.

constexpr std::uint64_t kNoData = 0xFFFFFFFFFFFFFFFF;

struct EditRow {
    std::uint64_t duration = 0;
    std::int64_t mediaTime = 0;
};

struct PackedTrack {
    std::uint32_t id = 0;
    std::string handler;
    std::uint32_t timescale = 0;
    std::uint64_t headerDuration = 0;  ///< of the tkhd, in the movie timescale
    std::uint64_t mediaDuration = 0;   ///< of the mdhd, in its own
    std::vector<EditRow> edits;
    std::vector<std::uint32_t> hintedTracks;
    std::vector<std::string> descriptionFormats;
    Bytes descriptions;  ///< the whole stsd box
};

struct PackedSample {
    std::uint64_t decodeTime = 0;
    std::uint32_t duration = 0;
    std::uint32_t size = 0;
    std::uint32_t flags = 0;
    std::int32_t compositionOffset = 0;
    std::uint64_t offset = 0;  ///< in the file
};

struct AfraRow {
    std::uint64_t time = 0;
    std::uint64_t offset = 0;
};

struct IndexRow {
    std::uint64_t time = 0;
    std::uint32_t segment = 0;
    std::uint32_t fragment = 0;
    std::uint64_t afraOffset = 0;
    std::uint64_t offsetFromAfra = 0;
};

struct Afra {
    int bits = 0;
    std::uint32_t timescale = 0;
    std::vector<AfraRow> local;
    std::vector<IndexRow> global;
};

struct FragmentRun {
    std::uint32_t first = 0;
    std::uint64_t time = 0;
    std::uint32_t duration = 0;
    int discontinuity = -1;  ///< only where the duration is 0
};

struct SegmentRun {
    std::uint32_t first = 0;
    std::uint32_t fragments = 0;
};

struct Abst {
    std::uint32_t version = 0;
    int bits = 0;
    std::uint32_t timescale = 0;
    std::uint64_t currentMediaTime = 0;
    std::vector<SegmentRun> segments;
    std::vector<FragmentRun> fragments;
};

struct PackedFragment {
    std::uint64_t offset = 0;  ///< of its afra box
    Afra afra;
    Bytes bootstrap;  ///< the payload of its abst box; empty when there is none
    std::uint32_t sequenceNumber = 0;
    std::map<std::uint32_t, std::vector<PackedSample>> samples;  ///< by track id
    std::map<std::uint32_t, std::size_t> runs;                   ///< truns by track id
    std::uint64_t dataStart = 0;
    std::uint64_t dataEnd = 0;
};

struct Segment {
    Bytes file;
    std::uint32_t movieTimescale = 0;
    std::uint64_t movieDuration = 0;
    std::vector<PackedTrack> tracks;
    std::vector<PackedFragment> fragments;

    const PackedTrack* track(const std::string& handler) const;
};

/// Throws std::runtime_error where the bytes are not what the format says.
Segment readSegment(Bytes file);
/// A whole afra box.
Afra readAfraBox(const Bytes& box);
/// A whole abst box.
Abst readAbstBox(const Bytes& box);
/// What stands behind the version and flags of an abst box.
Abst readAbstPayload(const Bytes& payload);

/// All that a run wrote into `folder` under `baseName`.
struct Presentation {
    std::vector<Segment> segments;
    std::vector<Afra> indexes;  ///< one for each segment file that has one, in order
    std::string manifest;
    Bytes bootstrap;  ///< the .bootstrap file; empty when there is none
};

Presentation readPresentation(const std::string& folder, const std::string& baseName);

/// Checks what must hold in any presentation: positions, sizes, times, index and bootstrap agree.
/// Answers a line for each thing that doesn't.
std::vector<std::string> inconsistencies(const Presentation& presentation);

/// The FLV tag images of all fragments, in the order of the file.
std::vector<Bytes> tagImages(const Presentation& presentation);

}  // namespace kz::test
