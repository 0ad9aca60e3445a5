#include "offline/OutputFile.h"

namespace torvo::offline {

OutputFile::OutputFile(const std::string& path, Former former) {
    if (former == Former::isOverwritten) {
        stream_.open(path, std::ios::binary | std::ios::in | std::ios::out);
        if (!stream_.is_open()) stream_.clear();  // nothing is there: made below
    }
    stream_.exceptions(std::ios::failbit | std::ios::badbit);
    if (!stream_.is_open()) stream_.open(path, std::ios::binary | std::ios::trunc);
}

void OutputFile::write(const void* data, std::size_t size) {
    stream_.write(static_cast<const char*>(data), static_cast<std::streamsize>(size));
}

void OutputFile::close() {
    stream_.flush();
    stream_.close();
}

}  // namespace torvo::offline
