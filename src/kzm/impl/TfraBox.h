#pragma once

#include "kzm/impl/FullBox.h"

namespace qlix::kzm::impl {

/// Random access points of one track.
///
///   offset  size  field
///        0    12  full box header: 'tfra', version 1, flags 0
///       12     4  track id; only its low 8 bits are kept
///       16     4  bytes less one of the last three fields of an entry, two bits each: 0x3F is
///                 four bytes each
///       20     4  entry count
///       24  28 n  entries: time 8, 'moof' offset 8, traf number 4, trun number 4,
///                 sample number 4
///
/// In version 0 time and offset have 4 bytes each; the writer only makes version 1.
/// On purpose one byte of the id is enough. Pinned by TfraBoxTest.KeepsTheLowByteOfTheTrackId.
class TfraBox final : public FullBox {
public:
    struct Entry {
        std::uint64_t time = 0;  ///< ticks of the track
        std::uint64_t moofOffset = 0;
        std::uint32_t trafNumber = 0;
        std::uint32_t trunNumber = 0;
        std::uint32_t sampleNumber = 0;
    };

    /// `version` is 0 or 1.
    TfraBox(const BoxContext& context, std::uint32_t trackId, std::uint8_t version = 1);
    TfraBox(const BoxContext& context, const BoxHeader& header);

    /// Throws boxTooShort, tableTooLarge, and badArgument where bits above the three lengths are
    /// set.
    void readFields() override;
    void writeFields() override;

    /// The box grows by an entry.
    void addEntry(const Entry& entry);
    std::uint8_t trackId() const { return trackId_; }
    const BoxVector<Entry>& entries() const { return entries_; }

private:
    std::uint64_t writtenEntrySize() const { return version() == 0 ? 20 : 28; }

    std::uint8_t trackId_ = 0;
    BoxVector<Entry> entries_;
};

}  // namespace qlix::kzm::impl
