#include "flv/ScriptDataIterator.h"

#include "flv/Exception.h"

namespace flv {

bool ScriptDataIterator::hasNext() const {
    std::int32_t hasMore = 0;
    check(QlixFLVScriptDataIteratorHasMoreEntries(handle_.get(), &hasMore));
    return hasMore == 1;
}

ScriptData ScriptDataIterator::next() {
    QlixFLVScriptData* data = nullptr;
    check(QlixFLVScriptDataIteratorGetNextEntry(handle_.get(), &data));
    return ScriptData(data);
}

}  // namespace flv
