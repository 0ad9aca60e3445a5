#pragma once

#include "kzspkgutil/model/BoxSearch.h"

namespace torvo::kzspkgutil {

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
