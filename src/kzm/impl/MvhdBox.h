#pragma once

#include "kzm/DateRecord.h"
#include "kzm/impl/FullBox.h"

namespace qlix::kzm::impl {

/// What a movie header holds.
struct MovieHeader {
    DateRecord creationDate;
    DateRecord modificationDate;
    std::uint32_t timescale = 0;  ///< ticks a second
    std::uint64_t duration = 0;   ///< ticks
    double rate = 1.0;
    double volume = 1.0;
    std::uint32_t nextTrackId = 1;
};

/// Movie header. Version 1 is written; version 0 has dates and duration of 4 bytes each, every
/// other version is read as 1.
///
///   offset  size  field              written
///        0    12  full box header    size 120, 'mvhd', version 1, flags 0
///       12     8  creation date
///       20     8  modification date
///       28     4  timescale
///       32     8  duration
///       40     4  rate 16.16
///       44     2  volume 8.8
///       46    10  reserved           0
///       56    36  matrix             unity
///       92    24  pre-defined        0
///      116     4  next track id
class MvhdBox final : public FullBox {
public:
    MvhdBox(const BoxContext& context, const MovieHeader& fields);
    MvhdBox(const BoxContext& context, const BoxHeader& header);

    void writeFields() override;
    /// Duration and next track id.
    void updateFields() override;
    void readFields() override;

    const MovieHeader& movie() const { return movie_; }
    void setDuration(std::uint64_t ticks) { movie_.duration = ticks; }
    void setNextTrackId(std::uint32_t id) { movie_.nextTrackId = id; }

private:
    void putFromDuration(FieldWriter& out) const;

    MovieHeader movie_;
};

}  // namespace qlix::kzm::impl
