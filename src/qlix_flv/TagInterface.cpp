#include "qlix_flv/Handles.h"

using namespace qlix::flv;

uint32_t QlixFLVTagIteratorHasMoreEntries(QlixFLVTagIterator* iterator, int32_t* hasMore) {
    return answer(iterator, hasMore, [](QlixFLVTagIterator& self, int32_t& out) {
        out = self.tags->hasMore() ? 1 : 0;
    });
}

uint32_t QlixFLVTagIteratorGetNextEntry(QlixFLVTagIterator* iterator, QlixFLVTag** tag) {
    return answer(iterator, tag, [](QlixFLVTagIterator& self, QlixFLVTag*& out) {
        out = createHandle(self.document->memory(), QlixFLVTag{self.document, self.tags->next()});
    });
}

uint32_t QlixFLVReleaseTagIterator(QlixFLVTagIterator* iterator) {
    if (iterator == nullptr) return kQlixFLVNullHandle;
    return releaseHandle(iterator, Memory(iterator->document->memory()));
}

uint32_t QlixFLVReleaseTag(QlixFLVTag* tag) {
    if (tag == nullptr) return kQlixFLVNullHandle;
    return releaseHandle(tag, Memory(tag->document->memory()));
}

uint32_t QlixFLVTagGetInfo(QlixFLVTag* tag, FLVTagInfo* info) {
    return answer(tag, info, [](QlixFLVTag& self, FLVTagInfo& out) {
        out.tagType = self.header.type;
        out.dataSize = self.header.bodySize;
        out.timestamp = self.header.timeMs;
    });
}

uint32_t QlixFLVTagGetVideoInfo(QlixFLVTag* tag, FLVVideoInfo* info) {
    return answer(tag, info, [](QlixFLVTag& self, FLVVideoInfo& out) {
        if (self.header.type != kVideoTag) fail(kQlixFLVWrongTagType);
        if (self.header.bodySize == 0) fail(kQlixFLVEmptyTag);
        const std::uint32_t byte = self.header.firstBodyByte;
        out = {byte >> 4, byte & 0x0f};
    });
}

uint32_t QlixFLVTagGetAudioInfo(QlixFLVTag* tag, FLVAudioInfo* info) {
    return answer(tag, info, [](QlixFLVTag& self, FLVAudioInfo& out) {
        if (self.header.type != kAudioTag) fail(kQlixFLVWrongTagType);
        if (self.header.bodySize == 0) fail(kQlixFLVEmptyTag);
        const std::uint32_t byte = self.header.firstBodyByte;
        out = {byte >> 4, byte >> 2 & 3, byte >> 1 & 1, byte & 1};
    });
}

uint32_t QlixFLVTagGetLength(QlixFLVTag* tag, uint32_t* length) {
    return answer(tag, length, [](QlixFLVTag& self, uint32_t& out) {
        out = kTagHeaderSize + self.header.bodySize;
    });
}

uint32_t QlixFLVTagCopyHeaderAndData(QlixFLVTag* tag, uint32_t size, uint8_t* buffer,
                                     uint32_t* bytesCopied) {
    return answer(tag, bytesCopied, [&](QlixFLVTag& self, uint32_t& out) {
        if (buffer == nullptr) fail(kQlixFLVNullPointer);
        out = copyOut(kTagHeaderSize + self.header.bodySize, size, buffer,
                      [&](std::uint8_t* to, std::uint32_t count) {
                          self.document->copy(self.header.offset, to, count);
                      });
    });
}

uint32_t QlixFLVTagGetScriptData(QlixFLVTag* tag, QlixFLVScriptData** data) {
    return answer(tag, data, [](QlixFLVTag& self, QlixFLVScriptData*& out) {
        if (self.header.type != kScriptTag) fail(kQlixFLVWrongTagType);
        const Memory& memory = self.document->memory();
        auto body = makeShared<MemoryBytes>(memory, self.header.bodySize, memory);
        self.document->copy(self.header.offset + kTagHeaderSize, body->data(),
                            self.header.bodySize);
        out = createHandle(memory, QlixFLVScriptData{ScriptValue::root(body)});
    });
}
