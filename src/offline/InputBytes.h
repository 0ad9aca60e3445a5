#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "hlx/Secret.h"

namespace torvo::offline {

/// Keys, certificates, credentials and policies have far less; what goes on for longer is none.
constexpr std::size_t kLargestInput = std::size_t{64} << 20;

/// All bytes of a file.
///
/// Throw FileNotFoundException with the path if it can't be opened, PathNotFileException if it is a
/// folder, and CantAccessFileException with the path if it can't be read or has more than
/// kLargestInput bytes.
std::vector<std::uint8_t> readInputBytes(const std::string& path);
/// The same for a file that holds a key: no copy of its bytes stays behind in memory.
hlx::SecretBytes readSecretBytes(const std::string& path);

}  // namespace torvo::offline
