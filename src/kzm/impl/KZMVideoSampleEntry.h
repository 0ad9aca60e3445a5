#pragma once

#include "kzm/impl/KZMSampleEntry.h"

namespace qlix::kzm::impl {

/// Description of video samples.
///
///   offset  size  field                        written
///        0    16  sample entry
///       16    16  reserved                     0
///       32     2  width
///       34     2  height
///       36     4  horizontal resolution 16.16
///       40     4  vertical resolution 16.16
///       44     4  reserved                     0
///       48     2  frame count
///       50    32  compressor name              a length of 10 and "AVC Coding" or "VP6 Coding",
///                                              zeros for other formats
///       82     2  depth
///       84     2  pre-defined                  0xFFFF
///       86     n  codec data
class KZMVideoSampleEntry final : public KZMSampleEntry {
public:
    KZMVideoSampleEntry(const BoxContext& context, const VideoSampleDescriptor& descriptor);
    KZMVideoSampleEntry(const BoxContext& context, const BoxHeader& header);

protected:
    void writeKind(FieldWriter& out) const override;
    void readKind(EntryBlock& block) override;
};

}  // namespace qlix::kzm::impl
