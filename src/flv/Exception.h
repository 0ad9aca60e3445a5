#pragma once

#include <cstdint>
#include <exception>

#include "qlix_flv/qlix_flv_error.h"

namespace flv {

/// A failure of the FLV library, known by its code alone: the numbers of qlix_flv_error.h.
class Exception : public std::exception {
public:
    static constexpr std::uint32_t kStreamFailed = kQlixFLVStreamFailed;
    static constexpr std::uint32_t kCorruptData = kQlixFLVCorruptData;
    static constexpr std::uint32_t kNoBackward = kQlixFLVNoBackward;

    explicit Exception(std::uint32_t code);
    ~Exception() override;

    std::uint32_t code() const { return code_; }
    const char* what() const noexcept override;

private:
    std::uint32_t code_;
};

/// Throws Exception for every result of the library but kQlixFLVOk.
void check(std::uint32_t result);

}  // namespace flv
