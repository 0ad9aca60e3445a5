#pragma once

#include <array>
#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

namespace torvo::kzs {

/// What a player has to know of a protected content before it asks for a license.
struct DrmAdditionalHeader {
    std::uint8_t version = 2;
    std::uint32_t flags = 0;
    std::uint8_t paramsVersion = 1;
    /// On purpose: three words in front of the algorithm and three behind the key length belong to
    /// the record and not to its written form.
    /// Pinned by DrmAdditionalHeaderTest.UnusedWordsAreOneZeroOne.
    std::array<std::uint32_t, 3> wordsBeforeAlgorithm = {1, 0, 1};
    std::string encryptionAlgorithm = "AES-CBC";
    std::uint8_t keyLength = 16;
    std::array<std::uint32_t, 3> wordsBehindKeyLength = {1, 0, 1};
    std::string metadata;  ///< the protection metadata as base64 text
    std::uint8_t keyIndicatorLength = 0;
};

/// Writes the header as AMF0 items; all numbers are doubles.
///
///   "|AdditionalHeader" {
///     Encryption {
///       Version, Method "Standard", Flags,
///       Params {
///         Version, EncryptionAlgorithm,
///         EncryptionParams { KeyLength }
///         KeyInfo { subType "EmberGatev2", EGRLS_METADATA { Metadata } }
///         FilterInfo { FilterName "SE2", FilterParams { KeyIndicatorLength } }   version 3 only
///       }
///     }
///   }
///
/// A failed write throws std::ios_base::failure, whatever the stream's own setting, which is put
/// back.
void writeDrmAdditionalHeader(const DrmAdditionalHeader& header, std::ostream& stream);

/// The written form.
std::vector<std::uint8_t> bytesOf(const DrmAdditionalHeader& header);

}  // namespace torvo::kzs
