#pragma once

#include "kzm/impl/KZMSampleEntry.h"

namespace qlix::kzm::impl {

/// Description of sound samples.
///
///   offset  size  field               written
///        0    16  sample entry
///       16     8  reserved            0
///       24     2  channel count
///       26     2  sample size, bits
///       28     4  reserved            0
///       32     4  sample rate 16.16
///       36     n  codec data
class KZMAudioSampleEntry final : public KZMSampleEntry {
public:
    KZMAudioSampleEntry(const BoxContext& context, const AudioSampleDescriptor& descriptor);
    KZMAudioSampleEntry(const BoxContext& context, const BoxHeader& header);

protected:
    void writeKind(FieldWriter& out) const override;
    void readKind(EntryBlock& block) override;
};

}  // namespace qlix::kzm::impl
