#include <array>

#include "qlix_flv/Handles.h"
#include "qlix_flv/TagWalk.h"
#include "qlix_flv/TimeOrderedTags.h"

namespace qlix::flv {
namespace {

constexpr std::uint32_t kForward = 0;
constexpr std::uint32_t kBackward = 1;

bool areComplete(const QlixFLVInputStreamCallBacks* input,
                 const QlixFLVAllocatorCallBacks* allocator) {
    return input != nullptr && allocator != nullptr && input->addRef != nullptr &&
           input->release != nullptr && input->read != nullptr && input->seek != nullptr &&
           input->tell != nullptr && allocator->allocate != nullptr && allocator->free != nullptr;
}

bool beginsLikeFLV(const QlixFLVInputStreamCallBacks& input) {
    Stream stream(input);
    if (stream.size() < kFileHeaderSize) return false;
    std::array<std::uint8_t, kFileHeaderSize> header{};
    stream.readAt(0, header.data(), kFileHeaderSize);
    return isFileHeader(header.data());
}

std::shared_ptr<TagSequence> backwardTags(Document& document, const TagSelection& selection) {
    // The last size word is tried here, so that nobody sets out on a file that lacks it.
    TagSelection anything;
    anything.types.set();
    BackwardWalk(document, anything).next();
    return makeShared<WalkedTags<BackwardWalk>>(document.memory(),
                                                BackwardWalk(document, selection));
}

std::shared_ptr<TagSequence> forwardTags(Document& document, const TagSelection& selection) {
    return makeShared<WalkedTags<ForwardWalk>>(
        document.memory(), ForwardWalk(document, selection, ReadAhead::Gap::skip));
}

/// For the iterator by types only. The other one, by which a file is looked over when it is opened,
/// gives tags in the order of the file.
std::shared_ptr<TagSequence> orderedTags(Document& document, const TagSelection& selection) {
    return makeShared<TimeOrderedTags>(document.memory(), document, selection);
}

using MakeForward = std::shared_ptr<TagSequence> (*)(Document&, const TagSelection&);

QlixFLVTagIterator* makeIterator(const QlixFLVReader& reader, const TagSelection& selection,
                                 std::uint32_t direction, MakeForward makeForward) {
    if (direction != kForward && direction != kBackward) fail(kQlixFLVWrongDirection);
    Document& document = *reader.document;
    auto tags = direction == kBackward ? backwardTags(document, selection)
                                       : makeForward(document, selection);
    return createHandle(document.memory(), QlixFLVTagIterator{reader.document, std::move(tags)});
}

TagSelection selectionOf(std::int32_t startTime, std::int32_t endTime) {
    TagSelection selection;
    selection.startMs = startTime;
    selection.endMs = endTime;
    return selection;
}

}  // namespace
}  // namespace qlix::flv

using namespace qlix::flv;

uint32_t QlixFLVDocIsFLV(const QlixFLVInputStreamCallBacks* input,
                         const QlixFLVAllocatorCallBacks* allocator, int32_t* isFLV) {
    if (isFLV != nullptr) *isFLV = 0;
    if (!areComplete(input, allocator) || isFLV == nullptr) return kQlixFLVNullPointer;
    return guarded([&] { *isFLV = beginsLikeFLV(*input) ? 1 : 0; });
}

uint32_t QlixFLVDocOpenForRead(const QlixFLVInputStreamCallBacks* input,
                               const QlixFLVAllocatorCallBacks* allocator, QlixFLVReader** reader) {
    if (reader != nullptr) *reader = nullptr;
    if (!areComplete(input, allocator) || reader == nullptr) return kQlixFLVNullPointer;
    return guarded([&] {
        const Memory memory(*allocator);
        *reader = createHandle(memory, QlixFLVReader{makeShared<Document>(memory, *input, memory)});
    });
}

uint32_t QlixFLVCloseReader(QlixFLVReader* reader) {
    if (reader == nullptr) return kQlixFLVNullHandle;
    return releaseHandle(reader, Memory(reader->document->memory()));
}

uint32_t QlixFLVReaderGetDocInfo(QlixFLVReader* reader, FLVDocInfo* info) {
    return answer(reader, info,
                  [](QlixFLVReader& self, FLVDocInfo& out) { out = self.document->info(); });
}

uint32_t QlixFLVReaderGetTags(QlixFLVReader* reader, int32_t startTime, int32_t endTime,
                              uint32_t direction, QlixFLVTagIterator** iterator) {
    return answer(reader, iterator, [&](QlixFLVReader& self, QlixFLVTagIterator*& out) {
        out = makeIterator(self, selectionOf(startTime, endTime), direction, forwardTags);
    });
}

uint32_t QlixFLVReaderGetTagsByTagTypes(QlixFLVReader* reader, int32_t startTime, int32_t endTime,
                                        uint32_t direction, const uint8_t* types,
                                        uint32_t typeCount, QlixFLVTagIterator** iterator) {
    return answer(reader, iterator, [&](QlixFLVReader& self, QlixFLVTagIterator*& out) {
        if (types == nullptr && typeCount > 0) fail(kQlixFLVNullPointer);
        TagSelection selection = selectionOf(startTime, endTime);
        selection.types.reset();
        for (std::uint32_t i = 0; i < typeCount; ++i) selection.types.set(types[i]);
        out = makeIterator(self, selection, direction, orderedTags);
    });
}
