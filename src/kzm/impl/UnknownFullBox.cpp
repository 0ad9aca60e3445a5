#include "kzm/impl/UnknownFullBox.h"

namespace qlix::kzm::impl {

UnknownFullBox::UnknownFullBox(const BoxContext& context, std::uint32_t type,
                               const std::uint8_t* payload, std::uint64_t length, Release release,
                               void* releaseContext)
    : FullBox(context, type, 0, 0),
      payload_(payload),
      length_(payload == nullptr ? 0 : length),
      release_(release),
      releaseContext_(releaseContext) {
    grow(length_);
}

UnknownFullBox::~UnknownFullBox() {
    if (release_ != nullptr) release_(releaseContext_, payload_);
}

void UnknownFullBox::writeFields() {
    // The payload may be long: it goes out from where it lies.
    stream().write(payload_, length_);
}

}  // namespace qlix::kzm::impl
