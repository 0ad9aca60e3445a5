#include "offline/OutputFile.h"

namespace torvo::offline {

OutputFile::OutputFile(const std::string& path) {
    stream_.exceptions(std::ios::failbit | std::ios::badbit);
    stream_.open(path, std::ios::binary | std::ios::trunc);
}

void OutputFile::write(const void* data, std::size_t size) {
    stream_.write(static_cast<const char*>(data), static_cast<std::streamsize>(size));
}

void OutputFile::close() {
    stream_.flush();
    stream_.close();
}

}  // namespace torvo::offline
