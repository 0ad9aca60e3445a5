#pragma once

#include <vector>

#include "kzm/impl/EditList.h"
#include "kzm/impl/FullBox.h"

namespace qlix::kzm::impl {

/// Edit list. Its size is fixed when it is made, since the headers can't grow once fragments
/// follow them.
///
///   offset  size  field              written
///        0    12  full box header    'elst', version 1, flags 0
///       12     4  row count
///       16  20 n  rows: duration 8, media time 8, rate 2, rate fraction 2
///        .     .  zeros up to the capacity
///
/// A row of version 0 has a duration and a media time of 4 bytes each.
class ElstBox final : public FullBox {
public:
    /// Sets room for 2 x `maxEdits` + 1 rows aside.
    ElstBox(const BoxContext& context, std::uint32_t maxEdits);
    /// A body that isn't a multiple of 4 bytes gives warnTruncated.
    ElstBox(const BoxContext& context, const BoxHeader& header);

    void writeFields() override;
    /// Count and rows. On purpose: what stands behind them stays.
    /// Pinned by ElstBoxTest.RewritesCountAndRowsOnly.
    void updateFields() override;
    /// Throws countTooLarge for a count above kSanityLimit, boxTooShort for one beyond the box.
    void readFields() override;

    /// In a box for writing the presentation start isn't kept.
    const std::vector<Edit>& edits() const { return edits_; }
    std::uint64_t capacity() const { return capacity_; }
    std::size_t emptyEditCount() const;

    /// Adds a row with rate 1. Times as in Edit. Throws editListFull.
    void addEdit(std::uint64_t duration, std::int64_t mediaTime);
    /// Changes the last row, which must be there.
    void setLastDuration(std::uint64_t duration) { edits_.back().duration = duration; }

private:
    void putRows(FieldWriter& out) const;

    std::uint64_t capacity_ = 0;
    std::vector<Edit> edits_;
};

}  // namespace qlix::kzm::impl
