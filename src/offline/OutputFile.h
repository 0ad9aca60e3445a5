#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace torvo::offline {

/// A file that is written anew, every step of which is checked up to its close.
///
/// Calls that a signal interrupts are made again, counts that come back short are gone on from.
/// All operations throw std::ios_base::failure. Nothing is held back: what was written is with the
/// system.
class OutputFile {
public:
    enum class Former {
        isDropped,      ///< the file is made, or the one that is there emptied
        isOverwritten,  ///< the one that is there keeps what is not written over, if there is one
    };

    explicit OutputFile(const std::string& path, Former former = Former::isDropped);
    /// Closes without a check.
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    void write(const void* data, std::size_t size);
    void write(const std::vector<std::uint8_t>& bytes) { write(bytes.data(), bytes.size()); }
    void write(const std::string& text) { write(text.data(), text.size()); }
    void close();

private:
    int descriptor_ = -1;
};

}  // namespace torvo::offline
