#pragma once

#include <vector>

#include "kzm/impl/FullBox.h"

namespace qlix::kzm::impl {

/// One row of a run, as held in memory. Times are ticks of the track.
struct TrunSample {
    std::uint64_t decodeTime = 0;
    std::uint32_t duration = 0;
    std::uint32_t size = 0;  ///< bytes
    std::uint32_t flags = 0;
    std::uint32_t compositionOffset = 0;
    std::uint64_t offset = 0;  ///< position of the first byte
};

/// A sample on its way into a fragment.
struct FragmentSample {
    std::uint64_t decodeTime = 0;  ///< ticks of the track
    std::uint32_t size = 0;        ///< bytes
    std::uint32_t compositionOffset = 0;
    std::uint32_t kind = 0;    ///< as in KZMSample
    std::uint64_t offset = 0;  ///< position of the first byte, counted like the base data offset
    std::uint32_t descriptionIndex = 0;
};

/// What a run takes over from its `traf` before it is read.
struct RunDefaults {
    std::uint64_t baseOffset = 0;  ///< what a data offset is added to
    std::uint64_t nextOffset = 0;  ///< where the data goes on without a data offset
    std::uint32_t duration = 0;
    std::uint32_t size = 0;
    std::uint32_t flags = 0;
};

/// Track fragment run: samples of one track whose bytes follow each other.
///
///   offset  size  field
///        0    12  full box header: 'trun', version 0, flags tell what follows
///       12     4  sample count
///       ..     4  data offset, from the base data offset    (flag 0x001)
///       ..     4  flags of the first sample                  (flag 0x004), written as 0
///       ..  4..16  for each sample:
///                 duration            (flag 0x100)
///                 size                (flag 0x200)
///                 flags               (flag 0x400)
///                 composition offset  (flag 0x800)
///
/// The library's own runs have flags 0xF01: 20 bytes and 16 for each sample.
class TrunBox final : public FullBox {
public:
    static constexpr std::uint32_t kDataOffsetPresent = 0x001;
    static constexpr std::uint32_t kFirstFlagsPresent = 0x004;
    static constexpr std::uint32_t kDurationPresent = 0x100;
    static constexpr std::uint32_t kSizePresent = 0x200;
    static constexpr std::uint32_t kFlagsPresent = 0x400;
    static constexpr std::uint32_t kCompositionPresent = 0x800;
    static constexpr std::uint32_t kWrittenFlags =
        kDataOffsetPresent | kDurationPresent | kSizePresent | kFlagsPresent | kCompositionPresent;
    /// Flags of a sync sample: it depends on no other.
    static constexpr std::uint32_t kSyncFlags = 0x02000000;
    /// Flags of all others: depends on others, and is no sync sample.
    static constexpr std::uint32_t kOtherFlags = 0x01010000;

    /// An empty run whose first sample lies `dataOffset` bytes behind `baseOffset`.
    TrunBox(const BoxContext& context, std::uint64_t baseOffset, std::uint32_t dataOffset,
            std::uint32_t flags = kWrittenFlags);
    TrunBox(const BoxContext& context, const BoxHeader& header);

    /// Adds a sample whose bytes start where those of the last one end; refuses any other and
    /// answers false. The duration of the row before is settled by the new sample's time, that of
    /// the new row is provisional.
    bool append(const FragmentSample& sample);
    void setLastDuration(std::uint32_t duration) { samples_.back().duration = duration; }
    /// Bytes that each sample takes in the box.
    std::uint32_t bytesPerSample() const;
    /// Position of the duration field of the last row, once the box is placed.
    std::uint64_t lastDurationPosition() const;

    /// To be called before the fields are read.
    void setDefaults(const RunDefaults& defaults) { defaults_ = defaults; }
    /// Throws boxTooShort; runTooLarge for a count that no box can hold.
    void readFields() override;
    /// Gives the samples their decode times, the first one `start`. Returns the end of the last.
    std::uint64_t setStartTime(std::uint64_t start);

    /// Whether rows of its own would take no more memory than the run itself.
    bool isWorthRows() const {
        return !isUniform_ || std::uint64_t{count_} * sizeof(TrunSample) <= sizeof(TrunBox);
    }
    /// Takes over copies of all samples of runs that lie behind this one, in order. Together they
    /// must have less than 2^32 samples. Only for runs that were read: the box in the file stays
    /// what it is.
    void takeSamplesOf(const std::vector<const TrunBox*>& runs);

    std::uint32_t sampleCount() const { return count_; }
    /// `index` must be below the count.
    TrunSample sample(std::uint32_t index) const;
    TrunSample lastSample() const { return sample(count_ - 1); }
    /// Decode time plus duration of the last sample; the start time of an empty run.
    std::uint64_t endTime() const { return endTime_; }
    /// Position behind the data of the last sample.
    std::uint64_t dataEnd() const { return dataEnd_; }
    /// Index of the first sample whose decode time is at or above `time`; the sample count if the
    /// last one lies below, as always in an empty run.
    std::uint32_t firstAtOrAfter(std::uint64_t time) const;

    /// Writes the whole box, fields and all, by one write.
    void write() override;
    void writeHeader() override;
    void writeFields() override;

private:
    std::uint64_t fixedBytes() const;
    bool has(std::uint32_t flag) const { return (flags() & flag) != 0; }
    std::uint8_t* storeHeader(std::uint8_t* out) const;
    std::uint8_t* storeFields(std::uint8_t* out) const;
    void readRows(FieldReader& in);

    RunDefaults defaults_;
    std::uint32_t count_ = 0;
    std::uint32_t dataOffset_ = 0;
    std::uint32_t firstFlags_ = 0;
    std::uint64_t lastDecodeTime_ = 0;
    std::uint64_t startTime_ = 0;
    std::uint64_t endTime_ = 0;
    std::uint64_t dataStart_ = 0;
    std::uint64_t dataEnd_ = 0;
    // One row for each sample; none in a run read without fields for each sample, however many
    // samples it counts: they are all alike.
    BoxVector<TrunSample> samples_;
    bool isUniform_ = false;
};

}  // namespace qlix::kzm::impl
