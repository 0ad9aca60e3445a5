#pragma once

#include <cstdint>
#include <vector>

#include "kzspkgutil/model/TCMessage.h"

namespace torvo::kzspkgutil {

/// The messages that wait for their fragment, in the order of their arrival.
using MessageList = std::vector<TCMessage>;

/// Where a fragment lies.
struct FragmentPosition {
    std::uint64_t offset = 0;  ///< file offset of its first box
    std::uint64_t reserved = 0;
};

/// Writes messages as fragments.
///
/// Nobody deletes a writer through this interface: it has the two virtual operations alone.
class IMediaWriter {
public:
    /// Writes one fragment of the messages in front of the first one at or past `endTime`. Each
    /// message is let go of as soon as it is written, so that a fragment isn't in memory twice,
    /// clear and encrypted. `bootstrap` is only read during the call.
    virtual FragmentPosition writeUpTo(MessageList&& messages, const Timestamp& endTime,
                                       const std::uint8_t* bootstrap,
                                       std::uint64_t bootstrapSize) = 0;
    virtual void finishWriter() = 0;

protected:
    ~IMediaWriter() = default;
};

}  // namespace torvo::kzspkgutil
