#pragma once

#include "kzspkgutil/CodecConfig.h"
#include "kzspkgutil/model/MemoryArena.h"
#include "kzspkgutil/model/TCMessage.h"

namespace torvo::kzspkgutil {

/// The AVC sequence header tag made of a whole `avcC` box:
///
///   offset  size   field
///        0    11   tag header, type 9, body size S - 3
///       11     1   0x17: key frame, AVC
///       12     1   0: sequence header
///       13     3   composition offset 0
///       16   S-8   contents of the box, whose size is S
///
/// The contents are its sample data. The empty message where `avcC` is empty.
TCMessage makeAvcHeader(IMemoryArena& arena, ByteView avcC, const Timestamp& sampleTime,
                        const Timestamp& messageTime);

/// The AAC sequence header tag made of an AudioSpecificConfig of n bytes:
///
///   offset  size   field
///        0    11   tag header, type 8, body size n + 2
///       11     1   0xAF: AAC
///       12     1   0: sequence header
///       13     n   the configuration
///
/// The configuration is its sample data. The empty message where it is empty.
TCMessage makeAacHeader(IMemoryArena& arena, ByteView config, const Timestamp& sampleTime,
                        const Timestamp& messageTime);

}  // namespace torvo::kzspkgutil
