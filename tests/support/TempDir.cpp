#include "support/TempDir.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

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

Bytes readFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) throw std::runtime_error("can't read " + path);
    Bytes out;
    out.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
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
