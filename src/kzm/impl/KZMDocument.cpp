#include "kzm/impl/KZMDocument.h"

#include "kzm/ErrorCode.h"
#include "kzm/impl/KZMTrack.h"
#include "kzm/impl/MoovBox.h"

namespace qlix::kzm::impl {

KZMDocument::KZMDocument(const BoxContext& context, BoxFactory* factory)
    : root_(context, factory), fragments_(root_) {}

KZMDocument::~KZMDocument() = default;

void KZMDocument::findMovie() {
    for (std::size_t i = 0; root_.moov() == nullptr; ++i) {
        if (root_.child(i) == nullptr) raise(ErrorCode::noMovie);
    }
    for (const TrakBox* trak : moov().tracks()) {
        tracks_.push_back(std::make_shared<KZMTrack>(moov(), *trak, fragments_));
    }
}

std::uint64_t KZMDocument::firstMediaData() {
    for (std::size_t i = 0; const Box* box = root_.child(i); ++i) {
        if (box->type() == fourCc("mdat")) return box->position();
    }
    return 0;
}

const MvhdBox& KZMDocument::movieHeader() const {
    if (moov().mvhd() == nullptr) raise(ErrorCode::noMovieHeader);
    return *moov().mvhd();
}

}  // namespace qlix::kzm::impl
