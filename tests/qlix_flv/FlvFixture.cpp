#include "qlix_flv/FlvFixture.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <ostream>

namespace kz::test {

QlixFLVInputStreamCallBacks MemoryStream::callBacks() {
    QlixFLVInputStreamCallBacks out;
    out.context = this;
    out.addRef = [](void* context) { ++static_cast<MemoryStream*>(context)->references; };
    out.release = [](void* context) { --static_cast<MemoryStream*>(context)->references; };
    out.read = read;
    out.seek = seek;
    out.tell = tell;
    return out;
}

std::uint32_t MemoryStream::read(void* context, void* buffer, std::uint32_t size,
                                 std::uint32_t* bytesRead) {
    auto& self = *static_cast<MemoryStream*>(context);
    if (self.failingRead && self.reads >= *self.failingRead) return 1;
    ++self.reads;
    const std::uint64_t left =
        self.content_.size() - std::min<std::uint64_t>(self.position_, self.content_.size());
    const auto count =
        static_cast<std::uint32_t>(std::min<std::uint64_t>({left, size, self.longestRead}));
    if (count > 0) std::memcpy(buffer, self.content_.data() + self.position_, count);
    self.position_ += count;
    self.bytesRead += count;
    *bytesRead = count;
    return 0;
}

std::uint32_t MemoryStream::seek(void* context, std::int64_t offset, std::uint32_t whence) {
    auto& self = *static_cast<MemoryStream*>(context);
    ++self.seeks;
    const std::uint64_t end = self.claimedSize != 0 ? self.claimedSize : self.content_.size();
    const std::uint64_t base = whence == 0 ? 0 : whence == 1 ? self.position_ : end;
    self.position_ = base + static_cast<std::uint64_t>(offset);
    return 0;
}

std::uint32_t MemoryStream::tell(void* context, std::int64_t* position) {
    *position = static_cast<std::int64_t>(static_cast<MemoryStream*>(context)->position_);
    return 0;
}

QlixFLVAllocatorCallBacks CountingAllocator::callBacks() {
    QlixFLVAllocatorCallBacks out;
    out.context = this;
    out.allocate = [](void* context, std::size_t size) -> void* {
        auto& self = *static_cast<CountingAllocator*>(context);
        if (self.failingAllocation && self.allocations >= *self.failingAllocation) return nullptr;
        ++self.allocations;
        void* memory = std::malloc(size);
        self.live_[memory] = size;
        self.liveBytes += size;
        self.peakBytes = std::max(self.peakBytes, self.liveBytes);
        return memory;
    };
    out.free = [](void* context, void* pointer) {
        auto& self = *static_cast<CountingAllocator*>(context);
        self.liveBytes -= self.live_.at(pointer);
        self.live_.erase(pointer);
        std::free(pointer);
    };
    return out;
}

std::ostream& operator<<(std::ostream& out, const SeenTag& tag) {
    return out << "{type " << tag.type << ", " << tag.timeMs << " ms, " << tag.dataSize
               << " bytes}";
}

FlvFixture::~FlvFixture() {
    if (reader != nullptr) QlixFLVCloseReader(reader);
}

std::uint32_t FlvFixture::open() {
    const QlixFLVInputStreamCallBacks input = stream.callBacks();
    const QlixFLVAllocatorCallBacks memory = allocator.callBacks();
    result = QlixFLVDocOpenForRead(&input, &memory, &reader);
    return result;
}

QlixFLVTagIterator* FlvFixture::all(std::uint32_t direction) {
    QlixFLVTagIterator* iterator = nullptr;
    result = QlixFLVReaderGetTags(reader, kFirstTime, kLastTime, direction, &iterator);
    return iterator;
}

QlixFLVTagIterator* FlvFixture::ordered(const std::vector<std::uint8_t>& types) {
    QlixFLVTagIterator* iterator = nullptr;
    result = QlixFLVReaderGetTagsByTagTypes(reader, kFirstTime, kLastTime, 0, types.data(),
                                            static_cast<std::uint32_t>(types.size()), &iterator);
    return iterator;
}

SeenTag seen(QlixFLVTag* tag) {
    FLVTagInfo info{};
    QlixFLVTagGetInfo(tag, &info);
    return {info.tagType, info.timestamp, info.dataSize};
}

Bytes copied(QlixFLVTag* tag) {
    std::uint32_t length = 0;
    QlixFLVTagGetLength(tag, &length);
    Bytes out(length);
    std::uint32_t count = 0;
    if (QlixFLVTagCopyHeaderAndData(tag, length, out.data(), &count) != 0) return {};
    return out.cutTo(count);
}

std::vector<std::int32_t> Drained::times() const {
    std::vector<std::int32_t> out;
    for (const SeenTag& tag : tags) out.push_back(tag.timeMs);
    return out;
}

std::vector<int> Drained::types() const {
    std::vector<int> out;
    for (const SeenTag& tag : tags) out.push_back(tag.type);
    return out;
}

Drained drain(QlixFLVTagIterator* iterator) {
    Drained out;
    std::int32_t hasMore = 0;
    while ((out.result = QlixFLVTagIteratorHasMoreEntries(iterator, &hasMore)) == 0 &&
           hasMore == 1) {
        QlixFLVTag* tag = nullptr;
        out.result = QlixFLVTagIteratorGetNextEntry(iterator, &tag);
        if (out.result != 0) break;
        out.tags.push_back(seen(tag));
        out.bytes.push_back(copied(tag));
        QlixFLVReleaseTag(tag);
    }
    QlixFLVReleaseTagIterator(iterator);
    return out;
}

}  // namespace kz::test
