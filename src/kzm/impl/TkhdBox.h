#pragma once

#include "kzm/DateRecord.h"
#include "kzm/impl/FullBox.h"

namespace qlix::kzm::impl {

/// What a track header holds.
struct TrackHeader {
    DateRecord creationDate;
    DateRecord modificationDate;
    std::uint32_t trackId = 0;
    std::uint64_t duration = 0;  ///< in ticks of the movie
    double volume = 0.0;
    double width = 0.0;  ///< pixels
    double height = 0.0;
};

/// Track header. Version 1 is written; version 0 has dates and duration of 4 bytes each, every
/// other version is read as 1.
///
///   offset  size  field              written
///        0    12  full box header    size 104, 'tkhd', version 1, flags of the track
///       12     8  creation date
///       20     8  modification date
///       28     4  track id
///       32     4  reserved           0
///       36     8  duration
///       44     8  reserved           0
///       52     2  layer              0
///       54     2  alternate group    0
///       56     2  volume 8.8
///       58     2  reserved           0
///       60    36  matrix             unity
///       96     4  width 16.16
///      100     4  height 16.16
class TkhdBox final : public FullBox {
public:
    TkhdBox(const BoxContext& context, std::uint32_t flags, const TrackHeader& fields);
    TkhdBox(const BoxContext& context, const BoxHeader& header);

    void writeFields() override;
    /// The duration.
    void updateFields() override;
    void readFields() override;

    const TrackHeader& track() const { return track_; }
    void setDuration(std::uint64_t ticks) { track_.duration = ticks; }

private:
    TrackHeader track_;
};

}  // namespace qlix::kzm::impl
