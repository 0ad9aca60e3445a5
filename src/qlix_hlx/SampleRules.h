#pragma once

#include <cstdint>

#include "qlix_hlx/ByteView.h"

namespace qlix::hlx {

/// What the user wants encrypted.
struct EncryptionFlags {
    std::uint32_t video = 0;
    std::uint32_t audio = 0;
    std::uint32_t data = 0;
    std::uint32_t videoLevel = 0;     ///< 0 key pictures, 1 pictures that others need, 2 all
    std::uint32_t msUnencrypted = 0;  ///< everything before this time stays in the clear
};

/// What the NAL units of a sample say about its picture.
struct PictureKind {
    bool judged = false;  ///< false: the bytes aren't NAL units, the rest means nothing
    bool isKeyPicture = false;
    bool isReference = false;
};

/// Reads `sample` as NAL units, each behind a length of 4 bytes. They have to fill it exactly, to
/// be at least one, and none may be empty or have its first bit set.
PictureKind judgePicture(ByteView sample);

/// True if the sample is to be encrypted. `trackClass` is 1 video, 2 audio, 4 data; a sample of
/// another class stays clear. `nalLengthSize` other than 4 leaves the sample unjudged. A video
/// sample whose bytes can't be judged is encrypted at every level: too much rather than too little.
bool mustEncrypt(const EncryptionFlags& flags, std::uint32_t trackClass, std::uint64_t timeMs,
                 ByteView sample, std::uint32_t nalLengthSize);

}  // namespace qlix::hlx
