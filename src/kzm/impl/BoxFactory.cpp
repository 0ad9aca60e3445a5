#include "kzm/impl/BoxFactory.h"

#include <algorithm>
#include <iterator>

#include "kzm/impl/Box.h"

namespace qlix::kzm::impl {
namespace {

BoxPtr create(const BoxContext& context, const BoxHeader& header) {
    return makeBox<Box>(context, header);
}

}  // namespace

BoxPtr BoxFactory::create(QlixKZMStream& stream, const BoxHeader& header, Allocator* allocator) {
    return impl::create({&stream, allocator}, header);
}

BoxFactory& BoxFactory::standard() {
    static BoxFactory factory;
    return factory;
}

}  // namespace qlix::kzm::impl
