#pragma once

#include "kzm/impl/KZMSampleEntry.h"
#include "kzm/impl/SkipBox.h"
#include "kzm/impl/TrackSettings.h"
#include "kzm/impl/VariableSizeBox.h"

namespace qlix::kzm::impl {

/// Sample descriptions. A box for writing has its size from the start: descriptions are put into
/// the front of a filler that it is made with.
///
///   offset  size  field
///        0    12  full box header: 'stsd', version 0, flags 0
///       12     4  entry count
///       16     .  entries
///        .     .  'skip' over the room that is left; 1 to 7 bytes of it stay zero without one
class StsdBox final : public VariableSizeBox {
public:
    /// Sets room for the planned descriptions aside.
    StsdBox(const BoxContext& context, const TrackSettings& settings);
    StsdBox(const BoxContext& context, const BoxHeader& header);

    void writeFields() override;
    /// The entry count.
    void updateFields() override;
    /// Without a handler only the count is read, since the handler decides the entry classes.
    /// Throws tableTooLarge for a count above kSanityLimit; a count beyond the entries found gives
    /// warnDescriptionCount and is corrected.
    void readFields() override;

    std::uint32_t handler() const { return handler_; }
    void setHandler(std::uint32_t handler) { handler_ = handler; }

    std::uint32_t entryCount() const { return entryCount_; }
    /// The entries that were made, in order; they are children. 'skip' and 'free' boxes among
    /// them don't count.
    const std::vector<KZMSampleEntry*>& entries() const { return entries_; }
    /// The description with a 1-based index; null if there is none.
    const SampleDescriptor* description(std::uint32_t index) const;
    /// Length of the longest codec data, 0 without descriptions.
    std::size_t largestDataSize() const;

    /// Adds a copy of a description and returns its 1-based index. The format may be stored under
    /// another code. The box is to be written again.
    ///
    /// Throws descriptionTooLarge when the room left is too small, secondRtmpDescription for a
    /// second one of format 'rtmp'.
    std::uint32_t addDescription(const SampleDescriptor& descriptor);

private:
    void makeRoom(std::uint64_t count);
    void readEntries(FieldReader& in);
    BoxPtrOf<KZMSampleEntry> makeEntry(const BoxHeader& header) const;

    std::uint32_t handler_ = 0;
    std::uint32_t entryCount_ = 0;
    std::uint32_t countInFile_ = 0;
    std::vector<KZMSampleEntry*> entries_;
    SkipBox* filler_ = nullptr;   // the last child
    std::uint64_t leftover_ = 0;  // bytes at the end that were too few for a filler
};

}  // namespace qlix::kzm::impl
