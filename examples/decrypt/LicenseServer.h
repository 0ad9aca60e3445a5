#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace decrypt {

using Bytes = std::vector<std::uint8_t>;

/// What a license server needs of the protection metadata to hand out a license.
struct License {
    std::string contentId;
    std::string serverUrl;
    Bytes policy;
    Bytes contentKey;  ///< 16 bytes
};

/// Opens protection metadata with the private key in a PEM file, checks its signature, and reads
/// its record. With `authorityFile` (PEM; empty: none) the signer must be of that authority. Throws
/// std::runtime_error.
License openMetadata(const Bytes& metadata, const std::string& keyFile,
                     const std::string& authorityFile);

/// Decodes base64. Throws std::runtime_error.
Bytes decodeBase64(const std::string& text);

}  // namespace decrypt
