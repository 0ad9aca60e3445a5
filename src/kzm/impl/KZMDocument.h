#pragma once

#include <memory>
#include <vector>

#include "kzm/impl/BoxPtr.h"
#include "kzm/impl/FragmentIndex.h"
#include "kzm/impl/KZMBase.h"
#include "kzm/impl/RootBox.h"

namespace qlix::kzm::impl {

class KZMTrack;
class MvhdBox;

/// A file as boxes. It has in memory the boxes that were read so far, without media data.
class KZMDocument : public KZMBase {
public:
    /// `factory` may be null: the standard one.
    KZMDocument(const BoxContext& context, BoxFactory* factory);
    ~KZMDocument() override;

    /// Reads boxes until the movie is there, and lists its tracks. Throws noMovie.
    void findMovie();
    /// Position of the first media data; 0 when the file has none. Reads on to find it.
    std::uint64_t firstMediaData();

    /// To be called behind findMovie.
    MoovBox& moov() const { return *root_.moov(); }
    /// Throws noMovieHeader.
    const MvhdBox& movieHeader() const;
    const std::vector<std::shared_ptr<const KZMTrack>>& tracks() const { return tracks_; }

private:
    RootBox root_;
    FragmentIndex fragments_;
    std::vector<std::shared_ptr<const KZMTrack>> tracks_;
};

}  // namespace qlix::kzm::impl
