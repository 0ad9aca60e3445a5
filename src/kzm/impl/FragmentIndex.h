#pragma once

#include <cstddef>
#include <cstdint>
#include <unordered_map>
#include <vector>

namespace qlix::kzm::impl {

class MoofBox;
class RootBox;
class TrafBox;

/// Where the fragments of each track are: what iterators would find by walking all fragments.
///
/// Each fragment is looked at once, when it has been read. Reads on in the file when more is
/// asked for than was read.
class FragmentIndex {
public:
    /// A `traf` that has samples.
    struct Entry {
        TrafBox* traf = nullptr;
        std::uint32_t sequenceNumber = 1;  ///< of its `moof`
        std::uint64_t startTime = 0;       ///< decode time of the first sample
        std::uint64_t latestEnd = 0;       ///< the latest end of this entry and all before it
    };

    /// `root` outlives the index.
    explicit FragmentIndex(RootBox& root) : root_(root) {}

    /// The entry of a track; null beyond the last one in the file. A pointer holds until more is
    /// read.
    const Entry* entry(std::uint32_t trackId, std::size_t index);
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
    void take(TrafBox& traf, std::uint32_t sequenceNumber);

    RootBox& root_;
    std::size_t nextChild_ = 0;
    std::unordered_map<std::uint32_t, TrackFragments> tracks_;
};

}  // namespace qlix::kzm::impl
