#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace qlix::kzm::impl {

/// Reads a block from its front. On purpose: past its end it gives zeros, so that a sample entry
/// that is cut short has zeros in the fields it lacks.
/// Pinned by SampleEntryTest.GivesZerosForWhatAShortVideoEntryLacks.
class EntryBlock {
public:
    explicit EntryBlock(std::vector<std::uint8_t> bytes) : bytes_(std::move(bytes)) {}

    std::uint16_t u16();
    std::uint32_t u32();
    void skip(std::size_t count);
    /// All that was not read yet.
    std::vector<std::uint8_t> rest() const;

private:
    template <std::size_t Size>
    std::array<std::uint8_t, Size> take();

    std::vector<std::uint8_t> bytes_;
    std::size_t at_ = 0;
};

}  // namespace qlix::kzm::impl
