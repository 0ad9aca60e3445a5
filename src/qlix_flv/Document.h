#pragma once

#include <cstdint>
#include <optional>

#include "qlix_flv/Memory.h"
#include "qlix_flv/ReadAhead.h"
#include "qlix_flv/Stream.h"

namespace qlix::flv {

constexpr std::uint32_t kFileHeaderSize = 9;
constexpr std::uint32_t kTagHeaderSize = 11;
constexpr std::uint32_t kSizeWord = 4;

constexpr std::uint8_t kAudioTag = 8;
constexpr std::uint8_t kVideoTag = 9;
constexpr std::uint8_t kScriptAmf3Tag = 15;
constexpr std::uint8_t kScriptTag = 18;

/// What is kept of a tag: its header and where it lies.
struct TagHeader {
    std::uint64_t offset = 0;  ///< of the tag in the file
    std::uint32_t bodySize = 0;
    std::int32_t timeMs = 0;
    std::uint8_t type = 0;
    std::uint8_t firstBodyByte = 0;  ///< 0 when the body is empty

    std::uint64_t end() const { return offset + kTagHeaderSize + bodySize; }
};

/// True for the 9 bytes that begin an FLV file of version 1.
bool isFileHeader(const std::uint8_t* bytes);

/// An FLV file: its stream, the read-ahead over it, and its tag headers.
///
/// The constructor fails with kQlixFLVNotFLV, kQlixFLVCorruptData where the data offset lies
/// outside the file, and kQlixFLVStreamFailed. Holds one reference on the stream.
class Document {
public:
    Document(const QlixFLVInputStreamCallBacks& input, const Memory& memory);

    const Memory& memory() const { return memory_; }
    std::uint64_t size() const { return stream_.size(); }
    /// Where the size word before the first tag stands.
    std::uint64_t dataOffset() const { return dataOffset_; }

    /// The header of the tag at `offset`; none at the end of the file, where fewer than 4 stray
    /// bytes are tolerated. Fails with kQlixFLVCorruptData where no whole tag stands.
    std::optional<TagHeader> tagAt(std::uint64_t offset, ReadAhead::Gap gap);
    /// The header that stands at `offset`, whatever its body size; 11 bytes must be left there.
    TagHeader headerAt(std::uint64_t offset, ReadAhead::Gap gap);
    /// The size word that ends at `end`; `end` is at least 4.
    std::uint32_t sizeWordBefore(std::uint64_t end);
    /// `count` bytes of the file from `offset`, which must lie inside.
    void copy(std::uint64_t offset, std::uint8_t* buffer, std::uint32_t count);

    /// Whether the file really holds tags of the two kinds; walks until it knows.
    FLVDocInfo info();

private:
    FLVDocInfo findKinds();

    Memory memory_;
    std::optional<StreamReference> reference_;  // first of the stream's users, last to go
    Stream stream_;
    ReadAhead readAhead_;
    std::uint64_t dataOffset_ = 0;
    std::optional<FLVDocInfo> info_;
};

}  // namespace qlix::flv
