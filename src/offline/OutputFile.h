#pragma once

#include <cstdint>
#include <fstream>
#include <string>
#include <vector>

namespace torvo::offline {

/// A file that is written anew, every step of which is checked up to its close.
///
/// All operations throw std::ios_base::failure. An object that goes without close() leaves
/// unchecked what it has not written yet.
class OutputFile {
public:
    /// Makes the file, or empties the one that is there.
    explicit OutputFile(const std::string& path);

    void write(const void* data, std::size_t size);
    void write(const std::vector<std::uint8_t>& bytes) { write(bytes.data(), bytes.size()); }
    void write(const std::string& text) { write(text.data(), text.size()); }
    void close();

private:
    std::ofstream stream_;
};

}  // namespace torvo::offline
