#pragma once

#include <cstdint>
#include <vector>

#include "kzm/impl/BoxVector.h"
#include "kzm/impl/FullBox.h"

namespace qlix::kzm::impl {

/// What the table boxes under `stbl` share: a row count and rows of one size.
///
///   offset  size  field
///        0    12  full box header: version 0, flags 0
///       12     4  row count ('stsz' has its fixed size in front of it)
///       16     .  rows
///
/// A box for writing has room for its rows from the start, filled with zeros. Each row is written
/// at once behind those before it: `ownSize` tells where the next one goes, `size` is the room.
class TableBox : public FullBox {
public:
    void writeFields() override;
    /// The row count, where it changed.
    void updateFields() override;

protected:
    TableBox(const BoxContext& context, std::uint32_t type, std::uint64_t rowSize,
             std::uint64_t capacity, std::uint64_t countOffset = kFullBoxHeaderSize);
    TableBox(const BoxContext& context, const BoxHeader& header) : FullBox(context, header) {}

    /// Writes rows behind the others. The box must stand in the file and have room for them.
    void appendRow(const FieldWriter& row);
    /// Writes rows behind the others without keeping them: the next row goes over them.
    void putPending(const FieldWriter& rows, std::uint32_t count);

    /// `count`, which stands in a file. Throws `tooMany` above kSanityLimit.
    static std::uint32_t limited(std::uint32_t count, ErrorCode tooMany);
    /// Reads `count` rows of `rowSize` bytes each by one read; fewer rows come if the stream ends
    /// first. Throws boxTooShort for a count beyond the box.
    static std::vector<std::uint8_t> readRows(FieldReader& in, std::uint64_t rowSize,
                                              std::uint32_t count);
    /// The same for rows of one word, whose values take the place of what is in `words`.
    static void readWords(FieldReader& in, std::uint32_t count, BoxVector<std::uint32_t>& words);

private:
    void putCount(std::uint32_t count);

    std::uint64_t countOffset_ = kFullBoxHeaderSize;
    std::uint32_t rowCount_ = 0;
    std::uint32_t countInFile_ = 0;
};

}  // namespace qlix::kzm::impl
