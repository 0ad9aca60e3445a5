#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "kzs/AfraIndex.h"
#include "offline/OutputFile.h"

namespace torvo::kzs {
class AfraPieces;
}

namespace torvo::offline {

/// The index files of a run, one beside each segment file: "<base>Seg<n>.kzx".
class IndexFile {
public:
    IndexFile(std::string outputPath, std::string baseName);

    /// Writes the whole index as the file of `segment`, in the place of one that is there. From
    /// the second time on it is written over where it stands, and stays open until the next
    /// segment's turn or `close`. It is always the same index: between two calls global entries
    /// are only appended, and their fragment numbers don't change.
    ///
    /// Throws InvalidAfraException, before the file is touched, where two neighbours among the
    /// global entries don't have consecutive fragment numbers, and std::ios_base::failure.
    void writeIndexFile(const kzs::AfraIndex& index, std::uint32_t segment);

    /// To be called behind the last write: file systems that write late tell of a failure only
    /// here. Throws std::ios_base::failure.
    void close();

private:
    void check(const kzs::AfraIndex& index);
    void writePieces(OutputFile& file, const kzs::AfraPieces& pieces, std::size_t formerSize);
    std::string pathOf(std::uint32_t segment) const;

    std::string outputPath_;
    std::string baseName_;
    std::vector<std::uint8_t> piece_;  // kept for its capacity: the index is written over and over
    std::size_t checkedEntries_ = 0;   // global entries whose numbers are known to be consecutive
    std::uint32_t writtenSegment_ = 0;
    std::size_t writtenBytes_ = 0;    // of that segment's file
    std::optional<OutputFile> file_;  // that file, once it is written over
};

}  // namespace torvo::offline
