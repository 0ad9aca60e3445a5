#include "kzspkgutil/FLVCodecs.h"

#include "kzs/base/ByteOrder.h"

namespace torvo::kzspkgutil {
namespace {

using kzs::fourCc;

struct Codec {
    std::uint32_t format;
    std::uint32_t headerLength;
};

Codec videoCodec(std::uint32_t codecId) {
    switch (codecId) {
        case kFLVJpeg:
            return {fourCc("jpeg"), 0};
        case kFLVH263:
            return {fourCc("H263"), 1};
        case kFLVVp6:
            return {fourCc("VP6F"), 2};
        case kFLVVp6WithAlpha:
            return {fourCc("VP6A"), 2};
        case kFLVAvc:
            return {fourCc("avc1"), 5};
        // On purpose: 3 and 6, the screen codecs, have none either.
        // Pinned by FLVCodecsTest.DescribesVideoByItsCodecId.
        default:
            return {0, 0};
    }
}

Codec audioCodec(std::uint32_t soundFormat) {
    switch (soundFormat) {
        // On purpose: plain and ADPCM sound (0, 1, 3) isn't MP3 and is described as MP3 all the
        // same. Pinned by FLVCodecsTest.DescribesPlainSoundAsMP3.
        case 0:
        case 1:
        case 2:
        case 3:
        case 14:
            return {fourCc(".mp3"), 1};
        case 4:
        case 5:
        case 6:
            return {fourCc("nmos"), 1};
        case 10:
            return {fourCc("mp4a"), 2};
        case 11:
            return {fourCc("spex"), 1};
        // On purpose: the one header byte of Opus stays with its samples.
        // Pinned by FLVCodecsTest.LeavesTheHeaderByteOfOpusInTheSample.
        case 12:
            return {fourCc("opus"), 0};
        default:
            return {0, 0};
    }
}

}  // namespace

std::uint32_t flvVideoFormat(std::uint32_t codecId) { return videoCodec(codecId).format; }

std::uint32_t flvAudioFormat(std::uint32_t soundFormat) { return audioCodec(soundFormat).format; }

std::uint32_t flvVideoHeaderLength(std::uint32_t codecId) {
    return videoCodec(codecId).headerLength;
}

std::uint32_t flvAudioHeaderLength(std::uint32_t soundFormat) {
    return audioCodec(soundFormat).headerLength;
}

}  // namespace torvo::kzspkgutil
