#pragma once

#include <cerrno>
#include <fstream>
#include <string>

namespace kvl {

/// Opens `file` for reading bytes. An open that a signal interrupts is made again; any other
/// failure leaves the file closed and the stream failed.
inline void openForReading(std::ifstream& file, const std::string& path) {
    do {
        errno = 0;
        file.clear();
        file.open(path, std::ios::binary);
    } while (!file.is_open() && errno == EINTR);
}

}  // namespace kvl
