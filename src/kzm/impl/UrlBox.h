#pragma once

#include "kzm/impl/FullBox.h"

namespace qlix::kzm::impl {

/// Where the media data lies. Written as a full box header of 12 bytes with flags 1: in the same
/// file, so there is no text. A text in a box that was read is not looked at.
class UrlBox final : public FullBox {
public:
    explicit UrlBox(const BoxContext& context) : FullBox(context, fourCc("url "), 0, 1) {}
    UrlBox(const BoxContext& context, const BoxHeader& header) : FullBox(context, header) {}
};

}  // namespace qlix::kzm::impl
