#include "support/AmfBuilder.h"

namespace kz::test {

Bytes amfNumber(double value) { return u8(0x00) + f64(value); }

Bytes amfBool(bool value) { return u8(0x01) + u8(value ? 1 : 0); }

Bytes amfString(const std::string& value) { return u8(0x02) + amfName(value); }

Bytes amfObject(const AmfMembers& members) { return u8(0x03) + amfMembers(members); }

Bytes amfMovieClip() { return u8(0x04); }

Bytes amfNull() { return u8(0x05); }

Bytes amfUndefined() { return u8(0x06); }

Bytes amfReference(unsigned index) { return u8(0x07) + u16(index); }

Bytes amfEcmaArray(const AmfMembers& members) {
    return amfEcmaArray(members, static_cast<std::uint32_t>(members.size()));
}

Bytes amfEcmaArray(const AmfMembers& members, std::uint32_t count) {
    return u8(0x08) + u32(count) + amfMembers(members);
}

Bytes amfStrictArray(const std::vector<Bytes>& values) {
    Bytes out = u8(0x0a) + u32(values.size());
    for (const Bytes& value : values) out += value;
    return out;
}

Bytes amfDate(double milliseconds, int zoneMinutes) {
    return u8(0x0b) + f64(milliseconds) + u16(static_cast<std::uint64_t>(zoneMinutes));
}

Bytes amfLongString(const std::string& value) { return u8(0x0c) + u32(value.size()) + text(value); }

Bytes amfUnsupported() { return u8(0x0d); }

Bytes amfXml(const std::string& document) {
    return u8(0x0f) + u32(document.size()) + text(document);
}

Bytes amfTypedObject(const std::string& className, const AmfMembers& members) {
    return u8(0x10) + amfName(className) + amfMembers(members);
}

Bytes amfName(const std::string& name) { return u16(name.size()) + text(name); }

Bytes amfMembers(const AmfMembers& members) {
    Bytes out;
    for (const auto& [name, value] : members) out += amfName(name) + value;
    return out + raw({0, 0, 9});
}

}  // namespace kz::test
