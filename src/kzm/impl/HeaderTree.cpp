#include "kzm/impl/HeaderTree.h"

#include <utility>

#include "kzm/impl/FtypBox.h"
#include "kzm/impl/TrexBox.h"

namespace qlix::kzm::impl {
namespace {

/// The major brand stands among them too.
constexpr std::uint32_t kCompatibleBrands[] = {fourCc("isom"), fourCc("mp42"), fourCc("m4v "),
                                               fourCc("kzm ")};

MovieHeader movieHeaderOf(const WriterConfiguration& configuration) {
    // On purpose: the configured duration isn't taken over, samples make it.
    // Pinned by SegmentEditsTest.TheHeadersOfAnEmptyFileCountNoRows.
    MovieHeader out;
    out.creationDate = configuration.creationDate;
    out.modificationDate = configuration.modificationDate;
    out.timescale = configuration.timescale;
    out.rate = configuration.rate;
    out.volume = configuration.volume;
    return out;
}

}  // namespace

HeaderTree::HeaderTree(QlixKZMStream& file, Allocator* allocator,
                       const WriterConfiguration& configuration)
    : image_(file), root_({&image_, allocator}) {
    const BoxContext context{&image_, allocator};
    auto ftyp = makeBox<FtypBox>(context);
    for (const std::uint32_t brand : kCompatibleBrands) ftyp->addCompatibleBrand(brand);
    root_.addChild(std::move(ftyp));
    root_.heldChild(0)->write();

    auto moov = makeBox<MoovBox>(context);
    moov_ = moov.get();
    root_.addChild(std::move(moov));
    moov_->addChild(makeBox<MvhdBox>(context, movieHeaderOf(configuration)));
    waitingMvex_ = makeBox<MvexBox>(context, std::uint64_t{0});
    mvex_ = waitingMvex_.get();
    write();
}

TrakBox& HeaderTree::addTrack(const TrackSettings& settings, bool isFragmented) {
    const BoxContext& context = root_.context();
    if (isFragmented) mvex_->addChild(makeBox<TrexBox>(context, trackCount() + 1));
    auto made = makeBox<TrakBox>(context, settings);
    TrakBox& trak = *made;
    moov_->addChild(std::move(made));
    moov_->mvhd()->setNextTrackId(trackCount() + 1);
    write();
    return trak;
}

void HeaderTree::place(bool isFragmented) {
    if (isFragmented) moov_->addChild(std::move(waitingMvex_));
    isPlaced_ = true;
    write();
}

void HeaderTree::setDuration(std::uint64_t duration) {
    moov_->mvhd()->setDuration(duration);
    mvex_->mehd()->setDuration(duration);
}

void HeaderTree::write() {
    moov_->write();
    image_.flush();
}

std::uint32_t HeaderTree::trackCount() const {
    return static_cast<std::uint32_t>(moov_->tracks().size());
}

std::uint64_t HeaderTree::end() const { return moov_->position() + moov_->size(); }

}  // namespace qlix::kzm::impl
