#pragma once

#include <cstdint>
#include <vector>

#include "kzm/WriterRecords.h"
#include "kzm/impl/FileImage.h"
#include "kzm/impl/MoovBox.h"
#include "kzm/impl/MvexBox.h"
#include "kzm/impl/RootBox.h"
#include "kzm/impl/TrackSettings.h"

namespace qlix::kzm::impl {

/// The start of a file that is being written: `ftyp`, and the `moov`, which grows until it is
/// placed and is rewritten where it stands from then on.
///
///   offset  size  box
///        0    32  'ftyp'
///       32     .  'moov'
class HeaderTree {
public:
    /// Writes `ftyp` and a `moov` with its header. `file` outlives the tree, `allocator` too or is
    /// null.
    HeaderTree(QlixKZMStream& file, Allocator* allocator, const WriterConfiguration& configuration);

    /// Adds a track behind those there and writes the `moov`. With `isFragmented` the track gets
    /// its defaults for fragments too.
    TrakBox& addTrack(const TrackSettings& settings, bool isFragmented);
    /// Ends the growth: with `isFragmented` the `mvex` becomes the last child. Writes the `moov`.
    void place(bool isFragmented);
    bool isPlaced() const { return isPlaced_; }

    /// In ticks of the movie.
    void setDuration(std::uint64_t duration);
    /// Writes the `moov`; what stands in the file already only where it changed.
    void write();

    std::uint32_t trackCount() const;
    /// Position behind the `moov`.
    std::uint64_t end() const;

private:
    FileImage image_;
    RootBox root_;
    MoovBox* moov_ = nullptr;        // a child of the root
    BoxPtrOf<MvexBox> waitingMvex_;  // until it becomes a child of the `moov`
    MvexBox* mvex_ = nullptr;
    bool isPlaced_ = false;
};

}  // namespace qlix::kzm::impl
