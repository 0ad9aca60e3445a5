#include "offline/OutputFile.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <ios>
#include <sys/stat.h>
#include <unistd.h>

namespace torvo::offline {
namespace {

constexpr mode_t kOrdinaryMode = 0666;
constexpr mode_t kModeBits = 07777;

/// In the words of the standard library's streams, which users and their scripts know.
[[noreturn]] void fail() { throw std::ios_base::failure("basic_ios::clear", std::io_errc::stream); }

/// -1 where the file can't be opened.
int openFile(const std::string& path, int flags) {
    int descriptor = -1;
    do {
        descriptor = ::open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | flags, kOrdinaryMode);
    } while (descriptor < 0 && errno == EINTR);
    return descriptor;
}

/// Whether the last failure says that the folder takes no further file of that name, though the
/// file itself may be writable.
bool folderRefuses() {
    return errno == EACCES || errno == EPERM || errno == EROFS || errno == ENAMETOOLONG;
}

/// Brings all bytes to the file by as many of the calls as it takes.
template <class Call>
void writeAll(const std::uint8_t* data, std::size_t size, Call call) {
    while (size > 0) {
        const ssize_t written = call(data, size);
        if (written < 0 && errno == EINTR) continue;
        // A call that takes nothing would take nothing for ever.
        if (written <= 0) fail();
        data += written;
        size -= static_cast<std::size_t>(written);
    }
}

}  // namespace

OutputFile::OutputFile(const std::string& path, Former former) : path_(path) {
    if (former == Former::isReplaced && openReplacement()) return;
    descriptor_ = openFile(path_, former == Former::isOverwritten ? 0 : O_TRUNC);
    if (descriptor_ < 0) fail();
}

OutputFile::~OutputFile() {
    if (descriptor_ >= 0) ::close(descriptor_);
    if (!replacementPath_.empty()) ::unlink(replacementPath_.c_str());
}

/// False where the file has to be written itself.
bool OutputFile::openReplacement() {
    struct stat former = {};
    const bool isThere = ::lstat(path_.c_str(), &former) == 0;
    if (isThere && (!S_ISREG(former.st_mode) || former.st_nlink > 1)) return false;
    const std::string replacement = path_ + ".part";
    descriptor_ = openFile(replacement, O_TRUNC | O_NOFOLLOW);
    if (descriptor_ < 0) {
        if (folderRefuses()) return false;
        fail();
    }
    replacementPath_ = replacement;
    // The rights of the former file stay, as they would if it were emptied.
    if (isThere) static_cast<void>(::fchmod(descriptor_, former.st_mode & kModeBits) == 0);
    return true;
}

void OutputFile::write(const void* data, std::size_t size) {
    writeAll(static_cast<const std::uint8_t*>(data), size,
             [&](const std::uint8_t* from, std::size_t count) {
                 return ::write(descriptor_, from, count);
             });
}

void OutputFile::overwrite(std::size_t offset, const std::vector<std::uint8_t>& bytes,
                           std::size_t formerSize) {
    const std::size_t former = std::clamp(formerSize, offset, offset + bytes.size()) - offset;
    writeAt(offset + former, bytes.data() + former, bytes.size() - former);
    writeAt(offset, bytes.data(), former);
}

void OutputFile::writeAt(std::size_t offset, const std::uint8_t* data, std::size_t size) {
    writeAll(data, size, [&](const std::uint8_t* from, std::size_t count) {
        const ssize_t written = ::pwrite(descriptor_, from, count, static_cast<off_t>(offset));
        if (written > 0) offset += static_cast<std::size_t>(written);
        return written;
    });
}

void OutputFile::close() {
    const int closed = descriptor_;
    descriptor_ = -1;
    // File systems that write late tell a full disk only here. An interrupted close has closed.
    if (::close(closed) < 0 && errno != EINTR) fail();
    if (replacementPath_.empty()) return;
    if (std::rename(replacementPath_.c_str(), path_.c_str()) < 0) fail();
    replacementPath_.clear();
}

}  // namespace torvo::offline
