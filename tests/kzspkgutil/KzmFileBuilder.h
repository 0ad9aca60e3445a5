#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "support/Bytes.h"

namespace torvo::kzspkgutil::test {

using kz::test::Bytes;

struct KzmSample {
    Bytes data;
    std::uint32_t delta = 40;  ///< ticks to the next sample
    bool isKey = false;
    std::int32_t composition = 0;   ///< ticks
    std::uint32_t description = 1;  ///< from 1
};

struct KzmEdit {
    std::uint32_t duration = 0;  ///< in the movie's timescale
    std::int32_t mediaTime = 0;  ///< -1 for an empty edit
};

struct KzmTrack {
    std::string handler;
    std::uint32_t timescale = 1000;
    std::vector<Bytes> entries;  ///< whole sample entries
    std::vector<KzmSample> samples;
    std::vector<KzmEdit> edits;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::string language = "eng";
};

/// Sample entries. The sample size of audio is the field as stored.
Bytes videoEntry(const std::string& format, const Bytes& codecData = {}, int width = 320,
                 int height = 240);
Bytes audioEntry(const std::string& format, const Bytes& codecData = {}, int rate = 44100,
                 int channels = 2, int sampleSize = 16);
Bytes plainEntry(const std::string& format, const Bytes& data = {});

/// A plain file: `ftyp`, `mdat`, `moov`. All samples of the first track come first in the `mdat`,
/// each in a chunk of its own. The movie has 1000 ticks a second and lasts `durationMs`.
Bytes kzmFile(const std::vector<KzmTrack>& tracks, std::uint32_t durationMs = 100000);

/// A file with all samples of each track in one `trun` of one fragment, and no durations in its
/// `moov`: `ftyp`, `moov`, `moof`, `mdat`.
Bytes fragmentedKzmFile(const std::vector<KzmTrack>& tracks);

}  // namespace torvo::kzspkgutil::test
