#pragma once

#include <cstddef>
#include <cstdint>

#include "kzm/impl/CttsBox.h"
#include "kzm/impl/StscBox.h"
#include "kzm/impl/SttsBox.h"

namespace qlix::kzm::impl {

/// Sample numbers from `first` up to, not including, `end`; they count from 1.
struct SampleRange {
    std::uint64_t first = 1;
    std::uint64_t end = 1;

    bool isEmpty() const { return first >= end; }
};

/// The samples of `rows` whose decode times lie in [start, end), in ticks of the media. Samples of
/// no duration that start exactly at `start` are among them.
SampleRange samplesBetween(const BoxVector<SttsRow>& rows, std::uint64_t start, std::uint64_t end);

/// Walks decode times. The rows outlive the cursors of this file.
class DecodeTimeCursor {
public:
    DecodeTimeCursor(const BoxVector<SttsRow>& rows, const SampleRange& range);

    bool isValid() const { return sample_ < end_; }
    void next();
    /// Ticks of the media.
    std::uint64_t time() const { return time_; }
    std::uint32_t sample() const { return static_cast<std::uint32_t>(sample_); }

private:
    void enterRow();

    const BoxVector<SttsRow>& rows_;
    std::size_t row_ = 0;
    std::uint64_t sample_;
    std::uint64_t end_;
    std::uint64_t rowEnd_ = 0;  // number behind the last sample of the row
    std::uint64_t time_ = 0;
};

/// Walks composition offsets. Behind the last row the last offset stands.
class CompositionCursor {
public:
    /// `rows` may be null: no sample has an offset. A start behind the table gives 0.
    CompositionCursor(const BoxVector<CttsRow>* rows, std::uint32_t sample);

    std::uint32_t offset() const { return offset_; }
    void next();

private:
    bool enterRow();

    const BoxVector<CttsRow>* rows_;
    std::size_t row_ = 0;
    std::uint32_t leftInRow_ = 0;
    std::uint32_t offset_ = 0;
};

/// Walks samples chunk by chunk.
class ChunkCursor {
public:
    /// Starts at the first sample of the chunk that has `sample`; not valid without rows.
    ChunkCursor(const BoxVector<StscRow>& rows, std::uint32_t sample);

    bool isValid() const { return row_ < rows_.size(); }
    void next();
    /// Moves to a later sample of the same chunk.
    void skipTo(std::uint32_t sample);
    std::uint32_t sample() const { return sample_; }
    /// From 1.
    std::uint32_t chunk() const { return chunk_; }
    /// From 1, as the file has it; not valid: 0.
    std::uint32_t descriptionIndex() const;

private:
    const BoxVector<StscRow>& rows_;
    std::size_t row_ = 0;
    std::uint32_t leftInChunk_ = 0;
    std::uint32_t leftInRun_ = 0;  // chunks, this one included
    std::uint32_t sample_ = 0;
    std::uint32_t chunk_ = 0;
};

}  // namespace qlix::kzm::impl
