#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "kzs/base/ByteOrder.h"

namespace qlix::kzm::impl {

using torvo::kzs::fourCc;

class QlixKZMStream;

using ExtendedType = std::array<std::uint8_t, 16>;

constexpr std::uint64_t kBoxHeaderSize = 8;
constexpr std::uint64_t kLargeBoxHeaderSize = 16;
constexpr std::uint64_t kExtendedTypeSize = 16;
constexpr std::uint64_t kFullBoxHeaderSize = 12;

/// Extended type of the XMP metadata box.
extern const ExtendedType kXmpType;

/// What stands in front of a box's fields, and where the box lies.
///
///   offset  size  field
///        0     4  size; 1: a 64-bit size follows the type; 0: up to the end of the file
///        4     4  type
///        8     8  size, if the first size is 1
///       ..    16  extended type, if the type is 'uuid'
struct BoxHeader {
    std::uint32_t type = 0;
    std::uint64_t size = 0;   ///< as read; of a box of size 0 the bytes up to the end of the file
    std::uint64_t start = 0;  ///< position of the first header byte
    std::uint64_t end = 0;    ///< position behind the box; 0 in a box made for writing
    bool isLarge = false;
    bool isToEnd = false;
    std::optional<ExtendedType> extendedType;

    /// Bytes of the header as it stands in the file.
    std::uint64_t headerSize() const;
};

/// Reads the header at the stream's position and leaves the stream behind it.
///
/// Answers nothing where no box begins: fewer than 8 bytes are left (1 to 7 of them give
/// warnTruncated) or the end overflows. A `uuid` whose extended type has the ISO template tail
/// gets the code in its first four bytes as type. An end beyond that of `parent` (null for none)
/// is clamped with warnChildBeyondParent. Throws boxTooShort for a box that is smaller than its
/// header or, unless it is an `mdat` (warnMdatBeyondFile), reaches beyond the end of the stream.
std::optional<BoxHeader> readBoxHeader(QlixKZMStream& stream, const BoxHeader* parent);

}  // namespace qlix::kzm::impl
