#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace qlix::kzm::impl {

class QlixKZMIStream;

/// Reads the bytes of samples. Samples up to a page's size come from pages that are kept, so that
/// small ones that lie together cost one read of the file together. There are a few pages, since
/// the samples of different tracks come interleaved from places that may be far apart.
class DataCache {
public:
    static constexpr std::uint64_t kPageSize = 4096;
    static constexpr std::size_t kPageCount = 8;

    /// `stream` outlives the cache.
    explicit DataCache(QlixKZMIStream& stream) : stream_(stream) {}

    /// Pages count from `position`, and nothing in front of it is read.
    void setBase(std::uint64_t position) { base_ = position; }

    /// Throws sampleUnreadable for bytes in front of the base or behind the end of the file.
    void read(std::uint64_t position, std::uint8_t* buffer, std::uint64_t count);

private:
    struct Page {
        std::uint64_t start = 0;  // position in the file
        std::uint64_t lastUse = 0;
        std::vector<std::uint8_t> bytes;
    };

    Page& pageAt(std::uint64_t position);
    void load(Page& page, std::uint64_t start);

    QlixKZMIStream& stream_;
    std::uint64_t base_ = 0;
    std::array<Page, kPageCount> pages_;
    std::uint64_t uses_ = 0;
};

}  // namespace qlix::kzm::impl
