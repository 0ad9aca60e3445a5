#pragma once

#include <cstdint>
#include <vector>

#include "kzs/base/ByteOrder.h"
#include "kzspkgutil/model/SampleDescriptions.h"

namespace torvo::kzspkgutil {

constexpr std::uint32_t kEncryptedVideo = kzs::fourCc("encv");
constexpr std::uint32_t kEncryptedAudio = kzs::fourCc("enca");
constexpr std::uint32_t kEncryptedOther = kzs::fourCc("encr");

/// A sample description of a protected track.
struct ProtectedDescriptor {
    std::uint32_t protectedFormat = 0;  ///< `encv`, `enca` or `encr`
    std::uint32_t clearFormat = 0;      ///< what the samples are once decrypted
    Blob extraData;
    Blob protectionData;  ///< the `sinf` box
};

using ProtectedDescriptors = std::vector<ProtectedDescriptor>;

/// The protected format for a handler: `enca` for `soun`, `encv` for `vide`, else `encr`.
std::uint32_t protectedFormatOf(std::uint32_t handler);

}  // namespace torvo::kzspkgutil
