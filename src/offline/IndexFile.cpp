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
    if (const auto numbers = index.firstBreak()) {
        throw InvalidAfraException("last fragment: " + std::to_string(numbers->first) +
                                   " current fragment: " + std::to_string(numbers->second));
    }
    kzs::serialiseAfra(index, bytes_);
    // A file that this object made and that doesn't shrink is written over where it stands: file
    // systems bring an exchanged one to the disk at once, which takes longer than all the rest.
    if (segment == writtenSegment_ && bytes_.size() >= writtenBytes_) {
        if (!file_) file_.emplace(pathOf(segment), OutputFile::Former::isOverwritten);
        // The box says how long it is and how many entries it has: after a kill in between it
        // tells of the entries that were there before.
        file_->overwrite(bytes_, writtenBytes_);
    } else {
        close();
        OutputFile file(pathOf(segment), OutputFile::Former::isReplaced);
        file.write(bytes_);
        file.close();
    }
    writtenSegment_ = segment;
    writtenBytes_ = bytes_.size();
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
