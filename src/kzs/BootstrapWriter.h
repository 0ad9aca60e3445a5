#pragma once

#include <cstdint>
#include <iosfwd>
#include <vector>

namespace torvo::kzs {

struct BootstrapInfo;

/// Writes `info` as an `abst` box at the stream's position and returns the count of bytes.
///
/// With `bodyOnly` the box header and the word of version and flags are left out, so that the
/// bytes start at the bootstrap version. The whole goes out in one write. The stream throws
/// std::ios_base::failure when that fails; its exception setting is put back.
std::uint64_t writeBootstrap(std::ostream& stream, const BootstrapInfo& info, bool bodyOnly);

/// The bytes that writeBootstrap writes.
std::vector<std::uint8_t> serialiseBootstrap(const BootstrapInfo& info, bool bodyOnly);

}  // namespace torvo::kzs
