#include <cstring>

#include "qlix_flv/Handles.h"

using namespace qlix::flv;

namespace {

/// All handles on script data share a body, and the body knows the memory.
Memory memoryOf(const ScriptBody& body) { return body->get_allocator(); }

}  // namespace

uint32_t QlixFLVScriptDataGetName(QlixFLVScriptData* data, QlixFLVScriptDataString** name) {
    return answer(data, name, [](QlixFLVScriptData& self, QlixFLVScriptDataString*& out) {
        out = createHandle(memoryOf(self.value.body()), QlixFLVScriptDataString{self.value.name()});
    });
}

uint32_t QlixFLVScriptDataGetNumber(QlixFLVScriptData* data, double* number) {
    return answer(data, number,
                  [](QlixFLVScriptData& self, double& out) { out = self.value.number(); });
}

uint32_t QlixFLVScriptDataGetIterator(QlixFLVScriptData* data,
                                      QlixFLVScriptDataIterator** iterator) {
    return answer(data, iterator, [](QlixFLVScriptData& self, QlixFLVScriptDataIterator*& out) {
        const Memory memory = memoryOf(self.value.body());
        out = createHandle(memory, QlixFLVScriptDataIterator{memory, ScriptMembers(self.value)});
    });
}

uint32_t QlixFLVScriptDataIteratorHasMoreEntries(QlixFLVScriptDataIterator* iterator,
                                                 int32_t* hasMore) {
    return answer(iterator, hasMore, [](QlixFLVScriptDataIterator& self, int32_t& out) {
        out = self.members.hasMore() ? 1 : 0;
    });
}

uint32_t QlixFLVScriptDataIteratorGetNextEntry(QlixFLVScriptDataIterator* iterator,
                                               QlixFLVScriptData** data) {
    return answer(iterator, data, [](QlixFLVScriptDataIterator& self, QlixFLVScriptData*& out) {
        out = createHandle(self.memory, QlixFLVScriptData{self.members.next()});
    });
}

uint32_t QlixFLVScriptDataStringGetLength(QlixFLVScriptDataString* string, uint32_t* length) {
    return answer(string, length, [](QlixFLVScriptDataString& self, uint32_t& out) {
        out = static_cast<std::uint32_t>(self.text.length);
    });
}

uint32_t QlixFLVScriptDataStringCopyData(QlixFLVScriptDataString* string, uint32_t size,
                                         uint8_t* buffer, uint32_t* bytesCopied) {
    return answer(string, bytesCopied, [&](QlixFLVScriptDataString& self, uint32_t& out) {
        if (buffer == nullptr) fail(kQlixFLVNullPointer);
        out = copyOut(static_cast<std::uint32_t>(self.text.length), size, buffer,
                      [&](std::uint8_t* to, std::uint32_t count) {
                          std::memcpy(to, self.text.data(), count);
                      });
    });
}

uint32_t QlixFLVReleaseScriptData(QlixFLVScriptData* data) {
    if (data == nullptr) return kQlixFLVNullHandle;
    return releaseHandle(data, memoryOf(data->value.body()));
}

uint32_t QlixFLVReleaseScriptDataIterator(QlixFLVScriptDataIterator* iterator) {
    if (iterator == nullptr) return kQlixFLVNullHandle;
    return releaseHandle(iterator, Memory(iterator->memory));
}

uint32_t QlixFLVReleaseScriptDataString(QlixFLVScriptDataString* string) {
    if (string == nullptr) return kQlixFLVNullHandle;
    return releaseHandle(string, memoryOf(string->text.body));
}
