#pragma once

#include "kzm/impl/FullBox.h"

namespace qlix::kzm::impl {

/// Where the media data lies.
///
///   offset  size  field              written
///        0    12  full box header    size 12, 'url ', version 0, flags 1: in the same file
///       12     n  location           left out
///
/// The location of a box that was read is not looked at.
class UrlBox final : public FullBox {
public:
    explicit UrlBox(const BoxContext& context) : FullBox(context, fourCc("url "), 0, 1) {}
    UrlBox(const BoxContext& context, const BoxHeader& header) : FullBox(context, header) {}
};

}  // namespace qlix::kzm::impl
