#include "offline/InputBytes.h"

#include <fstream>

#include <boost/filesystem/operations.hpp>

#include "kvl/InputFile.h"
#include "offline/OfflineException.h"

namespace torvo::offline {
namespace {

constexpr std::size_t kBlockSize = 1024;

bool isFolder(const std::string& path) {
    boost::system::error_code ignored;
    return boost::filesystem::is_directory(path, ignored);
}

template <typename Bytes>
Bytes readAll(const std::string& path) {
    std::ifstream stream;
    // Without a buffer of its own the stream keeps no part of a key.
    stream.rdbuf()->pubsetbuf(nullptr, 0);
    kvl::openForReading(stream, path);
    if (!stream) throw FileNotFoundException(path);
    if (isFolder(path)) throw PathNotFileException(path);
    Bytes bytes;
    std::size_t size = 0;
    while (stream) {
        if (size > kLargestInput) throw CantAccessFileException(path);
        bytes.resize(size + kBlockSize);
        stream.read(reinterpret_cast<char*>(bytes.data() + size), kBlockSize);
        size += static_cast<std::size_t>(stream.gcount());
    }
    if (stream.bad()) throw CantAccessFileException(path);
    bytes.resize(size);
    return bytes;
}

}  // namespace

std::vector<std::uint8_t> readInputBytes(const std::string& path) {
    return readAll<std::vector<std::uint8_t>>(path);
}

hlx::SecretBytes readSecretBytes(const std::string& path) {
    return readAll<hlx::SecretBytes>(path);
}

}  // namespace torvo::offline
