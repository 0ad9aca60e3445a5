#include "kzs/base/FileStream.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <limits>
#include <sys/types.h>
#include <unistd.h>
#include <utility>

#include "kzs/base/IOStreamException.h"

namespace torvo::kzs {
namespace {

// The largest count that one call can report.
constexpr std::uint64_t kLargestCall = std::numeric_limits<ssize_t>::max();

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
}

void FileStream::close() {
    if (descriptor_ < 0) return;
    ::close(descriptor());  // reports nothing, as all that is written was checked before
    descriptor_ = -1;
}

std::uint64_t FileStream::read(void* buffer, std::uint64_t count) {
    if (buffer == nullptr || count == 0) return 0;
    const auto size = static_cast<std::size_t>(std::min(count, kLargestCall));
    const ssize_t got = untilNotInterrupted([&] { return ::read(descriptor(), buffer, size); });
    if (got < 0) fail();
    return static_cast<std::uint64_t>(got);
}

std::uint64_t FileStream::seek(std::int64_t offset, int origin) {
    // On purpose: any other origin counts from the position.
    // Pinned by FileStreamTest.CountsFromThePositionForAnyOtherOrigin.
    const int whence = origin == kFromStart ? SEEK_SET : origin == kFromEnd ? SEEK_END : SEEK_CUR;
    const off_t position = ::lseek(descriptor(), offset, whence);
    if (position < 0) fail();
    return static_cast<std::uint64_t>(position);
}

std::uint64_t FileStream::tell() {
    return static_cast<std::uint64_t>(::lseek(descriptor(), 0, SEEK_CUR));
}

std::uint64_t FileStream::write(const void* buffer, std::uint64_t count) {
    if (buffer == nullptr || count == 0) return 0;
    const auto size = static_cast<std::size_t>(std::min(count, kLargestCall));
    const ssize_t put = untilNotInterrupted([&] { return ::write(descriptor(), buffer, size); });
    if (put < 0) fail();
    return static_cast<std::uint64_t>(put);
}

void FileStream::truncate(std::uint64_t size) {
    const auto wanted = static_cast<off_t>(size);
    if (untilNotInterrupted([&] { return ::ftruncate(descriptor(), wanted); }) < 0) fail();
}

}  // namespace torvo::kzs
