#pragma once

#include <cstdint>
#include <vector>

#include "support/Bytes.h"

namespace kz::test {

/// A tag of an FLV file, as it stands there.
struct StoredTag {
    int type = 0;
    std::uint32_t timeMs = 0;
    Bytes body;
    Bytes image;  ///< header, body, and the word of the tag's size behind it
};

/// All tags of a whole and sound FLV file, in the order of the file. Stands on nothing of the
/// program. Throws std::runtime_error where the file is not sound.
std::vector<StoredTag> readFlvTags(const Bytes& file);

/// The audio and video tags that hold something, in the order in which a run takes them: the
/// order of the file within each type, and among the types the earlier first.
std::vector<StoredTag> samplesInOrder(const std::vector<StoredTag>& tags);

}  // namespace kz::test
