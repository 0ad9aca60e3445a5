#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "qlix_flv/Memory.h"

namespace qlix::flv {

/// The body of a script tag, shared by all values and names that lie in it.
using ScriptBody = std::shared_ptr<const MemoryBytes>;

/// A name or a string inside a script body.
struct ScriptText {
    ScriptBody body;
    std::size_t offset = 0;
    std::size_t length = 0;

    const std::uint8_t* data() const { return body->data() + offset; }
};

/// A position in a script body that can't leave it: every step past the end fails with
/// kQlixFLVCorruptData.
class AmfCursor {
public:
    AmfCursor(const MemoryBytes& bytes, std::size_t offset) : bytes_(bytes), offset_(offset) {}

    std::size_t offset() const { return offset_; }
    std::size_t left() const { return bytes_.size() - offset_; }
    const std::uint8_t* peek(std::size_t count) const;

    void skip(std::size_t count);
    std::uint8_t u8();
    std::uint16_t u16();
    std::uint32_t u32();

private:
    const MemoryBytes& bytes_;  // outlives this
    std::size_t offset_;
};

/// One AMF0 value with its name.
class ScriptValue {
public:
    /// The root of a script body: name is its first value, if that is a string, and the value is
    /// its second. Fails with kQlixFLVCorruptData where the name leaves the body.
    static ScriptValue root(const ScriptBody& body);

    /// A value at `offset`; at the end of the body there is none.
    ScriptValue(ScriptText name, std::size_t offset);

    const ScriptText& name() const { return name_; }
    const ScriptBody& body() const { return name_.body; }
    /// Fails with kQlixFLVWrongValueType for any other type than number.
    double number() const;
    /// Where the type marker stands.
    std::size_t offset() const { return offset_; }

private:
    ScriptText name_;
    std::size_t offset_;
};

/// The members of an object, a typed object, an array with names or a strict array, in order.
class ScriptMembers {
public:
    /// Fails with kQlixFLVWrongValueType where the value has a type that can't hold any.
    explicit ScriptMembers(const ScriptValue& value);

    /// True while `next` has a member, or damage to tell.
    bool hasMore() const;
    /// Fails with kQlixFLVNoMoreEntries and kQlixFLVCorruptData.
    ScriptValue next();

private:
    enum class Kind { none, named, counted };

    ScriptBody body_;
    Kind kind_ = Kind::none;
    std::size_t offset_ = 0;
    std::uint32_t left_ = 0;  ///< of a strict array
};

}  // namespace qlix::flv
