#include "kzm/impl/TableBox.h"

#include "kzs/base/ByteOrder.h"

namespace qlix::kzm::impl {

TableBox::TableBox(const BoxContext& context, std::uint32_t type, std::uint64_t rowSize,
                   std::uint64_t capacity, std::uint64_t countOffset)
    : FullBox(context, type, 0, 0), countOffset_(countOffset) {
    const std::uint64_t fixed = countOffset + 4;
    setSizes(fixed, fixed + rowSize * capacity);
}

void TableBox::writeFields() {
    FieldWriter out;
    out.zeros(static_cast<std::size_t>(size() - kFullBoxHeaderSize));
    put(out);
}

void TableBox::updateFields() {
    if (countInFile_ != rowCount_) putCount(rowCount_);
}

void TableBox::putCount(std::uint32_t count) {
    FieldWriter out;
    out.u32(count);
    putAt(countOffset_, out);
    countInFile_ = count;
}

void TableBox::appendRow(const FieldWriter& row) {
    putAt(ownSize(), row);
    setSizes(ownSize() + row.size(), size());
    ++rowCount_;
}

void TableBox::putPending(const FieldWriter& rows, std::uint32_t count) {
    putCount(rowCount_ + count);
    putAt(ownSize(), rows);
}

std::uint32_t TableBox::limited(std::uint32_t count, ErrorCode tooMany) {
    if (count > kSanityLimit) raise(tooMany);
    return count;
}

std::vector<std::uint8_t> TableBox::readRows(FieldReader& in, std::uint64_t rowSize,
                                             std::uint32_t count) {
    if (count > in.left() / rowSize) raise(ErrorCode::boxTooShort);
    std::vector<std::uint8_t> rows = in.bytes(rowSize * count);
    rows.resize(rows.size() - rows.size() % rowSize);
    return rows;
}

void TableBox::readWords(FieldReader& in, std::uint32_t count, BoxVector<std::uint32_t>& words) {
    constexpr std::size_t kWordSize = 4;
    const std::vector<std::uint8_t> bytes = readRows(in, kWordSize, count);
    words.clear();
    words.reserve(bytes.size() / kWordSize);
    for (std::size_t at = 0; at < bytes.size(); at += kWordSize) {
        words.push_back(torvo::kzs::loadU32(&bytes[at]));
    }
}

}  // namespace qlix::kzm::impl
