#pragma once

#include "flv/RefHolder.h"
#include "flv/Tag.h"

namespace flv {

/// Walks tags of a file. Copies share the handle and with it the position.
class TagIterator {
public:
    TagIterator() = default;
    /// Takes the handle over.
    explicit TagIterator(QlixFLVTagIterator* handle) : handle_(handle) {}

    /// True also where `next` has a failure to tell. Throws Exception.
    bool hasNext() const;
    /// Throws Exception: at the end, and with kCorruptData where the file is damaged.
    Tag next();

private:
    SharedHandle<QlixFLVTagIterator> handle_;
};

}  // namespace flv
