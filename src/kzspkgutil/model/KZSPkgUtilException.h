#pragma once

#include <cstdint>
#include <string>

#include "kvl/KVLException.h"

namespace torvo::kzspkgutil {

/// The codes of the pipeline's own failures; the first three concern a file.
constexpr std::uint32_t kFileMissing = 1;           ///< it doesn't exist
constexpr std::uint32_t kFileInaccessible = 2;      ///< it can't be accessed
constexpr std::uint32_t kNoSupportedTracks = 3;     ///< it has no track that this program supports
constexpr std::uint32_t kNoProtectionMetadata = 4;  ///< the encryption library made none
constexpr std::uint32_t kTagTooLarge = 5;  ///< the 24-bit size of a tag can't tell a sample

/// A failure of the pipeline. Its text is "Error (" code ") - " message.
class KZSPkgUtilException : public kvl::KVLException {
public:
    KZSPkgUtilException(std::uint32_t code, const std::string& message);

    std::uint32_t code() const { return code_; }

private:
    std::uint32_t code_;
};

/// One that concerns a file: kFileMissing, kFileInaccessible or kNoSupportedTracks.
class KZSPkgUtilFileException : public KZSPkgUtilException {
public:
    KZSPkgUtilFileException(std::uint32_t code, const std::string& message, std::string path);

    const std::string& path() const { return path_; }

private:
    std::string path_;
};

/// kNoSupportedTracks: "No supported tracks in file 'path'".
class NoSupportedTracksException : public KZSPkgUtilFileException {
public:
    explicit NoSupportedTracksException(const std::string& path);
};

}  // namespace torvo::kzspkgutil
