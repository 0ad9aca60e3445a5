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

/// The AudioSpecificConfig inside the first `esds` box of a blob; nothing when there is none, when
/// it is empty, or when a length leads out of the blob or takes more than four bytes.
///
///   offset  size  field
///        0    12  full box header of `esds`
///       12     1  tag 3: then its length, and 2 bytes id, 1 byte flags; else 2 bytes id
///               1  tag 4: then its length, and 13 bytes of decoder facts
///               1  tag 5: then its length n
///               n  AudioSpecificConfig
///
/// A length is big-endian in seven bits a byte; the high bit says that one more byte follows.
ByteView findAudioSpecificConfig(const Blob& blob);

}  // namespace torvo::kzspkgutil
