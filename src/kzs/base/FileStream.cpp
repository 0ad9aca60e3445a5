#include "kzs/base/FileStream.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <limits>
#include <sys/types.h>
#include <sys/uio.h>
#include <unistd.h>
#include <utility>

#include "kzs/base/IOStreamException.h"

namespace torvo::kzs {
namespace {

// The largest count that one call can report.
constexpr std::uint64_t kLargestCall = std::numeric_limits<ssize_t>::max();

// Every file system takes positions up to here. Whether it takes a larger one it is asked.
constexpr std::int64_t kSurePosition = std::int64_t{1} << 40;

int systemFlags(std::uint32_t openFlags) {
    int flags = O_CLOEXEC;
    if ((openFlags & kOpenReadWrite) != 0) {
        flags |= O_RDWR;
    } else if ((openFlags & kOpenWriteOnly) != 0) {
        flags |= O_WRONLY;
    } else {
        flags |= O_RDONLY;
    }
    if ((openFlags & kOpenAppend) != 0) flags |= O_APPEND;
    if ((openFlags & kOpenCreate) != 0) flags |= O_CREAT;
    if ((openFlags & kOpenTruncate) != 0) flags |= O_TRUNC;
    if ((openFlags & kOpenExclusive) != 0) flags |= O_EXCL;
    return flags;
}

template <typename Call>
auto untilNotInterrupted(Call call) {
    auto result = call();
    while (result < 0 && errno == EINTR) result = call();
    return result;
}

}  // namespace

FileStream::FileStream(std::string path, std::uint32_t openFlags)
    : path_(std::move(path)), openFlags_(openFlags) {}

FileStream::~FileStream() { FileStream::close(); }

void FileStream::fail() const { throw IOStreamException(IOStreamException::codeOf(errno), path_); }

void FileStream::open() {
    const int opened =
        untilNotInterrupted([&] { return ::open(path_.c_str(), systemFlags(openFlags_), 0666); });
    if (opened < 0) fail();
    descriptor_ = opened;
    position_ = 0;
    const bool appends = (openFlags_ & kOpenAppend) != 0;
    keepsPosition_ = !appends && ::lseek(opened, 0, SEEK_CUR) == 0;
}

void FileStream::close() {
    if (descriptor_ < 0) return;
    ::close(descriptor());
    descriptor_ = -1;
    keepsPosition_ = false;
}

void FileStream::settle() const {
    const int copy = untilNotInterrupted([&] { return ::dup(descriptor()); });
    // An interrupted close has closed.
    if (copy < 0 || (::close(copy) < 0 && errno != EINTR)) fail();
}

std::uint64_t FileStream::read(void* buffer, std::uint64_t count) {
    if (buffer == nullptr || count == 0) return 0;
    const auto size = static_cast<std::size_t>(std::min(count, kLargestCall));
    const ssize_t got = untilNotInterrupted([&] {
        return keepsPosition_ ? ::pread(descriptor(), buffer, size, position_)
                              : ::read(descriptor(), buffer, size);
    });
    if (got < 0) fail();
    position_ += got;
    return static_cast<std::uint64_t>(got);
}

std::uint64_t FileStream::seek(std::int64_t offset, int origin) {
    if (origin == kFromStart) {
        if (keepsPosition_ && offset >= 0 && offset <= kSurePosition) {
            position_ = offset;
            return static_cast<std::uint64_t>(offset);
        }
        return systemSeek(offset, SEEK_SET);
    }
    if (origin == kFromEnd) return systemSeek(offset, SEEK_END);
    // On purpose: any other origin counts from the position.
    // Pinned by FileStreamTest.CountsFromThePositionForAnyOtherOrigin.
    if (keepsPosition_) ::lseek(descriptor(), position_, SEEK_SET);
    return systemSeek(offset, SEEK_CUR);
}

std::uint64_t FileStream::systemSeek(std::int64_t offset, int whence) {
    const off_t position = ::lseek(descriptor(), offset, whence);
    if (position < 0) fail();
    position_ = position;
    return static_cast<std::uint64_t>(position);
}

std::uint64_t FileStream::tell() {
    if (keepsPosition_) return static_cast<std::uint64_t>(position_);
    return static_cast<std::uint64_t>(::lseek(descriptor(), 0, SEEK_CUR));
}

std::uint64_t FileStream::write(const void* buffer, std::uint64_t count) {
    if (buffer == nullptr || count == 0) return 0;
    const auto size = static_cast<std::size_t>(std::min(count, kLargestCall));
    const ssize_t put = untilNotInterrupted([&] {
        return keepsPosition_ ? ::pwrite(descriptor(), buffer, size, position_)
                              : ::write(descriptor(), buffer, size);
    });
    if (put < 0) fail();
    position_ += put;
    return static_cast<std::uint64_t>(put);
}

std::uint64_t FileStream::writePieces(const iovec* pieces, int count) {
    if (count == 0) return 0;
    const ssize_t put = untilNotInterrupted([&] {
        return keepsPosition_ ? ::pwritev(descriptor(), pieces, count, position_)
                              : ::writev(descriptor(), pieces, count);
    });
    if (put < 0) fail();
    position_ += put;
    return static_cast<std::uint64_t>(put);
}

void FileStream::truncate(std::uint64_t size) {
    const auto wanted = static_cast<off_t>(size);
    if (untilNotInterrupted([&] { return ::ftruncate(descriptor(), wanted); }) < 0) fail();
}

}  // namespace torvo::kzs
