#include <algorithm>
#include <cstdlib>
#include <vector>

#include "fuzz/FuzzTarget.h"
#include "qlix_flv/qlix_flv.h"

namespace {

using kz::fuzz::require;

constexpr std::size_t kTagHeaderSize = 11;
constexpr int kDeepest = 8;

/// A stream over the input that counts its references; odd settings make reads short.
struct Input {
    const std::uint8_t* data;
    std::size_t size;
    std::uint32_t longestRead;
    std::int64_t position = 0;
    int references = 0;
};

Input& inputOf(void* context) { return *static_cast<Input*>(context); }

std::uint32_t readInput(void* context, void* buffer, std::uint32_t size, std::uint32_t* got) {
    Input& in = inputOf(context);
    const auto at = static_cast<std::size_t>(in.position);
    const std::size_t left = at < in.size ? in.size - at : 0;
    const std::size_t count = std::min({left, std::size_t{size}, std::size_t{in.longestRead}});
    std::copy_n(in.data + (left > 0 ? at : 0), count, static_cast<std::uint8_t*>(buffer));
    in.position += static_cast<std::int64_t>(count);
    *got = static_cast<std::uint32_t>(count);
    return 0;
}

std::uint32_t seekInput(void* context, std::int64_t offset, std::uint32_t whence) {
    Input& in = inputOf(context);
    const std::int64_t base =
        whence == 0 ? 0 : (whence == 1 ? in.position : static_cast<std::int64_t>(in.size));
    if (base + offset < 0) return 1;
    in.position = base + offset;
    return 0;
}

std::uint32_t tellInput(void* context, std::int64_t* position) {
    *position = inputOf(context).position;
    return 0;
}

QlixFLVInputStreamCallBacks callBacksOf(Input& in) {
    QlixFLVInputStreamCallBacks out;
    out.context = &in;
    out.addRef = [](void* context) { ++inputOf(context).references; };
    out.release = [](void* context) { --inputOf(context).references; };
    out.read = readInput;
    out.seek = seekInput;
    out.tell = tellInput;
    return out;
}

QlixFLVAllocatorCallBacks heap() {
    QlixFLVAllocatorCallBacks out;
    out.allocate = [](void*, std::size_t size) { return std::malloc(size); };
    out.free = [](void*, void* pointer) { std::free(pointer); };
    return out;
}

void walkString(QlixFLVScriptDataString* string) {
    std::uint32_t length = 0;
    require(QlixFLVScriptDataStringGetLength(string, &length) == kQlixFLVOk, "a name has a length");
    std::vector<std::uint8_t> bytes(length);
    std::uint32_t copied = 0;
    QlixFLVScriptDataStringCopyData(string, length, bytes.data(), &copied);
    QlixFLVReleaseScriptDataString(string);
}

void walkScript(QlixFLVScriptData* data, int depth) {
    QlixFLVScriptDataString* name = nullptr;
    if (QlixFLVScriptDataGetName(data, &name) == kQlixFLVOk) walkString(name);
    double number = 0;
    QlixFLVScriptDataGetNumber(data, &number);
    QlixFLVScriptDataIterator* members = nullptr;
    if (depth < kDeepest && QlixFLVScriptDataGetIterator(data, &members) == kQlixFLVOk) {
        std::int32_t hasMore = 0;
        QlixFLVScriptData* member = nullptr;
        while (QlixFLVScriptDataIteratorHasMoreEntries(members, &hasMore) == kQlixFLVOk &&
               hasMore == 1 &&
               QlixFLVScriptDataIteratorGetNextEntry(members, &member) == kQlixFLVOk) {
            walkScript(member, depth + 1);
        }
        QlixFLVReleaseScriptDataIterator(members);
    }
    QlixFLVReleaseScriptData(data);
}

void walkTag(QlixFLVTag* tag) {
    FLVTagInfo info{};
    FLVVideoInfo video{};
    FLVAudioInfo audio{};
    std::uint32_t length = 0;
    require(QlixFLVTagGetInfo(tag, &info) == kQlixFLVOk, "a tag tells its header");
    QlixFLVTagGetVideoInfo(tag, &video);
    QlixFLVTagGetAudioInfo(tag, &audio);
    require(QlixFLVTagGetLength(tag, &length) == kQlixFLVOk, "a tag has a length");
    require(length == info.dataSize + kTagHeaderSize, "the length is header and body");
    std::vector<std::uint8_t> bytes(length);
    std::uint32_t copied = 0;
    require(QlixFLVTagCopyHeaderAndData(tag, length, bytes.data(), &copied) == kQlixFLVOk &&
                copied == length,
            "a tag that is given out lies in the file");
    QlixFLVScriptData* script = nullptr;
    if (QlixFLVTagGetScriptData(tag, &script) == kQlixFLVOk) walkScript(script, 0);
    QlixFLVReleaseTag(tag);
}

std::size_t walk(QlixFLVTagIterator* tags) {
    std::size_t count = 0;
    std::int32_t hasMore = 0;
    QlixFLVTag* tag = nullptr;
    while (QlixFLVTagIteratorHasMoreEntries(tags, &hasMore) == kQlixFLVOk && hasMore == 1 &&
           QlixFLVTagIteratorGetNextEntry(tags, &tag) == kQlixFLVOk) {
        ++count;
        walkTag(tag);
    }
    QlixFLVReleaseTagIterator(tags);
    return count;
}

void walkReader(QlixFLVReader* reader, std::size_t mostTags) {
    FLVDocInfo info{};
    require(QlixFLVReaderGetDocInfo(reader, &info) == kQlixFLVOk, "damage is no failure here");
    QlixFLVTagIterator* tags = nullptr;
    for (const std::uint32_t direction : {0u, 1u}) {
        if (QlixFLVReaderGetTags(reader, INT32_MIN, INT32_MAX, direction, &tags) == kQlixFLVOk) {
            require(walk(tags) <= mostTags, "no tag is given out twice");
        }
        for (const std::vector<std::uint8_t>& types :
             {std::vector<std::uint8_t>{8, 9}, {18}, {15, 18, 9}}) {
            const auto count = static_cast<std::uint32_t>(types.size());
            if (QlixFLVReaderGetTagsByTagTypes(reader, -1000, 2000, direction, types.data(), count,
                                               &tags) == kQlixFLVOk) {
                require(walk(tags) <= mostTags, "no tag is given out twice");
            }
        }
    }
}

}  // namespace

/// Every operation, forward and backward, with whole and with short reads.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    for (const std::uint32_t longestRead : {0xFFFFFFFFu, 7u}) {
        Input in{data, size, longestRead};
        const QlixFLVInputStreamCallBacks input = callBacksOf(in);
        const QlixFLVAllocatorCallBacks memory = heap();
        std::int32_t isFlv = 0;
        QlixFLVDocIsFLV(&input, &memory, &isFlv);
        QlixFLVReader* reader = nullptr;
        if (QlixFLVDocOpenForRead(&input, &memory, &reader) == kQlixFLVOk) {
            require(isFlv == 1, "only an FLV file can be opened");
            walkReader(reader, size / kTagHeaderSize);
            QlixFLVCloseReader(reader);
        }
        require(in.references == 0, "all references on the stream are given back");
    }
    return 0;
}
