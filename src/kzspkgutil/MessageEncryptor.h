#pragma once

#include <cstdint>

#include "hlx/HLXEncryptor.h"
#include "kzspkgutil/model/PackagerContext.h"
#include "kzspkgutil/model/TCMessage.h"

namespace torvo::kzspkgutil {

/// Classes of tags as the encryption library knows them.
constexpr std::uint32_t kNoTrackClass = 0;
constexpr std::uint32_t kVideoTrackClass = 1;
constexpr std::uint32_t kAudioTrackClass = 2;
constexpr std::uint32_t kDataTrackClass = 4;

std::uint32_t trackClassOf(std::uint8_t tagType);

/// The message as an encrypted tag, or in its clear layout where the library wants it clear; in
/// either case in a new block, with its stream id set to 0.
///
/// The encrypted tag, big-endian; h is the size of the codec header, n that of the filter's name,
/// v that of the IV:
///
///   offset   size  field
///        0      1  tag type of the clear tag + 0x20
///        1      3  body size
///        4      7  time and stream id
///       11      h  codec header of the clear tag
///     11+h      1  filter count
///     12+h    n+1  filter name with its zero
///   13+h+n      3  v + 1
///   16+h+n      1  0x80: this unit is encrypted
///   17+h+n      v  IV
/// 17+h+n+v      m  encrypted sample
///                4  body size + 11
///
/// `isAvc` is handed on to the library. Throws hlx::HLXException, and KZSPkgUtilException where the
/// body grows past what 24 bits can tell.
TCMessage encryptMessage(const hlx::HLXEncryptor& encryptor, IPackagerContext& context,
                         const TCMessage& message, bool isAvc);

}  // namespace torvo::kzspkgutil
