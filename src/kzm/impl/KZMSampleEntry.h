#pragma once

#include <memory>

#include "kzm/SampleDescriptor.h"
#include "kzm/impl/Box.h"
#include "kzm/impl/EntryBlock.h"

namespace qlix::kzm::impl {

/// An entry of `stsd`: the description of samples, here of no special kind.
///
///   offset  size  field
///        0     8  box header: the format
///        8     6  reserved, 0
///       14     2  data reference index; written 1
///       16     n  codec data
class KZMSampleEntry : public Box {
public:
    /// Takes a copy of the description; the box type is its format.
    KZMSampleEntry(const BoxContext& context, const SampleDescriptor& descriptor);
    KZMSampleEntry(const BoxContext& context, const BoxHeader& header);

    void writeFields() override;
    /// Never fails for want of bytes.
    void readFields() override;

    /// Owned by the entry.
    virtual const SampleDescriptor& descriptor() const { return *descriptor_; }

    std::uint16_t dataReferenceIndex() const { return dataReferenceIndex_; }
    /// Where the description stands, and in what kind of track.
    void setPlace(std::uint32_t index, std::uint32_t handler);

protected:
    /// For derived kinds, whose fixed part has `kindSize` bytes.
    KZMSampleEntry(const BoxContext& context, std::unique_ptr<SampleDescriptor> descriptor,
                   std::uint64_t kindSize);
    KZMSampleEntry(const BoxContext& context, const BoxHeader& header,
                   std::unique_ptr<SampleDescriptor> descriptor);

    SampleDescriptor& heldDescriptor() { return *descriptor_; }
    /// The fixed part of the kind, between the data reference index and the codec data.
    virtual void writeKind(FieldWriter& out) const;
    virtual void readKind(EntryBlock& block);

private:
    std::uint16_t dataReferenceIndex_ = 1;
    std::unique_ptr<SampleDescriptor> descriptor_;
};

}  // namespace qlix::kzm::impl
