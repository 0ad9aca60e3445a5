#pragma once

#include <sstream>
#include <string>

#include "kvl/amfmessage/AMF0Base.h"
#include "support/Bytes.h"

namespace kz::test {

inline Bytes written(const kvl::amfmessage::AMF0Base& item) {
    std::ostringstream stream;
    item.write(stream);
    return bytesOf(stream.str());
}

/// Reads the item and gives the number of bytes that it took.
inline std::size_t readFrom(const Bytes& bytes, kvl::amfmessage::AMF0Base& item) {
    std::istringstream stream(bytes.str());
    item.read(stream);
    return stream.good() ? static_cast<std::size_t>(stream.tellg()) : 0;
}

}  // namespace kz::test
