#include "support/TempDir.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace kz::test {

TempDir::TempDir() {
    std::string pattern = (std::filesystem::temp_directory_path() / "kzsXXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("mkdtemp failed");
    path_ = pattern;
}

TempDir::~TempDir() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

std::string TempDir::write(const std::string& name, const Bytes& content) const {
    const std::string path = *this / name;
    writeFile(path, content);
    return path;
}

std::string TempDir::makeSocket(const std::string& name) const {
    std::string path = *this / name;
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path) throw std::length_error(path);
    std::copy(path.begin(), path.end(), address.sun_path);
    const int handle = socket(AF_UNIX, SOCK_STREAM, 0);
    const int result = bind(handle, reinterpret_cast<const sockaddr*>(&address), sizeof address);
    close(handle);
    if (result != 0) throw std::runtime_error("can't bind " + path);
    return path;
}

Bytes readFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary | std::ios::ate);
    if (!in) throw std::runtime_error("can't read " + path);
    Bytes out;
    out.resize(static_cast<std::size_t>(in.tellg()));
    in.seekg(0);
    in.read(reinterpret_cast<char*>(out.data()), static_cast<std::streamsize>(out.size()));
    if (!in) throw std::runtime_error("can't read " + path);
    return out;
}

void writeFile(const std::string& path, const Bytes& content) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(content.data()),
              static_cast<std::streamsize>(content.size()));
    out.close();
    if (!out) throw std::runtime_error("can't write " + path);
}

bool fileExists(const std::string& path) { return std::filesystem::exists(path); }

}  // namespace kz::test
