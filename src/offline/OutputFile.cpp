#include "offline/OutputFile.h"

#include <cerrno>
#include <fcntl.h>
#include <ios>
#include <unistd.h>

namespace torvo::offline {

namespace {

/// In the words of the standard library's streams, which users and their scripts know.
[[noreturn]] void fail() { throw std::ios_base::failure("basic_ios::clear", std::io_errc::stream); }

}  // namespace

OutputFile::OutputFile(const std::string& path, Former former) {
    const int emptied = former == Former::isDropped ? O_TRUNC : 0;
    do {
        descriptor_ = ::open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | emptied, 0666);
    } while (descriptor_ < 0 && errno == EINTR);
    if (descriptor_ < 0) fail();
}

OutputFile::~OutputFile() {
    if (descriptor_ >= 0) ::close(descriptor_);
}

void OutputFile::write(const void* data, std::size_t size) {
    const char* at = static_cast<const char*>(data);
    while (size > 0) {
        const ssize_t written = ::write(descriptor_, at, size);
        if (written < 0 && errno != EINTR) fail();
        if (written <= 0) continue;
        at += written;
        size -= static_cast<std::size_t>(written);
    }
}

void OutputFile::close() {
    const int closed = descriptor_;
    descriptor_ = -1;
    // File systems that write late tell a full disk only here. An interrupted close has closed.
    if (::close(closed) < 0 && errno != EINTR) fail();
}

}  // namespace torvo::offline
