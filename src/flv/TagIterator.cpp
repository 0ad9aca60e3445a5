#include "flv/TagIterator.h"

#include "flv/Exception.h"

namespace flv {

bool TagIterator::hasNext() const {
    std::int32_t hasMore = 0;
    check(QlixFLVTagIteratorHasMoreEntries(handle_.get(), &hasMore));
    return hasMore == 1;
}

Tag TagIterator::next() {
    QlixFLVTag* tag = nullptr;
    check(QlixFLVTagIteratorGetNextEntry(handle_.get(), &tag));
    return Tag(tag);
}

}  // namespace flv
