#pragma once

#include <cstdint>
#include <iosfwd>
#include <vector>

namespace torvo::kzs {

struct AfraIndex;

/// Writes `index` as an `afra` box at the stream's position, in one write.
///
/// The stream throws std::ios_base::failure when that fails; its exception setting is put back.
void writeAfra(std::ostream& stream, const AfraIndex& index);

/// The bytes that writeAfra writes. `bytes` is replaced and keeps its capacity: an index that is
/// written again and again as it grows needs no new memory each time.
void serialiseAfra(const AfraIndex& index, std::vector<std::uint8_t>& bytes);

}  // namespace torvo::kzs
