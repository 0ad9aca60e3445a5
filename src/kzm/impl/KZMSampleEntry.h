#pragma once

#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

#include "kzm/SampleDescriptor.h"
#include "kzm/impl/Box.h"

namespace qlix::kzm::impl {

/// Reads a block from its front. On purpose: past its end it gives zeros, so that a sample entry
/// that is cut short has zeros in the fields it lacks.
/// Pinned by SampleEntryTest.GivesZerosForWhatAShortVideoEntryLacks.
class EntryBlock {
public:
    explicit EntryBlock(std::vector<std::uint8_t> bytes) : bytes_(std::move(bytes)) {}

    std::uint16_t u16() { return static_cast<std::uint16_t>(take(2)); }
    std::uint32_t u32() { return take(4); }
    void skip(std::size_t count);
    /// All that was not read yet.
    std::vector<std::uint8_t> rest() const;

private:
    std::uint32_t take(int count);

    std::vector<std::uint8_t> bytes_;
    std::size_t at_ = 0;
};

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
