#pragma once

#include <cstddef>
#include <cstdint>

#include "kzspkgutil/model/SampleDescriptions.h"

namespace torvo::kzspkgutil {

/// Bytes inside a blob that belongs to someone else; size 0 where nothing was found.
struct ByteView {
    const std::uint8_t* data = nullptr;
    std::size_t size = 0;
};

/// The first box of `type` in a blob, header included.
///
/// The bytes are scanned for the four letters, whatever boxes they stand in, and the word ahead of
/// them is the size. A size below 8 or beyond the end of the blob makes it no box, and the search
/// ends there.
ByteView findBox(const Blob& blob, std::uint32_t type);

}  // namespace torvo::kzspkgutil
