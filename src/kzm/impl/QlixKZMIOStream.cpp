#include "kzm/impl/QlixKZMIOStream.h"

#include <algorithm>
#include <new>

namespace qlix::kzm::impl {
namespace {

/// From this length on, bytes aren't worth copying into the store.
constexpr std::uint64_t kDirectSize = 65536;

/// Runs a writing operation of the caller's stream and names each of its failures writeFailed.
template <class Operation>
auto writing(Operation operation) {
    try {
        return operation();
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception&) {
        raise(ErrorCode::writeFailed);
    }
}

}  // namespace

QlixKZMIOStream::QlixKZMIOStream(QlixIOStream* stream)
    : stream_(stream), gather_(dynamic_cast<QlixGatherStream*>(stream)) {
    if (stream == nullptr) raise(ErrorCode::badArgument);
    stream_->addRef();
}

QlixKZMIOStream::~QlixKZMIOStream() { stream_->release(); }

void QlixKZMIOStream::open() {
    stream_->open();
    position_ = 0;
    streamAt_ = 0;
    streamAtKnown_ = true;
    stored_.clear();
    forgetSize();
}

void QlixKZMIOStream::close() {
    try {
        flush();
    } catch (...) {
        stream_->close();
        throw;
    }
    stream_->close();
}

std::uint64_t QlixKZMIOStream::read(void* buffer, std::uint64_t count) {
    flush();
    moveStreamTo(position_);
    auto* out = static_cast<std::uint8_t*>(buffer);
    std::uint64_t done = 0;
    while (done < count) {
        const std::uint64_t more = stream_->read(out + done, count - done);
        if (more == 0) break;
        done += more;
        streamAt_ += more;
    }
    position_ += done;
    return done;
}

void QlixKZMIOStream::write(const void* buffer, std::uint64_t count) {
    const auto* bytes = static_cast<const std::uint8_t*>(buffer);
    if (count == 0 || patchStored(bytes, count)) return;

    forgetSize();
    if (position_ != storedAt_ + stored_.size() || count > kStoreSize - stored_.size()) flush();
    if (count >= kDirectSize) {
        flush();
        writeThrough(position_, bytes, count);
    } else {
        if (stored_.empty()) storedAt_ = position_;
        stored_.insert(stored_.end(), bytes, bytes + count);
    }
    position_ += count;
}

/// Overwrites bytes that still wait; false if they don't lie wholly among them.
bool QlixKZMIOStream::patchStored(const std::uint8_t* bytes, std::uint64_t count) {
    if (position_ < storedAt_ || position_ - storedAt_ > stored_.size()) return false;
    const std::uint64_t offset = position_ - storedAt_;
    if (count > stored_.size() - offset) return false;
    std::copy_n(bytes, count, stored_.data() + offset);
    position_ += count;
    return true;
}

void QlixKZMIOStream::writeParts(const WritePart* parts, std::size_t count) {
    if (gather_ == nullptr) {
        QlixKZMStream::writeParts(parts, count);
        return;
    }
    // One part of each call is for the bytes that wait.
    constexpr std::size_t kMostOfThese = QlixGatherStream::kMostParts - 1;
    forgetSize();
    if (position_ != storedAt_ + stored_.size()) flush();
    for (std::size_t done = 0; done < count; done += kMostOfThese) {
        gatherStored(parts + done, std::min(kMostOfThese, count - done));
    }
}

/// Writes the bytes that wait and the parts behind them together.
void QlixKZMIOStream::gatherStored(const WritePart* parts, std::size_t count) {
    if (stored_.empty()) storedAt_ = position_;
    std::vector<WritePart> all;
    all.reserve(count + 1);
    all.push_back({stored_.data(), stored_.size()});
    all.insert(all.end(), parts, parts + count);
    try {
        moveStreamTo(storedAt_);
        gatherAll(all);
    } catch (...) {
        stored_.clear();
        throw;
    }
    stored_.clear();
    position_ = streamAt_;
}

void QlixKZMIOStream::gatherAll(std::vector<WritePart>& parts) {
    for (std::size_t next = 0;;) {
        while (next < parts.size() && parts[next].size == 0) ++next;
        if (next == parts.size()) return;
        streamAtKnown_ = false;
        std::uint64_t taken =
            writing([&] { return gather_->writeParts(&parts[next], parts.size() - next); });
        if (taken == 0) raise(ErrorCode::writeFailed);
        streamAt_ += taken;
        streamAtKnown_ = true;
        for (; taken > 0; ++next) {
            if (next == parts.size()) raise(ErrorCode::writeFailed);  // more than there was
            WritePart& part = parts[next];
            const std::uint64_t ofThis = std::min(taken, part.size);
            part.data = static_cast<const std::uint8_t*>(part.data) + ofThis;
            part.size -= ofThis;
            taken -= ofThis;
            if (part.size > 0) break;
        }
    }
}

void QlixKZMIOStream::seek(std::uint64_t position) { position_ = position; }

std::uint64_t QlixKZMIOStream::tell() const { return position_; }

void QlixKZMIOStream::truncate(std::uint64_t size) {
    flush();
    forgetSize();
    writing([&] { stream_->truncate(size); });
}

void QlixKZMIOStream::flush() {
    if (stored_.empty()) return;
    try {
        writeThrough(storedAt_, stored_.data(), stored_.size());
    } catch (...) {
        stored_.clear();
        throw;
    }
    stored_.clear();
}

void QlixKZMIOStream::moveStreamTo(std::uint64_t position) {
    if (streamAtKnown_ && streamAt_ == position) return;
    streamAtKnown_ = false;
    stream_->seek(static_cast<std::int64_t>(position), kSeekFromStart);
    streamAt_ = position;
    streamAtKnown_ = true;
}

void QlixKZMIOStream::writeThrough(std::uint64_t position, const std::uint8_t* bytes,
                                   std::uint64_t count) {
    moveStreamTo(position);
    while (count > 0) {
        streamAtKnown_ = false;
        const std::uint64_t taken = writing([&] { return stream_->write(bytes, count); });
        if (taken == 0 || taken > count) raise(ErrorCode::writeFailed);
        streamAt_ += taken;
        streamAtKnown_ = true;
        bytes += taken;
        count -= taken;
    }
}

std::uint64_t QlixKZMIOStream::measureSize() {
    flush();
    return sizeOf(*stream_);
}

}  // namespace qlix::kzm::impl
