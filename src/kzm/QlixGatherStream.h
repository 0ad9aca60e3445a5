#pragma once

#include <cstddef>
#include <cstdint>

namespace qlix::kzm {

/// Bytes on their way into a file.
struct WritePart {
    const void* data = nullptr;
    std::uint64_t size = 0;
};

/// What a QlixIOStream may offer besides: writing pieces that lie apart in memory by one call.
///
/// A class that derives from both gets the samples of a fragment so, uncopied; one that doesn't
/// gets the same bytes through QlixIOStream::write.
class QlixGatherStream {
public:
    /// Most parts that the library hands over at a time.
    static constexpr std::size_t kMostParts = 1024;

    virtual ~QlixGatherStream() = default;

    /// Writes the parts in their order, as if they were one buffer, and returns how many of their
    /// bytes were taken, as QlixIOStream::write does.
    virtual std::uint64_t writeParts(const WritePart* parts, std::size_t count) = 0;
};

}  // namespace qlix::kzm
