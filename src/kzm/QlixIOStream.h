#pragma once

#include "kzm/QlixIStream.h"

namespace qlix::kzm {

/// A stream that can also be written.
class QlixIOStream : public QlixIStream {
public:
    /// Writes up to `count` bytes and returns how many were taken; the library continues a short
    /// write and treats 0 as a failure.
    virtual std::uint64_t write(const void* buffer, std::uint64_t count) = 0;
    /// Cuts or extends the stream to `size` bytes.
    virtual void truncate(std::uint64_t size) = 0;
};

}  // namespace qlix::kzm
