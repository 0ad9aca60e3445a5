#include "flv/InputStream.h"

namespace flv {
namespace {

InputStream& streamOf(void* context) { return *static_cast<InputStream*>(context); }

void addRefCallBack(void* context) { streamOf(context).addRef(); }

void releaseCallBack(void* context) { streamOf(context).release(); }

template <class Work>
std::uint32_t resultOf(const Work& work) noexcept {
    try {
        work();
        return 0;
    } catch (...) {
        return 1;
    }
}

std::uint32_t readCallBack(void* context, void* buffer, std::uint32_t size,
                           std::uint32_t* bytesRead) {
    return resultOf([&] {
        const std::uint32_t count = streamOf(context).read(buffer, size);
        if (bytesRead != nullptr) *bytesRead = count;
    });
}

std::uint32_t seekCallBack(void* context, std::int64_t offset, std::uint32_t whence) {
    return resultOf([&] { streamOf(context).seek(offset, whence); });
}

std::uint32_t tellCallBack(void* context, std::int64_t* position) {
    return resultOf([&] {
        const std::int64_t value = streamOf(context).tell();
        if (position != nullptr) *position = value;
    });
}

}  // namespace

InputStream::~InputStream() = default;

void InputStream::getCallBacks(QlixFLVInputStreamCallBacks& out) {
    out.context = this;
    out.addRef = addRefCallBack;
    out.release = releaseCallBack;
    out.read = readCallBack;
    out.seek = seekCallBack;
    out.tell = tellCallBack;
}

}  // namespace flv
