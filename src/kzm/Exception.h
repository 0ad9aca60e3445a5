#pragma once

#include <cstdint>
#include <exception>

#include "kzm/ErrorCode.h"

namespace qlix::kzm {

/// A failure of the box library: a number and no text.
///
/// The number is one of ErrorCode, or what a caller's stream put in.
class Exception : public std::exception {
public:
    explicit Exception(std::uint32_t code) : code_(code) {}
    explicit Exception(ErrorCode code) : code_(numberOf(code)) {}

    std::uint32_t code() const noexcept { return code_; }
    bool is(ErrorCode code) const noexcept { return code_ == numberOf(code); }

private:
    std::uint32_t code_;
};

/// The number of the exception being handled, for operations that answer a number: an Exception
/// gives its code, std::bad_alloc 18, every other std::exception 19, anything else 1.
///
/// Only to be called inside a catch clause.
std::uint32_t numberOfCurrentException() noexcept;

}  // namespace qlix::kzm
