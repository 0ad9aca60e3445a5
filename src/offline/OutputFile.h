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
    /// What becomes of the file that is there.
    enum class Former {
        /// It is emptied, and made if it isn't there: for files that are written once, in the end.
        /// Links, devices and the rights of the file stay what they are.
        isDropped,
        /// The bytes go into "<path>.part", which takes the place of `path` at the close: whoever
        /// looks finds the old file or the new one, also after a kill. What can't be replaced is
        /// emptied: a link, a device, a file with two names, one in a folder that can't be written.
        isReplaced,
        isOverwritten,  ///< written where it stands, and made if it isn't there
    };

    explicit OutputFile(const std::string& path, Former former = Former::isDropped);
    /// Without a close before it a replacement is taken away again.
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    void write(const void* data, std::size_t size);
    void write(const std::vector<std::uint8_t>& bytes) { write(bytes.data(), bytes.size()); }
    void write(const std::string& text) { write(text.data(), text.size()); }
    /// Writes `bytes` at `offset`, over a file of `formerSize` bytes. What lies beyond those is
    /// written first: a beginning that tells of it comes later. For the same reason the pieces of
    /// a file that is written in several are to come last one first.
    void overwrite(std::size_t offset, const std::vector<std::uint8_t>& bytes,
                   std::size_t formerSize);
    void close();

private:
    bool openReplacement();
    void writeAt(std::size_t offset, const std::uint8_t* data, std::size_t size);

    std::string path_;
    std::string replacementPath_;  // empty: the file itself is written
    int descriptor_ = -1;
};

}  // namespace torvo::offline
