#pragma once

#include <cstdint>
#include <exception>

namespace flv {

/// A failure of the FLV library, known by its code alone: the numbers of qlix_flv_error.h.
class Exception : public std::exception {
public:
    static constexpr std::uint32_t kStreamFailed = 5;
    static constexpr std::uint32_t kCorruptData = 8;
    static constexpr std::uint32_t kNoBackward = 9;

    explicit Exception(std::uint32_t code);
    ~Exception() override;

    std::uint32_t code() const { return code_; }
    const char* what() const noexcept override;

private:
    std::uint32_t code_;
};

/// Throws Exception for every result of the library but 0.
void check(std::uint32_t result);

}  // namespace flv
