#pragma once

#include <cstdint>
#include <string>

#include "kzm/QlixGatherStream.h"
#include "kzm/QlixIOStream.h"
#include "kzs/base/FileStream.h"

namespace torvo::kzspkgutil {

/// A file as the box library wants it.
///
/// The count of references starts at 0; the release that brings it back there closes the file. The
/// object itself belongs to whoever made it. One user opens it: a writer, or a reader.
///
/// A failed operation leaves as qlix::kzm::Exception. Opening, reading, seeking and telling give it
/// the number of the kzs::IOStreamException; writing, cutting and settling give writeFailed,
/// whatever the cause.
class KZMStream final : public qlix::kzm::QlixIOStream, public qlix::kzm::QlixGatherStream {
public:
    /// A call that has this many bytes takes no further part. For calls of megabytes, systems look
    /// for large pieces of contiguous memory, which takes longer than the writing.
    static constexpr std::uint64_t kEnoughBytes = 256 * 1024;

    /// `openFlags` as for kzs::FileStream. Opens nothing yet.
    KZMStream(const std::string& path, std::uint32_t openFlags);

    void addRef() override;
    void release() override;

    void open() override;
    void close() override;
    /// Asks for the failures that closing would hide; the file stays open.
    void settle();
    std::uint64_t read(void* buffer, std::uint64_t count) override;
    std::uint64_t seek(std::int64_t offset, int origin) override;
    std::uint64_t tell() override;
    std::uint64_t write(const void* buffer, std::uint64_t count) override;
    /// Takes at least one part that isn't empty, and no further one once it has kEnoughBytes.
    std::uint64_t writeParts(const qlix::kzm::WritePart* parts, std::size_t count) override;
    void truncate(std::uint64_t size) override;

private:
    std::uint32_t references_ = 0;
    kzs::FileStream file_;
};

}  // namespace torvo::kzspkgutil
