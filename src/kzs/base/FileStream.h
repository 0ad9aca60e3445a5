#pragma once

#include <cstdint>
#include <string>

#include "kzs/base/IOStream.h"

struct iovec;

namespace torvo::kzs {

/// Bits of a file's open flags. They are this program's own numbers, brought into those of the
/// system when the file is opened; text and binary mode are one here.
constexpr std::uint32_t kOpenWriteOnly = 0x0001;
constexpr std::uint32_t kOpenReadWrite = 0x0002;
constexpr std::uint32_t kOpenAppend = 0x0008;
constexpr std::uint32_t kOpenCreate = 0x0100;
constexpr std::uint32_t kOpenTruncate = 0x0200;
constexpr std::uint32_t kOpenExclusive = 0x0400;
constexpr std::uint32_t kOpenText = 0x4000;
constexpr std::uint32_t kOpenBinary = 0x8000;

/// The open flags of a file that is read only (0x8000), new (0x8302), or written where it stands
/// and made if missing (0x8102). `keepContent` counts only with `writable`.
constexpr std::uint32_t openFlagsFor(bool writable, bool keepContent) {
    if (!writable) return kOpenBinary;
    return kOpenBinary | kOpenCreate | kOpenReadWrite | (keepContent ? 0 : kOpenTruncate);
}

/// A file on disk. An instance belongs to one thread.
///
/// Calls that a signal interrupts are made again. The destructor closes.
///
/// The position is kept here and handed over with each read and write, so that a seek costs no call
/// to the system. Pipes and terminals, which have no positions, and files opened to append are read
/// and written at the system's own position.
class FileStream : public IOStream {
public:
    /// Opens nothing yet.
    FileStream(std::string path, std::uint32_t openFlags);
    ~FileStream() override;
    FileStream(const FileStream&) = delete;
    FileStream& operator=(const FileStream&) = delete;

    /// New files get read and write permission for all, less the umask, and are not locked.
    /// On purpose: a second open takes a new descriptor and leaves the old one open.
    /// Pinned by FileStreamTest.TakesANewDescriptorWhenOpenedTwice.
    void open() override;
    /// On purpose it reports nothing, as `tell` doesn't: who wants to hear of a failure calls
    /// `settle` first.
    /// Pinned by FileStreamTest.ClosesWithoutAWordWhateverTheSystemSays.
    void close() override;
    /// Reports what otherwise only closing reports, and leaves the file open: file systems that
    /// write late find a full disk or a used up quota then. Throws IOStreamException.
    void settle() const;
    std::uint64_t read(void* buffer, std::uint64_t count) override;
    std::uint64_t seek(std::int64_t offset, int origin) override;
    std::uint64_t tell() override;
    std::uint64_t write(const void* buffer, std::uint64_t count) override;
    /// The same for up to 1024 pieces that lie apart in memory, written in their order as if they
    /// were one buffer.
    std::uint64_t writePieces(const iovec* pieces, int count);
    void truncate(std::uint64_t size) override;

    const std::string& path() const { return path_; }
    bool isOpen() const { return descriptor_ >= 0; }

private:
    int descriptor() const { return static_cast<int>(descriptor_); }
    std::uint64_t systemSeek(std::int64_t offset, int whence);
    [[noreturn]] void fail() const;

    std::string path_;
    std::uint32_t openFlags_;
    std::int64_t descriptor_ = -1;
    bool keepsPosition_ = false;
    std::int64_t position_ = 0;  // counts while keepsPosition_
};

}  // namespace torvo::kzs
