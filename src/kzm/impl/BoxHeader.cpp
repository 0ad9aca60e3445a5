#include "kzm/impl/BoxHeader.h"

#include <algorithm>

#include "kzm/ErrorCode.h"
#include "kzm/impl/QlixKZMStream.h"

namespace qlix::kzm::impl {
namespace {

constexpr std::array<std::uint8_t, 12> kTemplateTail = {0x00, 0x11, 0x00, 0x10, 0x80, 0x00,
                                                        0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71};

bool isTemplate(const ExtendedType& type) {
    return std::equal(kTemplateTail.begin(), kTemplateTail.end(), type.begin() + 4);
}

void checkEnd(QlixKZMStream& stream, const BoxHeader* parent, BoxHeader& header) {
    if (parent != nullptr && header.end > parent->end) {
        // On purpose: clamped, not refused. Pinned by
        // BoxHeaderTest.ClampsAChildThatOverrunsItsParent.
        stream.warn(ErrorCode::warnChildBeyondParent);
        header.end = parent->end;
    }
    if (header.end > stream.byteSize()) {
        // On purpose: only a media data box may pass the end of the file.
        // Pinned by BoxHeaderTest.KeepsAnMdatBeyondTheEndOfTheFileAndRefusesOthers.
        if (header.type != fourCc("mdat")) raise(ErrorCode::boxTooShort);
        stream.warn(ErrorCode::warnMdatBeyondFile);
    }
    // A box inside its own header would be read again and again.
    if (header.end - header.start < header.headerSize()) raise(ErrorCode::boxTooShort);
}

}  // namespace

const ExtendedType kXmpType = {0xBE, 0x7A, 0xCF, 0xCB, 0x97, 0xA9, 0x42, 0xE8,
                               0x9C, 0x71, 0x99, 0x94, 0x91, 0xE3, 0xAF, 0xAC};

std::uint64_t BoxHeader::headerSize() const {
    return (isLarge ? kLargeBoxHeaderSize : kBoxHeaderSize) +
           (extendedType ? kExtendedTypeSize : 0);
}

std::optional<BoxHeader> readBoxHeader(QlixKZMStream& stream, const BoxHeader* parent) {
    const std::uint64_t left = stream.left();
    if (left < kBoxHeaderSize) {
        if (left > 0) stream.warn(ErrorCode::warnTruncated);
        return std::nullopt;
    }
    BoxHeader header;
    header.start = stream.tell();
    header.size = stream.readU32();
    header.type = stream.readU32();
    if (header.size == 1) {
        header.isLarge = true;
        header.size = stream.readU64();
    } else if (header.size == 0) {
        header.isToEnd = true;
        header.size = stream.byteSize() - header.start;
    }
    header.end = header.start + header.size;
    if (header.end < header.start) return std::nullopt;

    if (header.type == fourCc("uuid")) {
        header.extendedType.emplace();
        stream.readExact(header.extendedType->data(), header.extendedType->size());
        // On purpose: such a box is handled as if it had the plain code.
        // Pinned by BoxHeaderTest.TakesTheCodeOfATemplateExtendedType.
        if (isTemplate(*header.extendedType)) {
            header.type = torvo::kzs::loadU32(header.extendedType->data());
        }
    }
    checkEnd(stream, parent, header);
    return header;
}

}  // namespace qlix::kzm::impl
