#pragma once

#include <cstdint>

#include "qlix_flv/qlix_flv.h"

namespace flv {

/// A stream that the library reads from.
///
/// The library counts references on it by addRef and release, and never sees an exception: what
/// read, seek and tell throw becomes a failed result.
class InputStream {
public:
    virtual ~InputStream();

    /// Sets all fields; the callbacks lead to this object, which outlives their use.
    virtual void getCallBacks(QlixFLVInputStreamCallBacks& out);
    virtual void addRef() = 0;
    virtual void release() = 0;
    /// Returns the bytes read, 0 at the end.
    virtual std::uint32_t read(void* buffer, std::uint32_t size) = 0;
    /// whence: 0 from the start, 1 from the position, 2 from the end.
    virtual void seek(std::int64_t offset, std::uint32_t whence) = 0;
    virtual std::int64_t tell() = 0;
    virtual void open() = 0;
    virtual void close() = 0;

protected:
    InputStream() = default;
    InputStream(const InputStream&) = default;
    InputStream& operator=(const InputStream&) = default;
};

}  // namespace flv
