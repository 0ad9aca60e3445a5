#pragma once

#include "kzm/impl/FullBox.h"

namespace qlix::kzm::impl {

/// A full box whose payload the caller brings.
///
///   offset  size  field
///        0    12  full box header: version 0, flags 0
///       12     n  payload
class UnknownFullBox final : public FullBox {
public:
    /// Gives a payload back; called once, when the box goes.
    using Release = void (*)(void* context, const std::uint8_t* payload);

    /// `payload` stays the caller's until `release` is called (null: never). With a null payload
    /// `length` counts as 0.
    UnknownFullBox(const BoxContext& context, std::uint32_t type, const std::uint8_t* payload,
                   std::uint64_t length, Release release, void* releaseContext);
    ~UnknownFullBox() override;

    void writeFields() override;

private:
    const std::uint8_t* payload_;
    std::uint64_t length_;
    Release release_;
    void* releaseContext_;
};

}  // namespace qlix::kzm::impl
