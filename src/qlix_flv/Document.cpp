#include "qlix_flv/Document.h"

#include <array>
#include <cstring>

#include "qlix_flv/ByteOrder.h"
#include "qlix_flv/Failure.h"
#include "qlix_flv/TagWalk.h"

namespace qlix::flv {

bool isFileHeader(const std::uint8_t* bytes) {
    return std::memcmp(bytes, "FLV", 3) == 0 && bytes[3] == 1;
}

Document::Document(const QlixFLVInputStreamCallBacks& input, const Memory& memory)
    : memory_(memory), stream_(input), readAhead_(stream_, memory) {
    std::array<std::uint8_t, kFileHeaderSize> header{};
    if (size() < kFileHeaderSize) fail(kQlixFLVNotFLV);
    readAhead_.peek(0, header.data(), kFileHeaderSize, ReadAhead::Gap::skip);
    if (!isFileHeader(header.data())) fail(kQlixFLVNotFLV);
    dataOffset_ = loadU32(&header[5]);
    if (dataOffset_ < kFileHeaderSize || dataOffset_ > size()) fail(kQlixFLVCorruptData);
    // Only now: a stream that can't be used gets back to its owner untouched.
    reference_.emplace(input);
}

std::optional<TagHeader> Document::tagAt(std::uint64_t offset, ReadAhead::Gap gap) {
    constexpr std::uint64_t kToleratedStrayBytes = 3;
    if (offset >= size() || size() - offset <= kToleratedStrayBytes) return std::nullopt;
    if (size() - offset < kTagHeaderSize) fail(kQlixFLVCorruptData);
    const TagHeader tag = headerAt(offset, gap);
    if (tag.end() > size()) fail(kQlixFLVCorruptData);
    return tag;
}

TagHeader Document::headerAt(std::uint64_t offset, ReadAhead::Gap gap) {
    std::array<std::uint8_t, kTagHeaderSize + 1> bytes{};
    const bool hasMore = size() - offset > kTagHeaderSize;
    readAhead_.peek(offset, bytes.data(), hasMore ? kTagHeaderSize + 1 : kTagHeaderSize, gap);
    TagHeader tag;
    tag.offset = offset;
    tag.type = bytes[0];
    tag.bodySize = loadU24(&bytes[1]);
    tag.timeMs = static_cast<std::int32_t>(std::uint32_t{bytes[7]} << 24 | loadU24(&bytes[4]));
    if (tag.bodySize > 0) tag.firstBodyByte = bytes[kTagHeaderSize];
    return tag;
}

std::uint32_t Document::sizeWordBefore(std::uint64_t end) {
    std::array<std::uint8_t, kSizeWord> word{};
    readAhead_.peek(end - kSizeWord, word.data(), kSizeWord, ReadAhead::Gap::skip);
    return loadU32(word.data());
}

void Document::copy(std::uint64_t offset, std::uint8_t* buffer, std::uint32_t count) {
    readAhead_.copy(offset, buffer, count);
}

FLVDocInfo Document::info() {
    if (!info_) info_ = findKinds();
    return *info_;
}

FLVDocInfo Document::findKinds() {
    // On purpose: by the tags, never by the flags of the header, which lie often.
    // Pinned by DocInfoTest.IsTakenFromTheTagsAndNotFromTheFlags.
    FLVDocInfo info{1, 0, 0};
    ForwardWalk walk(*this, TagSelection{}, ReadAhead::Gap::skip);
    try {
        while (info.hasAudio == 0 || info.hasVideo == 0) {
            const std::optional<TagHeader> tag = walk.next();
            if (!tag) break;
            if (tag->type == kAudioTag) info.hasAudio = 1;
            if (tag->type == kVideoTag) info.hasVideo = 1;
        }
    } catch (const Failure& failure) {
        // Damage is told where iteration meets it; here what was seen before it counts.
        if (failure.code != kQlixFLVCorruptData) throw;
    }
    return info;
}

}  // namespace qlix::flv
