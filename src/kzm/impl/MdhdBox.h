#pragma once

#include <array>

#include "kzm/DateRecord.h"
#include "kzm/impl/FullBox.h"

namespace qlix::kzm::impl {

/// Three letters a to z and a 0 byte.
using Language = std::array<char, 4>;

/// What a media header holds.
struct MediaHeader {
    DateRecord creationDate;
    DateRecord modificationDate;
    std::uint32_t timescale = 0;  ///< ticks a second
    std::uint64_t duration = 0;   ///< ticks
    Language language = {};
};

/// Media header. Version 1 is written; version 0 has dates and duration of 4 bytes each.
///
///   offset  size  field              written
///        0    12  full box header    size 44, 'mdhd', version 1, flags 0
///       12     8  creation date
///       20     8  modification date
///       28     4  timescale
///       32     8  duration
///       40     2  language           three letters of 5 bits, each its code less 0x60
///       42     2  pre-defined        0
class MdhdBox final : public FullBox {
public:
    MdhdBox(const BoxContext& context, const MediaHeader& fields);
    MdhdBox(const BoxContext& context, const BoxHeader& header);

    void writeFields() override;
    /// The duration.
    void updateFields() override;
    /// Throws unsupportedVersion above version 1.
    void readFields() override;

    const MediaHeader& media() const { return media_; }
    void setDuration(std::uint64_t ticks) { media_.duration = ticks; }

private:
    MediaHeader media_;
};

}  // namespace qlix::kzm::impl
