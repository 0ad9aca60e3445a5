#include "kzm/impl/MdiaBox.h"

#include <utility>

namespace qlix::kzm::impl {
namespace {

MediaHeader headerOf(const TrackSettings& settings) {
    MediaHeader out;
    out.creationDate = settings.creationDate;
    out.modificationDate = settings.modificationDate;
    out.timescale = settings.timescale;
    out.duration = settings.duration;
    out.language = settings.language;
    return out;
}

}  // namespace

MdiaBox::MdiaBox(const BoxContext& context, const TrackSettings& settings)
    : Box(context, fourCc("mdia")) {
    MdiaBox::addChild(makeBox<MdhdBox>(context, headerOf(settings)));
    MdiaBox::addChild(makeBox<HdlrBox>(context, settings.handler, settings.handlerName));
    MdiaBox::addChild(makeBox<MinfBox>(context, settings));
}

MdiaBox::MdiaBox(const BoxContext& context, const BoxHeader& header) : Box(context, header) {
    resetSize();
}

void MdiaBox::addChild(BoxPtr child) {
    Box* const added = child.get();
    Box::addChild(std::move(child));
    remember(mdhd_, added);
    remember(hdlr_, added);
    remember(minf_, added);
}

void MdiaBox::readChildren(RootBox* root, bool validate) {
    Box::readChildren(root, validate);
    StblBox* stbl = minf_ != nullptr ? minf_->stbl() : nullptr;
    if (hdlr_ == nullptr || stbl == nullptr || stbl->stsd() == nullptr) return;
    stbl->stsd()->setHandler(hdlr_->handler());
    stbl->stsd()->parse(root, validate);
}

}  // namespace qlix::kzm::impl
