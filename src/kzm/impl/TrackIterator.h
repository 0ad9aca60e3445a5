#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include "kzm/Sample.h"
#include "kzm/impl/ChunkOffsetIterator.h"
#include "kzm/impl/SampleSizeIterator.h"
#include "kzm/impl/SampleTime.h"
#include "kzm/impl/SyncSampleIterator.h"
#include "kzm/impl/TableCursors.h"

namespace qlix::kzm::impl {

/// Walks the samples of a track by its tables, in decode order, with one step of every cursor a
/// sample. It knows nothing of edit lists.
///
/// Ends where the range does, and before that where a table runs out or names a description that
/// isn't there.
class TrackIterator final : public SampleIterator {
public:
    /// The document outlives the iterator. Throws noSampleTables.
    TrackIterator(std::shared_ptr<const KZMTrack> track, const TimeRange& range);
    ~TrackIterator() override;

    bool hasSample() override;
    Sample next() override;

private:
    void place(const SampleRange& range);
    void step();

    Track handle_;
    const KZMTrack& track_;
    std::optional<DecodeTimeCursor> times_;
    std::optional<CompositionCursor> compositions_;
    std::optional<ChunkCursor> chunks_;
    std::unique_ptr<ChunkOffsetIterator> chunkOffsets_;
    std::unique_ptr<SampleSizeIterator> sizes_;
    std::unique_ptr<SyncSampleIterator> syncs_;
    const std::uint8_t* dependency_ = nullptr;
    const std::uint8_t* dependencyEnd_ = nullptr;
    std::uint64_t fileOffset_ = 0;
    std::uint32_t chunk_ = 0;
};

}  // namespace qlix::kzm::impl
