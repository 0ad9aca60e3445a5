#pragma once

#include <cstddef>
#include <vector>

#include "kzm/QlixIStream.h"
#include "kzm/impl/QlixKZMStream.h"

namespace qlix::kzm::impl {

/// Reads from a caller's stream.
///
/// Short reads are served from a window of the file, so that walking boxes costs one system call
/// a window; a read of a window's length or more goes straight to the caller's buffer.
class QlixKZMIStream final : public QlixKZMStream {
public:
    static constexpr std::size_t kWindowSize = 16384;

    /// Holds a reference on `stream`. Throws badArgument when it is null.
    explicit QlixKZMIStream(QlixIStream* stream);
    ~QlixKZMIStream() override;

    void open() override;
    void close() override;
    std::uint64_t read(void* buffer, std::uint64_t count) override;
    void seek(std::uint64_t position) override;
    std::uint64_t tell() const override;
    /// Reads without the window, for bytes that nobody reads twice; window and position stay.
    /// Returns fewer than `count` only at the end of the stream.
    std::uint64_t readAt(std::uint64_t position, std::uint8_t* buffer, std::uint64_t count) {
        return readFrom(position, buffer, count);
    }

protected:
    std::uint64_t measureSize() override;

private:
    std::uint64_t readFrom(std::uint64_t position, std::uint8_t* buffer, std::uint64_t count);
    std::uint64_t takeFromWindow(std::uint8_t* buffer, std::uint64_t count);

    QlixIStream* stream_;         // one reference is ours
    std::uint64_t position_ = 0;  // where the next read starts
    std::uint64_t streamAt_ = 0;  // where the caller's stream stands, if known
    bool streamAtKnown_ = false;
    std::vector<std::uint8_t> window_;
    std::uint64_t windowStart_ = 0;
};

}  // namespace qlix::kzm::impl
