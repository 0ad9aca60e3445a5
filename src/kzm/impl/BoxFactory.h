#pragma once

#include "kzm/impl/BoxHeader.h"
#include "kzm/impl/BoxPtr.h"

namespace qlix::kzm::impl {

/// Makes the object for a box that was found in a stream. It doesn't know parents: a box may stand
/// under any parent.
class BoxFactory {
public:
    virtual ~BoxFactory() = default;

    /// The stream stands behind the header. A code without a class of its own gives a plain Box.
    /// Throws what the constructor of the class throws. `allocator` may be null.
    virtual BoxPtr create(QlixKZMStream& stream, const BoxHeader& header, Allocator* allocator);

    /// The process-wide factory, made at first use.
    static BoxFactory& standard();
};

}  // namespace qlix::kzm::impl
