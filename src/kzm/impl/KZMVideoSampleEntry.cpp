#include "kzm/impl/KZMVideoSampleEntry.h"

#include <string_view>

namespace qlix::kzm::impl {
namespace {

constexpr std::uint64_t kKindSize = 70;
constexpr std::size_t kNameSize = 32;

/// On purpose: these words whatever made the video.
/// Pinned by SampleEntryTest.NamesTheCompressorByFormat.
std::string_view compressorName(std::uint32_t format) {
    switch (format) {
        case fourCc("H264"):
        case fourCc("h264"):
        case fourCc("avc1"):
            return "AVC Coding";
        case fourCc("VP6A"):
        case fourCc("VP6F"):
            return "VP6 Coding";
        default:
            return {};
    }
}

void putCompressorName(FieldWriter& out, std::uint32_t format) {
    const std::string_view name = compressorName(format);
    if (name.empty()) {
        out.zeros(kNameSize);
        return;
    }
    out.u8(static_cast<std::uint8_t>(name.size()));
    out.text(name);
    out.zeros(kNameSize - 1 - name.size());
}

}  // namespace

KZMVideoSampleEntry::KZMVideoSampleEntry(const BoxContext& context,
                                         const VideoSampleDescriptor& descriptor)
    : KZMSampleEntry(context, std::make_unique<VideoSampleDescriptor>(descriptor), kKindSize) {}

KZMVideoSampleEntry::KZMVideoSampleEntry(const BoxContext& context, const BoxHeader& header)
    : KZMSampleEntry(context, header, std::make_unique<VideoSampleDescriptor>()) {}

void KZMVideoSampleEntry::writeKind(FieldWriter& out) const {
    const auto& video = static_cast<const VideoSampleDescriptor&>(descriptor());
    out.zeros(16);
    out.u16(static_cast<std::uint16_t>(video.width));
    out.u16(static_cast<std::uint16_t>(video.height));
    out.fixed16(static_cast<double>(video.horizontalResolution));
    out.fixed16(static_cast<double>(video.verticalResolution));
    out.zeros(4);
    out.u16(static_cast<std::uint16_t>(video.frameCount));
    putCompressorName(out, video.format);
    out.u16(static_cast<std::uint16_t>(video.depth));
    out.u16(0xFFFF);
}

void KZMVideoSampleEntry::readKind(EntryBlock& block) {
    auto& video = static_cast<VideoSampleDescriptor&>(heldDescriptor());
    block.skip(16);
    video.width = block.u16();
    video.height = block.u16();
    video.horizontalResolution = static_cast<float>(fromFixed16(block.u32()));
    video.verticalResolution = static_cast<float>(fromFixed16(block.u32()));
    block.skip(4);
    video.frameCount = block.u16();
    block.skip(kNameSize);
    video.depth = block.u16();
    block.skip(2);
}

}  // namespace qlix::kzm::impl
