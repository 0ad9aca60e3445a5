#pragma once

#include "kzm/impl/Box.h"

namespace qlix::kzm::impl {

/// A box of a user's own type, whose body is held as one block.
///
///   offset  size  field
///        0     8  box header: 'uuid'
///        8    16  extended type
///       24     n  body
class UuidBox : public Box {
public:
    UuidBox(const BoxContext& context, const ExtendedType& type, const std::uint8_t* body,
            std::size_t bodySize);
    UuidBox(const BoxContext& context, const BoxHeader& header);

    void writeHeader() override;
    void writeFields() override;
    void readFields() override;

    const BoxVector<std::uint8_t>& body() const { return body_; }

private:
    BoxVector<std::uint8_t> body_;
};

/// The `uuid` box of XMP metadata.
class XMPDataBox final : public UuidBox {
public:
    XMPDataBox(const BoxContext& context, const std::uint8_t* body, std::size_t bodySize)
        : UuidBox(context, kXmpType, body, bodySize) {}
    XMPDataBox(const BoxContext& context, const BoxHeader& header) : UuidBox(context, header) {}
};

}  // namespace qlix::kzm::impl
