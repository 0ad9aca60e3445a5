#pragma once

#include <map>

#include "kzm/impl/Box.h"

namespace qlix::kzm::impl {

class MoovBox;
class XMPDataBox;

/// The document: its children are the boxes at the top of the file. Never written as a box.
///
/// Reads lazily: `child` reads on until the index exists or the file ends.
class RootBox final : public Box {
public:
    /// `factory` replaces the standard one and outlives the root; null keeps the standard one.
    explicit RootBox(const BoxContext& context, BoxFactory* factory = nullptr);
    ~RootBox() override;

    /// Remembers a `moov` and an XMP box.
    void addChild(BoxPtr child) override;
    /// Null at the end of the file, then and ever after. Throws what reading throws: noMovie for
    /// a `moof` without any `moov`, secondMovie for two of them.
    Box* child(std::size_t index) override;

    /// The movie as far as it was found: with a `moof` in front it is known before it is a child.
    MoovBox* moov() const { return moov_; }
    /// Null when none was read yet.
    XMPDataBox* xmp() const { return xmp_; }

    /// Reads what is inside a child that was read before and dropped it. That gives no warnings,
    /// and doesn't count for the ends of tracks.
    void readAgain(Box& child);

    /// Decode time at which a track ends in the fragments read so far; 0 without any.
    std::uint64_t trackEnd(std::uint32_t trackId) const;
    void setTrackEnd(std::uint32_t trackId, std::uint64_t ticks);

private:
    bool readNext();
    void findMovieBehind(const BoxHeader& fragment);
    void takeMovie(const BoxHeader& header);
    BoxPtr load(const BoxHeader& header);

    BoxFactory& factory_;  // outlives the root
    MoovBox* moov_ = nullptr;
    XMPDataBox* xmp_ = nullptr;
    BoxPtr earlyMoov_;  // found behind a leading moof and not reached yet
    bool isAtEnd_ = false;
    bool isReadingAgain_ = false;
    std::map<std::uint32_t, std::uint64_t> trackEnds_;
};

}  // namespace qlix::kzm::impl
