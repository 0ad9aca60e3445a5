#pragma once

#include <cstdint>

#include "flv/Allocator.h"
#include "flv/InputStream.h"
#include "flv/RefHolder.h"
#include "flv/TagFilter.h"
#include "flv/TagIterator.h"

namespace flv {

enum class Direction : std::uint32_t { forward = 0, backward = 1 };

/// An open FLV file. Copies share the handle. All operations throw Exception.
class Reader {
public:
    /// No file.
    Reader() = default;
    /// Opens; `stream` and `allocator` outlive the reader and all that comes from it.
    Reader(InputStream& stream, Allocator& allocator);

    /// Whether the stream begins like an FLV file; any other content is no failure.
    static bool isFLV(InputStream& stream, Allocator& allocator);

    FLVDocInfo getDocInfo() const;
    /// Every tag of the whole file. Backward may fail with kNoBackward.
    TagIterator getTags(Direction direction) const;
    /// Tags of the filter's types in the whole file, forward, in the order of their times.
    TagIterator getTagsByTagTypes(const TagFilter& filter) const;

private:
    SharedHandle<QlixFLVReader> handle_;
};

}  // namespace flv
