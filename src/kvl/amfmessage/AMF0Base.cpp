#include "kvl/amfmessage/AMF0Base.h"

#include <utility>

#include "kvl/amfmessage/AMF0Values.h"

namespace kvl::amfmessage {

std::istream& AMF0PropBase::readName(std::istream& stream) {
    AMF0NoHeaderString text;
    text.read(stream);
    name = std::move(text.value);
    return stream;
}

std::ostream& AMF0PropBase::writeName(std::ostream& stream) const {
    return AMF0NoHeaderString(name).write(stream);
}

}  // namespace kvl::amfmessage
