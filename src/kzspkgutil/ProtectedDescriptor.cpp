#include "kzspkgutil/ProtectedDescriptor.h"

namespace torvo::kzspkgutil {

std::uint32_t protectedFormatOf(std::uint32_t handler) {
    switch (handler) {
        case kzs::fourCc("soun"):
            return kEncryptedAudio;
        case kzs::fourCc("vide"):
            return kEncryptedVideo;
        default:
            return kEncryptedOther;
    }
}

}  // namespace torvo::kzspkgutil
