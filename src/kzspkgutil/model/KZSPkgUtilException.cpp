#include "kzspkgutil/model/KZSPkgUtilException.h"

#include <utility>

namespace torvo::kzspkgutil {

KZSPkgUtilException::KZSPkgUtilException(std::uint32_t code, const std::string& message)
    : kvl::KVLException("Error (" + std::to_string(code) + ") - " + message), code_(code) {}

KZSPkgUtilFileException::KZSPkgUtilFileException(std::uint32_t code, const std::string& message,
                                                 std::string path)
    : KZSPkgUtilException(code, message), path_(std::move(path)) {}

NoSupportedTracksException::NoSupportedTracksException(const std::string& path)
    : KZSPkgUtilFileException(kNoSupportedTracks, "No supported tracks in file '" + path + "'",
                              path) {}

}  // namespace torvo::kzspkgutil
