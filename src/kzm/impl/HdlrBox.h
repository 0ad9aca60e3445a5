#pragma once

#include <string_view>

#include "kzm/impl/FullBox.h"

namespace qlix::kzm::impl {

/// Handler: the kind of media of a track.
///
///   offset  size  field              written
///        0    12  full box header    'hdlr', version 0, flags 0
///       12     4  pre-defined        0
///       16     4  handler            'vide', 'soun', 'hint', 'meta'
///       20    12  reserved           0
///       32     n  name               as given, no terminator added
class HdlrBox final : public FullBox {
public:
    /// A terminator of the name is part of it.
    HdlrBox(const BoxContext& context, std::uint32_t handler, std::string_view name);
    HdlrBox(const BoxContext& context, const BoxHeader& header);

    void writeFields() override;
    /// Throws countTooLarge for a name above kSanityLimit bytes.
    void readFields() override;

    std::uint32_t handler() const { return handler_; }
    /// One that was read ends with a 0.
    std::string_view name() const { return {name_.data(), name_.size()}; }

private:
    std::uint32_t handler_ = 0;
    BoxVector<char> name_;
};

}  // namespace qlix::kzm::impl
