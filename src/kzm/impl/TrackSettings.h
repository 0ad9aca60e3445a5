#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "kzm/DateRecord.h"
#include "kzm/impl/MdhdBox.h"

namespace qlix::kzm::impl {

/// All that the boxes of a new track are made from.
struct TrackSettings {
    std::uint32_t handler = 0;         ///< 'vide', 'soun', 'hint', 'meta'
    std::uint32_t trackId = 0;         ///< from 1
    std::uint32_t trackFlags = 0;      ///< of the track header; 24 bits
    std::uint32_t timescale = 0;       ///< ticks a second of the track; not 0
    std::uint32_t movieTimescale = 0;  ///< ticks a second of the movie; not 0
    DateRecord creationDate;
    DateRecord modificationDate;
    std::uint64_t duration = 0;  ///< ticks of the track
    double width = 0.0;          ///< pixels
    double height = 0.0;
    double volume = 0.0;
    Language language = {};
    std::string handlerName;                    ///< with its terminator, if it has one
    std::vector<std::uint32_t> hintedTrackIds;  ///< of a hint track

    std::uint32_t maxEdits = 0;             ///< room for 2 x maxEdits + 1 rows
    std::uint32_t descriptionSlots = 0;     ///< sample descriptions that are planned
    std::uint32_t descriptionSpace = 0;     ///< bytes of codec data for each of them
    std::uint32_t sampleTableCapacity = 0;  ///< samples that the tables can take
    std::uint32_t lastSampleDelta = 1;      ///< ticks that the last sample of the tables lasts
    bool hasDependencyTable = false;        ///< the track gets an `sdtp`
};

}  // namespace qlix::kzm::impl
