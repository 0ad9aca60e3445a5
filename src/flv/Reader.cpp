#include "flv/Reader.h"

#include <limits>

#include "flv/Exception.h"

namespace flv {
namespace {

constexpr std::int32_t kFirstTime = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t kLastTime = std::numeric_limits<std::int32_t>::max();

struct CallBacks {
    CallBacks(InputStream& stream, Allocator& memory) {
        stream.getCallBacks(input);
        memory.getCallBacks(allocator);
    }

    QlixFLVInputStreamCallBacks input;
    QlixFLVAllocatorCallBacks allocator;
};

QlixFLVReader* openForRead(InputStream& stream, Allocator& allocator) {
    const CallBacks callBacks(stream, allocator);
    QlixFLVReader* reader = nullptr;
    check(QlixFLVDocOpenForRead(&callBacks.input, &callBacks.allocator, &reader));
    return reader;
}

}  // namespace

Reader::Reader(InputStream& stream, Allocator& allocator)
    : handle_(openForRead(stream, allocator)) {}

bool Reader::isFLV(InputStream& stream, Allocator& allocator) {
    const CallBacks callBacks(stream, allocator);
    // On purpose: the answer begins as yes; only the library says no.
    // Pinned by ReaderTest.TakesAFileForFLVUnlessTheLibrarySaysNo.
    std::int32_t answer = 1;
    check(QlixFLVDocIsFLV(&callBacks.input, &callBacks.allocator, &answer));
    return answer == 1;
}

FLVDocInfo Reader::getDocInfo() const {
    FLVDocInfo info{};
    check(QlixFLVReaderGetDocInfo(handle_.get(), &info));
    return info;
}

TagIterator Reader::getTags(Direction direction) const {
    QlixFLVTagIterator* iterator = nullptr;
    check(QlixFLVReaderGetTags(handle_.get(), kFirstTime, kLastTime,
                               static_cast<std::uint32_t>(direction), &iterator));
    return TagIterator(iterator);
}

TagIterator Reader::getTagsByTagTypes(const TagFilter& filter) const {
    QlixFLVTagIterator* iterator = nullptr;
    check(QlixFLVReaderGetTagsByTagTypes(
        handle_.get(), kFirstTime, kLastTime, static_cast<std::uint32_t>(Direction::forward),
        filter.types().data(), static_cast<std::uint32_t>(filter.types().size()), &iterator));
    return TagIterator(iterator);
}

}  // namespace flv
