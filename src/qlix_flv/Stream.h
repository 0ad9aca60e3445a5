#pragma once

#include <cstdint>

#include "qlix_flv/qlix_flv.h"

namespace qlix::flv {

/// One reference on the caller's stream.
class StreamReference {
public:
    explicit StreamReference(const QlixFLVInputStreamCallBacks& callBacks);
    ~StreamReference();
    StreamReference(const StreamReference&) = delete;
    StreamReference& operator=(const StreamReference&) = delete;

private:
    QlixFLVInputStreamCallBacks callBacks_;
};

/// The stream behind the callbacks: reads at a position and seeks only when it must.
///
/// Takes no reference. All operations fail with kQlixFLVStreamFailed.
class Stream {
public:
    explicit Stream(const QlixFLVInputStreamCallBacks& callBacks);

    /// Size of the stream in bytes, taken once.
    std::uint64_t size() const { return size_; }
    /// Where the next read goes on without a seek.
    std::uint64_t position() const { return position_; }

    /// Reads exactly `count` bytes, with one callback unless the stream gives fewer at a time.
    void readAt(std::uint64_t offset, std::uint8_t* buffer, std::uint32_t count);

private:
    void seekTo(std::uint64_t offset);
    std::uint64_t measure();

    QlixFLVInputStreamCallBacks callBacks_;
    std::uint64_t size_ = 0;
    std::uint64_t position_ = 0;
    bool isPositionKnown_ = false;
};

}  // namespace qlix::flv
