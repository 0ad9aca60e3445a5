#include "kzspkgutil/KZMStream.h"

#include <algorithm>
#include <array>
#include <sys/uio.h>

#include "kzm/Exception.h"
#include "kzs/base/IOStreamException.h"

namespace torvo::kzspkgutil {
namespace {

template <typename Operation>
auto translated(Operation operation) {
    try {
        return operation();
    } catch (const kzs::IOStreamException& failure) {
        throw qlix::kzm::Exception(static_cast<std::uint32_t>(failure.code()));
    }
}

template <typename Operation>
auto translatedWriting(Operation operation) {
    try {
        return operation();
    } catch (const kzs::IOStreamException&) {
        throw qlix::kzm::Exception(qlix::kzm::ErrorCode::writeFailed);
    }
}

}  // namespace

KZMStream::KZMStream(const std::string& path, std::uint32_t openFlags) : file_(path, openFlags) {}

void KZMStream::addRef() { ++references_; }

void KZMStream::release() {
    if (--references_ == 0) file_.close();
}

void KZMStream::open() {
    translated([&] { file_.open(); });
}

void KZMStream::close() { file_.close(); }

void KZMStream::settle() {
    translatedWriting([&] { file_.settle(); });
}

std::uint64_t KZMStream::read(void* buffer, std::uint64_t count) {
    return translated([&] { return file_.read(buffer, count); });
}

std::uint64_t KZMStream::seek(std::int64_t offset, int origin) {
    return translated([&] { return file_.seek(offset, origin); });
}

std::uint64_t KZMStream::tell() {
    return translated([&] { return file_.tell(); });
}

std::uint64_t KZMStream::write(const void* buffer, std::uint64_t count) {
    return translatedWriting([&] { return file_.write(buffer, count); });
}

std::uint64_t KZMStream::writeParts(const qlix::kzm::WritePart* parts, std::size_t count) {
    std::array<iovec, kMostParts> pieces;
    const std::size_t most = std::min(count, pieces.size());
    std::size_t used = 0;
    for (std::uint64_t bytes = 0; used < most && bytes < kEnoughBytes; ++used) {
        // The system's type is for reading too; nothing is written to these.
        pieces[used].iov_base = const_cast<void*>(parts[used].data);
        pieces[used].iov_len = static_cast<std::size_t>(parts[used].size);
        bytes += parts[used].size;
    }
    return translatedWriting(
        [&] { return file_.writePieces(pieces.data(), static_cast<int>(used)); });
}

void KZMStream::truncate(std::uint64_t size) {
    translatedWriting([&] { file_.truncate(size); });
}

}  // namespace torvo::kzspkgutil
