#include "offline/IndexFile.h"

#include <utility>

#include <boost/filesystem/path.hpp>

#include "kzs/AfraWriter.h"
#include "offline/OfflineException.h"

namespace torvo::offline {

IndexFile::IndexFile(std::string outputPath, std::string baseName)
    : outputPath_(std::move(outputPath)), baseName_(std::move(baseName)) {}

void IndexFile::writeIndexFile(const kzs::AfraIndex& index, std::uint32_t segment) {
    // On purpose: before the file is opened. Each file holds the whole list so far, whatever
    // segment it is for. Pinned by
    // IndexFileTest.NumbersThatAreNotConsecutiveFailBeforeTheFileIsTouched.
    check(index);
    const kzs::AfraPieces pieces(index);
    // A file that this object made and that doesn't shrink is written over where it stands: file
    // systems bring an exchanged one to the disk at once, which takes longer than all the rest.
    if (segment == writtenSegment_ && pieces.totalSize() >= writtenBytes_) {
        if (!file_) file_.emplace(pathOf(segment), OutputFile::Former::isOverwritten);
        writePieces(*file_, pieces, writtenBytes_);
    } else {
        close();
        OutputFile file(pathOf(segment), OutputFile::Former::isReplaced);
        writePieces(file, pieces, 0);
        file.close();
    }
    writtenSegment_ = segment;
    writtenBytes_ = pieces.totalSize();
}

void IndexFile::check(const kzs::AfraIndex& index) {
    if (const auto numbers = index.firstBreak(checkedEntries_)) {
        throw InvalidAfraException("last fragment: " + std::to_string(numbers->first) +
                                   " current fragment: " + std::to_string(numbers->second));
    }
    checkedEntries_ = index.globalEntries.size();
}

/// The box says in front how long it is and how many entries it has, so the front comes last: after
/// a kill in between it tells of the entries that were there before.
void IndexFile::writePieces(OutputFile& file, const kzs::AfraPieces& pieces,
                            std::size_t formerSize) {
    for (std::size_t piece = pieces.count(); piece-- > 0;) {
        pieces.serialise(piece, piece_);
        file.overwrite(pieces.offsetOf(piece), piece_, formerSize);
    }
}

void IndexFile::close() {
    if (!file_) return;
    file_->close();
    file_.reset();
}

std::string IndexFile::pathOf(std::uint32_t segment) const {
    const std::string name = baseName_ + "Seg" + std::to_string(segment) + ".kzx";
    return (boost::filesystem::path(outputPath_) / name).string();
}

}  // namespace torvo::offline
