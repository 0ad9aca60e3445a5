#include "kzm/impl/RootBox.h"

#include <utility>

#include "kzm/impl/BoxFactory.h"
#include "kzm/impl/MoovBox.h"
#include "kzm/impl/UuidBox.h"

namespace qlix::kzm::impl {
namespace {

/// Sets a flag as long as it lives.
class Flagged {
public:
    explicit Flagged(bool& flag) : flag_(flag) { flag_ = true; }
    ~Flagged() { flag_ = false; }
    Flagged(const Flagged&) = delete;
    Flagged& operator=(const Flagged&) = delete;

private:
    bool& flag_;
};

}  // namespace

RootBox::RootBox(const BoxContext& context, BoxFactory* factory)
    : Box(context, fourCc("root")),
      factory_(factory != nullptr ? *factory : BoxFactory::standard()) {
    setSizes(0, 0);
}

// On purpose: a movie that was found early and never reached is destroyed here; one among the
// children goes with them. Pinned by RootBoxTest.DestroysAMovieThatItNeverReached.
RootBox::~RootBox() = default;

void RootBox::addChild(BoxPtr child) {
    Box* const added = child.get();
    Box::addChild(std::move(child));
    remember(moov_, added);
    remember(xmp_, added);
}

Box* RootBox::child(std::size_t index) {
    while (index >= childCount() && readNext()) {
    }
    return Box::child(index);
}

bool RootBox::readNext() {
    if (isAtEnd_) return false;
    stream().seek(position() + size());
    const std::optional<BoxHeader> header = readBoxHeader(stream(), nullptr);
    if (!header) {
        isAtEnd_ = true;
        return false;
    }
    if (header->type == fourCc("moof") && moov_ == nullptr) findMovieBehind(*header);
    if (header->type == fourCc("moov") && moov_ != nullptr) {
        takeMovie(*header);
    } else {
        addChild(load(*header));
    }
    return true;
}

/// A fragment can't be read without its movie, so that is looked for in the rest of the file.
void RootBox::findMovieBehind(const BoxHeader& fragment) {
    std::uint64_t next = fragment.end;
    for (;;) {
        stream().seek(next);
        const std::optional<BoxHeader> header = readBoxHeader(stream(), nullptr);
        if (!header) raise(ErrorCode::noMovie);
        if (header->type == fourCc("moov")) {
            earlyMoov_ = load(*header);
            moov_ = dynamic_cast<MoovBox*>(earlyMoov_.get());
            break;
        }
        next = header->end;
    }
    stream().seek(fragment.start + fragment.headerSize());
}

void RootBox::takeMovie(const BoxHeader& header) {
    // On purpose: the same box met again is the one that was found early, any other is a fault.
    // Pinned by RootBoxTest.RefusesASecondMovie.
    if (!earlyMoov_ || earlyMoov_->position() != header.start) raise(ErrorCode::secondMovie);
    addChild(std::move(earlyMoov_));
}

BoxPtr RootBox::load(const BoxHeader& header) {
    stream().seek(header.start + header.headerSize());
    BoxPtr box = factory_.create(stream(), header, allocator());
    box->loadTree(factory_);
    box->parse(this, true);
    return box;
}

void RootBox::readAgain(Box& child) {
    const QlixKZMStream::Quiet quiet(stream());
    const Flagged flagged(isReadingAgain_);
    child.loadTree(factory_);
    child.parse(this, true);
}

void RootBox::setTrackEnd(std::uint32_t trackId, std::uint64_t ticks) {
    if (!isReadingAgain_) trackEnds_[trackId] = ticks;
}

std::uint64_t RootBox::trackEnd(std::uint32_t trackId) const {
    const auto found = trackEnds_.find(trackId);
    return found == trackEnds_.end() ? 0 : found->second;
}

}  // namespace qlix::kzm::impl
