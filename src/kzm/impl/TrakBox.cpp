#include "kzm/impl/TrakBox.h"

#include <utility>

#include "kzm/impl/Rescale.h"

namespace qlix::kzm::impl {
namespace {

TrackHeader headerOf(const TrackSettings& settings) {
    TrackHeader out;
    out.creationDate = settings.creationDate;
    out.modificationDate = settings.modificationDate;
    out.trackId = settings.trackId;
    out.duration = rescale(settings.duration, settings.timescale, settings.movieTimescale);
    out.volume = settings.volume;
    out.width = settings.width;
    out.height = settings.height;
    return out;
}

}  // namespace

TrakBox::TrakBox(const BoxContext& context, const TrackSettings& settings)
    : Box(context, fourCc("trak")) {
    TrakBox::addChild(makeBox<TkhdBox>(context, settings.trackFlags, headerOf(settings)));
    if (settings.handler == fourCc("hint")) {
        TrakBox::addChild(makeBox<TrefBox>(context, settings.hintedTrackIds));
    }
    TrakBox::addChild(makeBox<MdiaBox>(context, settings));
    TrakBox::addChild(makeBox<EdtsBox>(context, settings.maxEdits));
}

TrakBox::TrakBox(const BoxContext& context, const BoxHeader& header) : Box(context, header) {
    resetSize();
}

void TrakBox::addChild(BoxPtr child) {
    Box* const added = child.get();
    Box::addChild(std::move(child));
    remember(tkhd_, added);
    remember(tref_, added);
    remember(mdia_, added);
    remember(edts_, added);
    takeHandler();
}

void TrakBox::readChildren(RootBox* root, bool validate) {
    Box::readChildren(root, validate);
    takeHandler();
}

void TrakBox::takeHandler() {
    if (hdlr() != nullptr) handler_ = hdlr()->handler();
}

StblBox* TrakBox::stbl() const {
    MinfBox* minf = mdia_ != nullptr ? mdia_->minf() : nullptr;
    return minf != nullptr ? minf->stbl() : nullptr;
}

StsdBox* TrakBox::stsd() const { return stbl() != nullptr ? stbl()->stsd() : nullptr; }

}  // namespace qlix::kzm::impl
