// The least that a packager has to do with the bytes of a recording: read them, hold them until
// the fragment is cut, write them. A copy inside the kernel does neither of the first two.
// usage: held_copy INPUT OUTPUT FRAGMENT_BYTES

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <fcntl.h>
#include <iostream>
#include <stdexcept>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

constexpr std::size_t kBytesPerCall = 256 * 1024;

/// How many bytes there were, less than asked for only at the end of the file.
std::size_t readSome(int file, char* buffer, std::size_t count) {
    const ssize_t done = ::read(file, buffer, count);
    if (done < 0) throw std::runtime_error("can't read the input");
    return static_cast<std::size_t>(done);
}

void writeAll(int file, const char* bytes, std::size_t count) {
    for (std::size_t done = 0; done < count;) {
        const ssize_t now = ::write(file, bytes + done, std::min(kBytesPerCall, count - done));
        if (now <= 0) throw std::runtime_error("can't write the output");
        done += static_cast<std::size_t>(now);
    }
}

int opened(const char* path, int flags) {
    const int file = ::open(path, flags | O_CLOEXEC, 0666);
    if (file < 0) throw std::runtime_error(std::string("can't open ") + path);
    return file;
}

void copy(int from, int to, std::size_t fragmentBytes) {
    std::vector<char> fragment(fragmentBytes);
    for (bool isAtEnd = false; !isAtEnd;) {
        std::size_t held = 0;
        while (held < fragmentBytes && !isAtEnd) {
            const std::size_t wanted = std::min(kBytesPerCall, fragmentBytes - held);
            const std::size_t done = readSome(from, fragment.data() + held, wanted);
            held += done;
            isAtEnd = done == 0;
        }
        writeAll(to, fragment.data(), held);
    }
}

}  // namespace

int main(int argc, char** argv) try {
    if (argc != 4) throw std::runtime_error("usage: held_copy INPUT OUTPUT FRAGMENT_BYTES");
    const int from = opened(argv[1], O_RDONLY);
    const int to = opened(argv[2], O_WRONLY | O_CREAT | O_TRUNC);
    copy(from, to, std::stoul(argv[3]));
    if (::close(to) != 0) throw std::runtime_error("can't write the output");
    return EXIT_SUCCESS;
} catch (const std::exception& failure) {
    std::cerr << failure.what() << '\n';
    return EXIT_FAILURE;
}
