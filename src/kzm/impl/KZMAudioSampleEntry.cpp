#include "kzm/impl/KZMAudioSampleEntry.h"

namespace qlix::kzm::impl {
namespace {

constexpr std::uint64_t kKindSize = 20;

}  // namespace

KZMAudioSampleEntry::KZMAudioSampleEntry(const BoxContext& context,
                                         const AudioSampleDescriptor& descriptor)
    : KZMSampleEntry(context, std::make_unique<AudioSampleDescriptor>(descriptor), kKindSize) {}

KZMAudioSampleEntry::KZMAudioSampleEntry(const BoxContext& context, const BoxHeader& header)
    : KZMSampleEntry(context, header, std::make_unique<AudioSampleDescriptor>()) {}

void KZMAudioSampleEntry::writeKind(FieldWriter& out) const {
    const auto& audio = static_cast<const AudioSampleDescriptor&>(descriptor());
    out.zeros(8);
    out.u16(audio.channelCount);
    out.u16(audio.sampleSize);
    out.zeros(4);
    out.fixed16(static_cast<double>(audio.sampleRate));
}

void KZMAudioSampleEntry::readKind(EntryBlock& block) {
    auto& audio = static_cast<AudioSampleDescriptor&>(heldDescriptor());
    block.skip(8);
    audio.channelCount = block.u16();
    audio.sampleSize = block.u16();
    block.skip(4);
    audio.sampleRate = static_cast<float>(fromFixed16(block.u32()));
}

}  // namespace qlix::kzm::impl
