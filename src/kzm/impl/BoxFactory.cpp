#include "kzm/impl/BoxFactory.h"

#include <algorithm>
#include <iterator>

#include "kzm/impl/AfraBox.h"
#include "kzm/impl/Box.h"
#include "kzm/impl/MdatBox.h"
#include "kzm/impl/MehdBox.h"
#include "kzm/impl/MfhdBox.h"
#include "kzm/impl/MoofBox.h"
#include "kzm/impl/MvexBox.h"
#include "kzm/impl/TfhdBox.h"
#include "kzm/impl/TrafBox.h"
#include "kzm/impl/TrexBox.h"
#include "kzm/impl/TrunBox.h"

namespace qlix::kzm::impl {
namespace {

using Maker = BoxPtr (*)(const BoxContext& context, const BoxHeader& header);

template <class T>
BoxPtr make(const BoxContext& context, const BoxHeader& header) {
    return makeBox<T>(context, header);
}

struct Row {
    std::uint32_t code;
    Maker make;
};

constexpr Row kRows[] = {
    {fourCc("afra"), make<AfraBox>}, {fourCc("mdat"), make<MdatBox>},
    {fourCc("mehd"), make<MehdBox>}, {fourCc("mfhd"), make<MfhdBox>},
    {fourCc("moof"), make<MoofBox>}, {fourCc("mvex"), make<MvexBox>},
    {fourCc("tfhd"), make<TfhdBox>}, {fourCc("traf"), make<TrafBox>},
    {fourCc("trex"), make<TrexBox>}, {fourCc("trun"), make<TrunBox>},
};

}  // namespace

BoxPtr BoxFactory::create(QlixKZMStream& stream, const BoxHeader& header, Allocator* allocator) {
    const BoxContext context{&stream, allocator};
    const auto* found = std::find_if(std::begin(kRows), std::end(kRows),
                                     [&](const Row& row) { return row.code == header.type; });
    return found == std::end(kRows) ? makeBox<Box>(context, header) : found->make(context, header);
}

BoxFactory& BoxFactory::standard() {
    static BoxFactory factory;
    return factory;
}

}  // namespace qlix::kzm::impl
