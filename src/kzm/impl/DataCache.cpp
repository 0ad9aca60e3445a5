#include "kzm/impl/DataCache.h"

#include <algorithm>

#include "kzm/ErrorCode.h"
#include "kzm/impl/QlixKZMIStream.h"

namespace qlix::kzm::impl {

void DataCache::read(std::uint64_t position, std::uint8_t* buffer, std::uint64_t count) {
    if (count == 0) return;
    // On purpose: bytes in front of the first media data are refused although they could be read.
    // Pinned by SampleDataTest.RefusesTheBytesOfASampleInFrontOfTheMediaData.
    if (position < base_) raise(ErrorCode::sampleUnreadable);
    std::uint64_t done = 0;
    while (count <= kPageSize && done < count) {
        const Page& page = pageAt(position + done);
        const std::uint64_t offset = position + done - page.start;
        if (offset >= page.bytes.size()) break;  // the file ends in front of it
        const std::uint64_t taken = std::min(count - done, page.bytes.size() - offset);
        std::copy_n(page.bytes.data() + offset, taken, buffer + done);
        done += taken;
    }
    if (done < count) {
        done += stream_.readAt(position + done, buffer + done, count - done);
    }
    if (done < count) raise(ErrorCode::sampleUnreadable);
}

// The page for a position; it takes the place of the one that was not used for the longest time.
DataCache::Page& DataCache::pageAt(std::uint64_t position) {
    const std::uint64_t start = base_ + (position - base_) / kPageSize * kPageSize;
    Page* chosen = &pages_[0];
    for (Page& page : pages_) {
        if (!page.bytes.empty() && page.start == start) {
            page.lastUse = ++uses_;
            return page;
        }
        if (page.lastUse < chosen->lastUse) chosen = &page;
    }
    load(*chosen, start);
    return *chosen;
}

void DataCache::load(Page& page, std::uint64_t start) {
    page.start = start;
    page.lastUse = ++uses_;
    page.bytes.resize(kPageSize);
    try {
        page.bytes.resize(
            static_cast<std::size_t>(stream_.readAt(start, page.bytes.data(), kPageSize)));
    } catch (...) {
        page.bytes.clear();
        throw;
    }
}

}  // namespace qlix::kzm::impl
