#include "kzm/impl/DataCache.h"

#include <algorithm>

#include "kzm/ErrorCode.h"
#include "kzm/impl/QlixKZMIStream.h"

namespace qlix::kzm::impl {

void DataCache::read(std::uint64_t position, std::uint8_t* buffer, std::uint64_t count) {
    if (count == 0) return;
    // On purpose: bytes in front of the first media data are refused although they could be read.
    // Pinned by ReaderTest.RefusesTheBytesOfASampleInFrontOfTheMediaData.
    if (position < base_) raise(ErrorCode::sampleUnreadable);
    std::uint64_t done = 0;
    if (count <= kPageSize) {
        done = takeFromPage(position, buffer, count);
        if (done < count) {
            loadPage(position + done);
            done += takeFromPage(position + done, buffer + done, count - done);
        }
    }
    if (done < count) {
        done += stream_.readAt(position + done, buffer + done, count - done);
    }
    if (done < count) raise(ErrorCode::sampleUnreadable);
}

std::uint64_t DataCache::takeFromPage(std::uint64_t position, std::uint8_t* buffer,
                                      std::uint64_t count) {
    if (position < pageStart_ || position - pageStart_ >= page_.size()) return 0;
    const std::uint64_t offset = position - pageStart_;
    const std::uint64_t taken = std::min<std::uint64_t>(count, page_.size() - offset);
    std::copy_n(page_.data() + offset, taken, buffer);
    return taken;
}

void DataCache::loadPage(std::uint64_t position) {
    pageStart_ = base_ + (position - base_) / kPageSize * kPageSize;
    page_.resize(kPageSize);
    try {
        page_.resize(static_cast<std::size_t>(stream_.readAt(pageStart_, page_.data(), kPageSize)));
    } catch (...) {
        page_.clear();
        throw;
    }
}

}  // namespace qlix::kzm::impl
