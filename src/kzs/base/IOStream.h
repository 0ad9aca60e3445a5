#pragma once

#include <cstdint>

#include "kzs/base/IStream.h"

namespace torvo::kzs {

/// A byte stream that can also be written.
class IOStream : public IStream {
public:
    /// Returns the bytes written, which may be fewer than `count`. A null buffer or a count of 0
    /// gives 0. Throws IOStreamException.
    virtual std::uint64_t write(const void* buffer, std::uint64_t count) = 0;
    /// Cuts or extends to `size` bytes; the position stays. Throws IOStreamException.
    virtual void truncate(std::uint64_t size) = 0;
};

}  // namespace torvo::kzs
