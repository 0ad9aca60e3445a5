#include "kvl/amfmessage/AMF0Props.h"

#include "kvl/amfmessage/AMF0Markers.h"
#include "kvl/amfmessage/AMF0Values.h"

namespace kvl::amfmessage {

std::istream& AMF0PropObjectBegin::read(std::istream& stream) {
    return AMF0ObjectBegin().read(readName(stream));
}

std::ostream& AMF0PropObjectBegin::write(std::ostream& stream) const {
    return AMF0ObjectBegin().write(writeName(stream));
}

std::istream& AMF0PropNumber::read(std::istream& stream) {
    AMF0Number number;
    number.read(readName(stream));
    value = number.value;
    return stream;
}

std::ostream& AMF0PropNumber::write(std::ostream& stream) const {
    return AMF0Number(value).write(writeName(stream));
}

std::istream& AMF0PropString::read(std::istream& stream) {
    AMF0String text;
    text.read(readName(stream));
    value = std::move(text.value);
    return stream;
}

std::ostream& AMF0PropString::write(std::ostream& stream) const {
    return AMF0String(value).write(writeName(stream));
}

}  // namespace kvl::amfmessage
