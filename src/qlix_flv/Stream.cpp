#include "qlix_flv/Stream.h"

#include "qlix_flv/Failure.h"

namespace qlix::flv {
namespace {

constexpr std::uint32_t kFromStart = 0;
constexpr std::uint32_t kFromEnd = 2;

}  // namespace

StreamReference::StreamReference(const QlixFLVInputStreamCallBacks& callBacks)
    : callBacks_(callBacks) {
    callBacks_.addRef(callBacks_.context);
}

StreamReference::~StreamReference() { callBacks_.release(callBacks_.context); }

Stream::Stream(const QlixFLVInputStreamCallBacks& callBacks) : callBacks_(callBacks) {
    size_ = measure();
}

void Stream::readAt(std::uint64_t offset, std::uint8_t* buffer, std::uint32_t count) {
    if (count == 0) return;
    if (!isPositionKnown_ || position_ != offset) seekTo(offset);
    std::uint32_t done = 0;
    while (done < count) {
        std::uint32_t arrived = 0;
        const std::uint32_t wanted = count - done;
        const std::uint32_t result =
            callBacks_.read(callBacks_.context, buffer + done, wanted, &arrived);
        if (result != 0 || arrived == 0 || arrived > wanted) {
            isPositionKnown_ = false;
            fail(kQlixFLVStreamFailed);
        }
        done += arrived;
        position_ += arrived;
    }
}

void Stream::seekTo(std::uint64_t offset) {
    isPositionKnown_ = false;
    if (callBacks_.seek(callBacks_.context, static_cast<std::int64_t>(offset), kFromStart) != 0) {
        fail(kQlixFLVStreamFailed);
    }
    position_ = offset;
    isPositionKnown_ = true;
}

std::uint64_t Stream::measure() {
    std::int64_t end = 0;
    if (callBacks_.seek(callBacks_.context, 0, kFromEnd) != 0) fail(kQlixFLVStreamFailed);
    if (callBacks_.tell(callBacks_.context, &end) != 0 || end < 0) fail(kQlixFLVStreamFailed);
    return static_cast<std::uint64_t>(end);
}

}  // namespace qlix::flv
