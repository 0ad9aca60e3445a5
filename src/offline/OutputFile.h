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
    enum class Former {
        isDropped,      ///< the file is made, or the one that is there emptied
        isOverwritten,  ///< the one that is there keeps what is not written over, if there is one
    };

    explicit OutputFile(const std::string& path, Former former = Former::isDropped);

    void write(const void* data, std::size_t size);
    void write(const std::vector<std::uint8_t>& bytes) { write(bytes.data(), bytes.size()); }
    void write(const std::string& text) { write(text.data(), text.size()); }
    void close();

private:
    std::ofstream stream_;
};

}  // namespace torvo::offline
