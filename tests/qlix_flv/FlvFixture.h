#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "qlix_flv/qlix_flv.h"
#include "support/Bytes.h"

namespace kz::test {

/// A stream over bytes in memory that counts what is asked of it and can be made to fail.
class MemoryStream {
public:
    explicit MemoryStream(Bytes content) : content_(std::move(content)) {}

    QlixFLVInputStreamCallBacks callBacks();

    int references = 0;
    int reads = 0;
    int seeks = 0;
    std::uint64_t bytesRead = 0;
    std::uint32_t longestRead = 0xffffffff;  ///< a read gives at most this many bytes
    std::optional<int> failingRead;          ///< reads from this number on fail; the first is 0
    std::uint64_t claimedSize = 0;           ///< when not 0, what the end is said to be

private:
    static std::uint32_t read(void* context, void* buffer, std::uint32_t size,
                              std::uint32_t* bytesRead);
    static std::uint32_t seek(void* context, std::int64_t offset, std::uint32_t whence);
    static std::uint32_t tell(void* context, std::int64_t* position);

    Bytes content_;
    std::uint64_t position_ = 0;
};

/// An allocator that knows what is alive and can be made to run out.
class CountingAllocator {
public:
    QlixFLVAllocatorCallBacks callBacks();

    std::uint64_t liveBytes = 0;
    std::uint64_t peakBytes = 0;
    int allocations = 0;
    std::optional<int> failingAllocation;  ///< this one and all later ones give null

private:
    std::unordered_map<void*, std::size_t> live_;
};

/// What a test wants to know of a tag.
struct SeenTag {
    int type = 0;
    std::int32_t timeMs = 0;
    std::uint32_t dataSize = 0;

    friend bool operator==(const SeenTag& left, const SeenTag& right) {
        return left.type == right.type && left.timeMs == right.timeMs &&
               left.dataSize == right.dataSize;
    }
};
std::ostream& operator<<(std::ostream& out, const SeenTag& tag);

/// A reader over bytes, with the stream and the allocator under it.
class FlvFixture {
public:
    static constexpr std::int32_t kFirstTime = INT32_MIN;
    static constexpr std::int32_t kLastTime = INT32_MAX;

    explicit FlvFixture(Bytes content) : stream(std::move(content)) {}
    ~FlvFixture();
    FlvFixture(const FlvFixture&) = delete;
    FlvFixture& operator=(const FlvFixture&) = delete;

    std::uint32_t open();
    /// All tags in the order of the file, or backward; both need `open`.
    QlixFLVTagIterator* all(std::uint32_t direction = 0);
    /// Tags of the types, in the order of their times.
    QlixFLVTagIterator* ordered(const std::vector<std::uint8_t>& types = {9, 8});

    MemoryStream stream;
    CountingAllocator allocator;
    QlixFLVReader* reader = nullptr;
    std::uint32_t result = 0;  ///< of the last `open`, `all` or `ordered`
};

SeenTag seen(QlixFLVTag* tag);
/// Header and body as the library copies them.
Bytes copied(QlixFLVTag* tag);

/// The rest of an iterator, which is released: tags up to the end or to a failure, which is kept
/// in `result`.
struct Drained {
    std::vector<SeenTag> tags;
    std::vector<Bytes> bytes;
    std::uint32_t result = 0;

    std::vector<std::int32_t> times() const;
    std::vector<int> types() const;
};
Drained drain(QlixFLVTagIterator* iterator);

}  // namespace kz::test
