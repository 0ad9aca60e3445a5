#include "kzm/impl/QlixKZMIStream.h"

#include <algorithm>

namespace qlix::kzm::impl {

QlixKZMIStream::QlixKZMIStream(QlixIStream* stream) : stream_(stream) {
    if (stream == nullptr) raise(ErrorCode::badArgument);
    stream_->addRef();
}

QlixKZMIStream::~QlixKZMIStream() { stream_->release(); }

void QlixKZMIStream::open() {
    stream_->open();
    position_ = 0;
    streamAt_ = 0;
    streamAtKnown_ = true;
    window_.clear();
    forgetSize();
}

void QlixKZMIStream::close() { stream_->close(); }

std::uint64_t QlixKZMIStream::read(void* buffer, std::uint64_t count) {
    auto* out = static_cast<std::uint8_t*>(buffer);
    std::uint64_t done = takeFromWindow(out, count);
    if (done == count) return done;

    if (count - done >= kWindowSize) {
        const std::uint64_t direct = readFrom(position_, out + done, count - done);
        position_ += direct;
        return done + direct;
    }
    window_.resize(kWindowSize);
    windowStart_ = position_;
    try {
        window_.resize(
            static_cast<std::size_t>(readFrom(position_, window_.data(), window_.size())));
    } catch (...) {
        window_.clear();
        throw;
    }
    return done + takeFromWindow(out + done, count - done);
}

std::uint64_t QlixKZMIStream::takeFromWindow(std::uint8_t* buffer, std::uint64_t count) {
    if (position_ < windowStart_ || position_ - windowStart_ >= window_.size()) return 0;
    const std::uint64_t offset = position_ - windowStart_;
    const std::uint64_t taken = std::min<std::uint64_t>(count, window_.size() - offset);
    std::copy_n(window_.data() + offset, taken, buffer);
    position_ += taken;
    return taken;
}

std::uint64_t QlixKZMIStream::readFrom(std::uint64_t position, std::uint8_t* buffer,
                                       std::uint64_t count) {
    if (!streamAtKnown_ || streamAt_ != position) {
        streamAtKnown_ = false;
        stream_->seek(static_cast<std::int64_t>(position), kSeekFromStart);
        streamAt_ = position;
        streamAtKnown_ = true;
    }
    std::uint64_t done = 0;
    while (done < count) {
        const std::uint64_t more = stream_->read(buffer + done, count - done);
        if (more == 0) break;
        done += more;
        streamAt_ += more;
    }
    return done;
}

void QlixKZMIStream::seek(std::uint64_t position) { position_ = position; }

std::uint64_t QlixKZMIStream::tell() const { return position_; }

std::uint64_t QlixKZMIStream::measureSize() { return sizeOf(*stream_); }

}  // namespace qlix::kzm::impl
