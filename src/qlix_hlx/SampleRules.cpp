#include "qlix_hlx/SampleRules.h"

#include "qlix_hlx/ByteOrder.h"
#include "qlix_hlx/qlix_hlx.h"

namespace qlix::hlx {
namespace {

constexpr std::uint32_t kNalLengthSize = 4;
constexpr unsigned kForbiddenBit = 0x80;
constexpr unsigned kReferenceBits = 0x60;
constexpr unsigned kTypeBits = 0x1F;
constexpr unsigned kFirstPictureType = 1;
constexpr unsigned kKeyPictureType = 5;

bool mustEncryptVideo(std::uint32_t level, ByteView sample, std::uint32_t nalLengthSize) {
    if (level >= 2 || nalLengthSize != kNalLengthSize) return true;
    const PictureKind picture = judgePicture(sample);
    if (!picture.judged) return true;
    return level == 1 ? picture.isReference : picture.isKeyPicture;
}

}  // namespace

PictureKind judgePicture(ByteView sample) {
    PictureKind kind;
    std::size_t at = 0;
    while (at < sample.size) {
        if (sample.size - at < kNalLengthSize) return {};
        const std::uint32_t unitSize = loadU32(sample.data + at);
        at += kNalLengthSize;
        if (unitSize == 0 || unitSize > sample.size - at) return {};
        const unsigned header = sample.data[at];
        if ((header & kForbiddenBit) != 0) return {};
        const unsigned type = header & kTypeBits;
        if (type >= kFirstPictureType && type <= kKeyPictureType) {
            kind.isKeyPicture = kind.isKeyPicture || type == kKeyPictureType;
            kind.isReference = kind.isReference || (header & kReferenceBits) != 0;
        }
        at += unitSize;
    }
    kind.judged = at > 0;
    return kind;
}

bool mustEncrypt(const EncryptionFlags& flags, std::uint32_t trackClass, std::uint64_t timeMs,
                 ByteView sample, std::uint32_t nalLengthSize) {
    if (timeMs < flags.msUnencrypted) return false;
    switch (trackClass) {
        case HLX_TRACK_VIDEO:
            return flags.video != 0 && mustEncryptVideo(flags.videoLevel, sample, nalLengthSize);
        case HLX_TRACK_AUDIO:
            return flags.audio != 0;
        case HLX_TRACK_DATA:
            return flags.data != 0;
        default:
            return false;
    }
}

}  // namespace qlix::hlx
