#include "qlix_flv/ScriptValue.h"

#include <utility>

#include "qlix_flv/ByteOrder.h"
#include "qlix_flv/Failure.h"

namespace qlix::flv {
namespace {

enum Marker : std::uint8_t {
    kNumber = 0x00,
    kBool = 0x01,
    kString = 0x02,
    kObject = 0x03,
    kMovieClip = 0x04,
    kNull = 0x05,
    kUndefined = 0x06,
    kReference = 0x07,
    kEcmaArray = 0x08,
    kObjectEnd = 0x09,
    kStrictArray = 0x0a,
    kDate = 0x0b,
    kLongString = 0x0c,
    kUnsupported = 0x0d,
    kXml = 0x0f,
    kTypedObject = 0x10
};

constexpr std::size_t kNumberSize = 8;
constexpr std::size_t kDateSize = 10;
/// A hostile file can't use up the stack.
constexpr int kDeepestNesting = 64;

/// Names and values end with an empty name and its marker. A body that ends without them, as some
/// writers leave it, ends the members as well.
bool isEndOfMembers(const AmfCursor& at) {
    if (at.left() == 0) return true;
    if (at.left() == 2) return loadU16(at.peek(2)) == 0;
    return at.left() >= 3 && loadU24(at.peek(3)) == kObjectEnd;
}

void skipValue(AmfCursor& at, int depth);

void skipMembers(AmfCursor& at, int depth) {
    while (!isEndOfMembers(at)) {
        at.skip(at.u16());
        skipValue(at, depth);
    }
    at.skip(at.left() < 3 ? at.left() : 3);
}

void skipStrictArray(AmfCursor& at, int depth) {
    const std::uint32_t count = at.u32();
    if (count > at.left()) fail(kQlixFLVCorruptData);
    for (std::uint32_t i = 0; i < count; ++i) skipValue(at, depth);
}

void skipValue(AmfCursor& at, int depth) {
    if (depth >= kDeepestNesting) fail(kQlixFLVCorruptData);
    switch (at.u8()) {
        case kNumber:
            return at.skip(kNumberSize);
        case kBool:
            return at.skip(1);
        case kString:
            return at.skip(at.u16());
        case kObject:
            return skipMembers(at, depth + 1);
        case kMovieClip:
        case kNull:
        case kUndefined:
        case kUnsupported:
            return;
        case kReference:
            return at.skip(2);
        case kEcmaArray:
            at.skip(4);
            return skipMembers(at, depth + 1);
        case kStrictArray:
            return skipStrictArray(at, depth + 1);
        case kDate:
            return at.skip(kDateSize);
        case kLongString:
        case kXml:
            return at.skip(at.u32());
        case kTypedObject:
            at.skip(at.u16());
            return skipMembers(at, depth + 1);
        default:
            fail(kQlixFLVCorruptData);
    }
}

}  // namespace

const std::uint8_t* AmfCursor::peek(std::size_t count) const {
    if (count > left()) fail(kQlixFLVCorruptData);
    return bytes_.data() + offset_;
}

void AmfCursor::skip(std::size_t count) {
    if (count > left()) fail(kQlixFLVCorruptData);
    offset_ += count;
}

std::uint8_t AmfCursor::u8() {
    const std::uint8_t value = *peek(1);
    skip(1);
    return value;
}

std::uint16_t AmfCursor::u16() {
    const std::uint16_t value = loadU16(peek(2));
    skip(2);
    return value;
}

std::uint32_t AmfCursor::u32() {
    const std::uint32_t value = loadU32(peek(4));
    skip(4);
    return value;
}

ScriptValue ScriptValue::root(const ScriptBody& body) {
    ScriptText name{body, 0, 0};
    AmfCursor at(*body, 0);
    const std::uint8_t marker = at.left() > 0 ? at.u8() : std::uint8_t{kNull};
    // A tag that doesn't begin with a string isn't an event that anybody looks for.
    if (marker != kString && marker != kLongString) return {name, body->size()};
    name.length = marker == kString ? at.u16() : at.u32();
    name.offset = at.offset();
    at.skip(name.length);
    return {name, at.offset()};
}

ScriptValue::ScriptValue(ScriptText name, std::size_t offset)
    : name_(std::move(name)), offset_(offset) {}

double ScriptValue::number() const {
    AmfCursor at(*body(), offset_);
    if (at.left() == 0 || at.u8() != kNumber) fail(kQlixFLVWrongValueType);
    return loadDouble(at.peek(kNumberSize));
}

ScriptMembers::ScriptMembers(const ScriptValue& value) : body_(value.body()) {
    AmfCursor at(*body_, value.offset());
    if (at.left() == 0) return;
    switch (at.u8()) {
        case kObject:
            kind_ = Kind::named;
            break;
        case kEcmaArray:
            // The count is a hint only: many writers leave it 0.
            at.skip(4);
            kind_ = Kind::named;
            break;
        case kTypedObject:
            at.skip(at.u16());
            kind_ = Kind::named;
            break;
        case kStrictArray:
            left_ = at.u32();
            kind_ = Kind::counted;
            break;
        case kNull:
        case kUndefined:
        case kReference:
        case kUnsupported:
            break;
        default:
            fail(kQlixFLVWrongValueType);
    }
    offset_ = at.offset();
}

bool ScriptMembers::hasMore() const {
    if (kind_ == Kind::counted) return left_ > 0;
    return kind_ == Kind::named && !isEndOfMembers(AmfCursor(*body_, offset_));
}

ScriptValue ScriptMembers::next() {
    if (!hasMore()) fail(kQlixFLVNoMoreEntries);
    AmfCursor at(*body_, offset_);
    ScriptText name{body_, offset_, 0};
    if (kind_ == Kind::named) {
        name.length = at.u16();
        name.offset = at.offset();
        at.skip(name.length);
    }
    const std::size_t valueOffset = at.offset();
    skipValue(at, 0);
    offset_ = at.offset();
    if (kind_ == Kind::counted) --left_;
    return {name, valueOffset};
}

}  // namespace qlix::flv
