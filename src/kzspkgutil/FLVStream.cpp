#include "kzspkgutil/FLVStream.h"

#include "flv/Exception.h"
#include "kzs/base/IOStreamException.h"

namespace torvo::kzspkgutil {
namespace {

/// Runs a file operation in terms of the FLV library's failures.
template <class Work>
auto forwarded(const Work& work) {
    try {
        return work();
    } catch (const kzs::IOStreamException&) {
        throw flv::Exception(flv::Exception::kStreamFailed);
    }
}

}  // namespace

FLVStream::FLVStream(const std::string& path, std::uint32_t openFlags) : file_(path, openFlags) {
    FLVStream::open();
}

void FLVStream::addRef() { ++references_; }

void FLVStream::release() {
    if (--references_ == 0) close();
}

std::uint32_t FLVStream::read(void* buffer, std::uint32_t size) {
    return forwarded([&] { return static_cast<std::uint32_t>(file_.read(buffer, size)); });
}

void FLVStream::seek(std::int64_t offset, std::uint32_t whence) {
    forwarded([&] { file_.seek(offset, static_cast<int>(whence)); });
}

std::int64_t FLVStream::tell() {
    return forwarded([&] { return static_cast<std::int64_t>(file_.tell()); });
}

void FLVStream::open() {
    if (file_.isOpen()) return;
    forwarded([&] { file_.open(); });
}

void FLVStream::close() {
    forwarded([&] { file_.close(); });
}

}  // namespace torvo::kzspkgutil
