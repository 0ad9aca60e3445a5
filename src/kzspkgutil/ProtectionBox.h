#pragma once

#include <cstdint>
#include <string>

#include "kzspkgutil/ProtectedDescriptor.h"

namespace torvo::kzspkgutil {

/// What the `sinf` box of a protected sample description says.
struct ProtectionBoxContent {
    /// From 3 on the second text is written. On purpose: no run sets another value than 1.
    /// Pinned by ProtectionBoxTest.RecordVersionOfARunIsOne.
    std::uint8_t recordVersion = 1;
    std::uint32_t clearFormat = 0;
    std::uint8_t ahdrVersion = 2;
    std::string metadataText;
    std::string secondText;
};

/// The box, all of it:
///
///   sinf
///     frma           clear format
///     schm (1, 0)    'adkm', 32-bit 1
///     schi
///       adkm (1, 0)
///         ahdr (2 or 3, 0)
///           aprm (1, 0)
///             aeib (1, 0)   "AES-CBC" with its zero, byte 16: the key's length
///             akey (1, 0)
///               flxs        metadata text with its zero; second text with its zero
///         adaf (0, 0)       0x80, 0, 16: selective encryption, no key indicator, IV length
///
/// (version, flags) stand behind the header of a full box; the others are plain.
Blob makeProtectionBox(const ProtectionBoxContent& content);

/// The data of a protected description, taken apart.
struct SplitDescription {
    std::uint32_t clearFormat = 0;
    Blob extraData;       ///< the boxes in front of `sinf`
    Blob protectionData;  ///< from `sinf` on
};

/// Takes apart the child boxes of a description. There must be a `sinf` with `frma`, `schm` of type
/// `adkm` and version 1, and `schi`, in that order; anything else throws a plain std::exception.
SplitDescription splitProtectedDescription(const Blob& data);

}  // namespace torvo::kzspkgutil
