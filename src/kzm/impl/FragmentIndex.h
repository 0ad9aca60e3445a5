#pragma once

#include <cstddef>
#include <cstdint>
#include <unordered_map>
#include <vector>

#include "kzm/impl/MoofBox.h"

namespace qlix::kzm::impl {

class RootBox;
class TrafBox;

/// Where the fragments of each track are: what iterators would find by walking all fragments.
///
/// Each fragment is looked at once, when it has been read; the file is read on when more is asked
/// for. The index holds the fragment that was read last, so that it is still whole for whoever
/// asked for it. All others are whole only while they are entered.
class FragmentIndex {
public:
    /// A `traf` that has samples.
    struct Entry {
        MoofBox* moof = nullptr;
        std::uint32_t child = 0;           ///< index of the `traf` in the `moof`
        std::uint32_t sequenceNumber = 1;  ///< of the `moof`
        std::uint64_t startTime = 0;       ///< decode time of the first sample
        std::uint64_t latestEnd = 0;       ///< the latest end of this entry and all before it
    };

    /// A `traf`, which is there as long as its fragment is held.
    struct Entered {
        MoofHold hold;
        TrafBox* traf = nullptr;
    };

    /// `root` outlives the index.
    explicit FragmentIndex(RootBox& root) : root_(root) {}

    /// The entry of a track; null beyond the last one in the file. A pointer holds until more is
    /// read.
    const Entry* entry(std::uint32_t trackId, std::size_t index);
    /// Reads the fragment of an entry again if need be. Throws what reading throws, childrenMissing
    /// when the file has other boxes there than the first time.
    Entered enter(const Entry& entry);

    /// Index of the first entry that holds `time`: starts at or before it and ends at or behind
    /// it. The count of entries when none in the file does.
    std::size_t firstHolding(std::uint32_t trackId, std::uint64_t time);
    /// Samples of a track in the fragments read so far; reads nothing on.
    std::uint64_t sampleCount(std::uint32_t trackId);

private:
    struct TrackFragments {
        std::vector<Entry> entries;
        std::uint64_t sampleCount = 0;
    };

    bool readOn();
    void catchUp();
    void take(MoofBox& moof);
    void take(const TrafBox& traf, Entry entry);

    RootBox& root_;
    std::size_t nextChild_ = 0;
    MoofHold newest_;
    std::unordered_map<std::uint32_t, TrackFragments> tracks_;
};

}  // namespace qlix::kzm::impl
