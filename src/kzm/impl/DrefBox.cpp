#include "kzm/impl/DrefBox.h"

#include "kzm/impl/UrlBox.h"

namespace qlix::kzm::impl {
namespace {

constexpr std::uint64_t kFixedSize = kFullBoxHeaderSize + 4;

}  // namespace

DrefBox::DrefBox(const BoxContext& context) : FullBox(context, fourCc("dref"), 0, 0) {
    setFixedSize(kFixedSize);
    addChild(makeBox<UrlBox>(context));
}

DrefBox::DrefBox(const BoxContext& context, const BoxHeader& header) : FullBox(context, header) {
    if (version() > 1) raise(ErrorCode::unsupportedVersion);
    setFixedSize(kFixedSize);
}

void DrefBox::writeFields() {
    FieldWriter out;
    out.u32(1);
    put(out);
}

}  // namespace qlix::kzm::impl
