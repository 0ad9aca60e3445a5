#pragma once

#include <cstdint>
#include <vector>

namespace qlix::kzm::impl {

class QlixKZMIStream;

/// Reads the bytes of samples. Samples up to a page's size come from a page that is kept, so that
/// small ones that follow each other cost one read of the file together.
class DataCache {
public:
    static constexpr std::uint64_t kPageSize = 4096;

    /// `stream` outlives the cache.
    explicit DataCache(QlixKZMIStream& stream) : stream_(stream) {}

    /// Pages count from `position`, and nothing in front of it is read.
    void setBase(std::uint64_t position) { base_ = position; }

    /// Throws sampleUnreadable for bytes in front of the base or behind the end of the file.
    void read(std::uint64_t position, std::uint8_t* buffer, std::uint64_t count);

private:
    std::uint64_t takeFromPage(std::uint64_t position, std::uint8_t* buffer, std::uint64_t count);
    void loadPage(std::uint64_t position);

    QlixKZMIStream& stream_;
    std::uint64_t base_ = 0;
    std::vector<std::uint8_t> page_;
    std::uint64_t pageStart_ = 0;
};

}  // namespace qlix::kzm::impl
