#pragma once

#include <cstdint>

namespace qlix::kzm {

/// Decides whether reading goes on after a tolerable fault of the input.
class WarningHandler {
public:
    virtual ~WarningHandler() = default;

    /// `code` is a number of the 3072 family. Answering false ends the reading with 1028; the
    /// base class always answers true.
    virtual bool warn(std::uint32_t code);
};

}  // namespace qlix::kzm
