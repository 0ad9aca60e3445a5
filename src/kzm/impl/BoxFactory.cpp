#include "kzm/impl/BoxFactory.h"

#include <algorithm>
#include <iterator>

#include "kzm/impl/AfraBox.h"
#include "kzm/impl/FtypBox.h"
#include "kzm/impl/MdatBox.h"
#include "kzm/impl/MehdBox.h"
#include "kzm/impl/MfhdBox.h"
#include "kzm/impl/MoofBox.h"
#include "kzm/impl/MoovBox.h"
#include "kzm/impl/MvexBox.h"
#include "kzm/impl/NmhdBox.h"
#include "kzm/impl/SmhdBox.h"
#include "kzm/impl/TfhdBox.h"
#include "kzm/impl/TrafBox.h"
#include "kzm/impl/TrexBox.h"
#include "kzm/impl/TrunBox.h"
#include "kzm/impl/UrlBox.h"
#include "kzm/impl/UuidBox.h"
#include "kzm/impl/VmhdBox.h"

namespace qlix::kzm::impl {
namespace {

using Maker = BoxPtr (*)(const BoxContext& context, const BoxHeader& header);

template <class T>
BoxPtr make(const BoxContext& context, const BoxHeader& header) {
    return makeBox<T>(context, header);
}

BoxPtr makeUuid(const BoxContext& context, const BoxHeader& header) {
    return header.extendedType == kXmpType ? make<XMPDataBox>(context, header)
                                           : make<UuidBox>(context, header);
}

struct Row {
    std::uint32_t code;
    Maker maker;
};

/// In the order of the codes. On purpose without `hmhd`, `mfra`, `mfro`, `tfra` and `meta`: they
/// are opaque when read. Pinned by BoxFactoryTest.MakesPlainBoxesOfOtherCodes.
constexpr Row kRows[] = {
    {fourCc("afra"), make<AfraBox>}, {fourCc("co64"), make<Co64Box>},
    {fourCc("ctts"), make<CttsBox>}, {fourCc("dinf"), make<DinfBox>},
    {fourCc("dref"), make<DrefBox>}, {fourCc("edts"), make<EdtsBox>},
    {fourCc("elst"), make<ElstBox>}, {fourCc("ftyp"), make<FtypBox>},
    {fourCc("hdlr"), make<HdlrBox>}, {fourCc("hint"), make<HintBox>},
    {fourCc("mdat"), make<MdatBox>}, {fourCc("mdhd"), make<MdhdBox>},
    {fourCc("mdia"), make<MdiaBox>}, {fourCc("mehd"), make<MehdBox>},
    {fourCc("mfhd"), make<MfhdBox>}, {fourCc("minf"), make<MinfBox>},
    {fourCc("moof"), make<MoofBox>}, {fourCc("moov"), make<MoovBox>},
    {fourCc("mvex"), make<MvexBox>}, {fourCc("mvhd"), make<MvhdBox>},
    {fourCc("nmhd"), make<NmhdBox>}, {fourCc("sdtp"), make<SdtpBox>},
    {fourCc("skip"), make<SkipBox>}, {fourCc("smhd"), make<SmhdBox>},
    {fourCc("stbl"), make<StblBox>}, {fourCc("stco"), make<StcoBox>},
    {fourCc("stsc"), make<StscBox>}, {fourCc("stsd"), make<StsdBox>},
    {fourCc("stss"), make<StssBox>}, {fourCc("stsz"), make<StszBox>},
    {fourCc("stts"), make<SttsBox>}, {fourCc("tfhd"), make<TfhdBox>},
    {fourCc("tkhd"), make<TkhdBox>}, {fourCc("traf"), make<TrafBox>},
    {fourCc("trak"), make<TrakBox>}, {fourCc("tref"), make<TrefBox>},
    {fourCc("trex"), make<TrexBox>}, {fourCc("trun"), make<TrunBox>},
    {fourCc("url "), make<UrlBox>},  {fourCc("uuid"), makeUuid},
    {fourCc("vmhd"), make<VmhdBox>},
};

}  // namespace

BoxPtr BoxFactory::create(QlixKZMStream& stream, const BoxHeader& header, Allocator* allocator) {
    const BoxContext context{&stream, allocator};
    const auto* found = std::find_if(std::begin(kRows), std::end(kRows),
                                     [&header](const Row& row) { return row.code == header.type; });
    return found == std::end(kRows) ? make<Box>(context, header) : found->maker(context, header);
}

BoxFactory& BoxFactory::standard() {
    static BoxFactory factory;
    return factory;
}

}  // namespace qlix::kzm::impl
