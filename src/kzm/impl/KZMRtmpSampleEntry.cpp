#include "kzm/impl/KZMRtmpSampleEntry.h"

namespace qlix::kzm::impl {
namespace {

constexpr std::uint64_t kKindSize = 6;

}  // namespace

KZMRtmpSampleEntry::KZMRtmpSampleEntry(const BoxContext& context,
                                       const RtmpSampleDescriptor& descriptor)
    : KZMSampleEntry(context, std::make_unique<RtmpSampleDescriptor>(descriptor), kKindSize) {}

KZMRtmpSampleEntry::KZMRtmpSampleEntry(const BoxContext& context, const BoxHeader& header)
    : KZMSampleEntry(context, header, std::make_unique<RtmpSampleDescriptor>()) {}

void KZMRtmpSampleEntry::writeKind(FieldWriter& out) const {
    const auto& rtmp = static_cast<const RtmpSampleDescriptor&>(descriptor());
    out.u16(rtmp.hintTrackVersion);
    out.u16(rtmp.highestCompatibleVersion);
    out.u16(static_cast<std::uint16_t>(rtmp.maxPacketSize));
}

void KZMRtmpSampleEntry::readKind(EntryBlock& block) {
    auto& rtmp = static_cast<RtmpSampleDescriptor&>(heldDescriptor());
    rtmp.hintTrackVersion = block.u16();
    rtmp.highestCompatibleVersion = block.u16();
    rtmp.maxPacketSize = block.u16();
}

}  // namespace qlix::kzm::impl
