#pragma once

#include "kzm/impl/FullBox.h"

namespace qlix::kzm::impl {

/// Index of the random access points of one fragment.
///
///   offset  size  field
///        0    12  full box header: 'afra', version 0, flags 0
///       12     1  0xC0: long ids, long offsets, no global entries
///       13     4  timescale
///       17     4  entry count
///       21  16 n  entries: time 8, offset 8
///
/// An offset counts from the first byte of the box itself. The box is only written here; found in
/// an input it stays opaque.
class AfraBox final : public FullBox {
public:
    static constexpr std::uint64_t kEntrySize = 16;

    struct Entry {
        std::uint64_t time = 0;  ///< ticks of the box's timescale
        std::uint64_t offset = 0;
    };

    AfraBox(const BoxContext& context, std::uint32_t timescale);
    AfraBox(const BoxContext& context, const BoxHeader& header);

    void writeFields() override;
    /// Rewrites count and entries.
    void updateFields() override;

    std::uint32_t timescale() const { return timescale_; }
    /// The box grows by an entry.
    void addEntry(std::uint64_t time, std::uint64_t offset);
    /// Adds `distance` to the offset of every entry.
    void moveOffsets(std::uint64_t distance);
    const BoxVector<Entry>& entries() const { return entries_; }

private:
    void putEntries(FieldWriter& out) const;

    std::uint32_t timescale_ = 0;
    BoxVector<Entry> entries_;
};

}  // namespace qlix::kzm::impl
