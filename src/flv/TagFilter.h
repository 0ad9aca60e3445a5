#pragma once

#include <cstdint>
#include <vector>

namespace flv {

/// The tag types that are wanted, in the order in which they were added.
class TagFilter {
public:
    void add(std::uint8_t tagType) { types_.push_back(tagType); }
    const std::vector<std::uint8_t>& types() const { return types_; }

private:
    std::vector<std::uint8_t> types_;
};

}  // namespace flv
