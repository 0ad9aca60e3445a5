#pragma once

#include "kvl/amfmessage/AMF0Base.h"

namespace kvl::amfmessage {

/// Opens an object: the byte 0x03.
class AMF0ObjectBegin final : public AMF0Base {
public:
    std::istream& read(std::istream& stream) override;
    std::ostream& write(std::ostream& stream) const override;
};

/// Closes an object: an empty name, then 0x09. `read` takes any name.
class AMF0ObjectEnd final : public AMF0Base {
public:
    std::istream& read(std::istream& stream) override;
    std::ostream& write(std::ostream& stream) const override;
};

/// Opens an ECMA array: 0x08, then a 32-bit count that is always 0.
class AMF0ArrayBegin final : public AMF0Base {
public:
    std::istream& read(std::istream& stream) override;
    std::ostream& write(std::ostream& stream) const override;
};

/// Closes an ECMA array, in the same bytes as AMF0ObjectEnd.
class AMF0ArrayEnd final : public AMF0Base {
public:
    std::istream& read(std::istream& stream) override;
    std::ostream& write(std::ostream& stream) const override;
};

/// Opens a strict array: 0x0A, then the number of items in 32 bits.
class AMF0StrictArrayBegin final : public AMF0Base {
public:
    AMF0StrictArrayBegin() = default;
    explicit AMF0StrictArrayBegin(double itemCount) : count(itemCount) {}

    std::istream& read(std::istream& stream) override;
    std::ostream& write(std::ostream& stream) const override;

    /// Truncated to an integer when written; what is not a number counts as 0.
    double count = 0.0;
};

}  // namespace kvl::amfmessage
