#pragma once

#include "kzm/impl/KZMSampleEntry.h"

namespace qlix::kzm::impl {

/// Description of hint samples.
///
///   offset  size  field
///        0    16  sample entry
///       16     2  hint track version
///       18     2  highest compatible version
///       20     2  largest packet, bytes
///       22     n  codec data: a list of boxes
class KZMRtmpSampleEntry final : public KZMSampleEntry {
public:
    KZMRtmpSampleEntry(const BoxContext& context, const RtmpSampleDescriptor& descriptor);
    KZMRtmpSampleEntry(const BoxContext& context, const BoxHeader& header);

protected:
    void writeKind(FieldWriter& out) const override;
    void readKind(EntryBlock& block) override;
};

}  // namespace qlix::kzm::impl
