#pragma once

#include <string>
#include <utility>

#include "kvl/amfmessage/AMF0Base.h"

namespace kvl::amfmessage {

/// A number.
///
///   offset  size  field
///        0     1  0x00
///        1     8  double
class AMF0Number final : public AMF0Base {
public:
    AMF0Number() = default;
    explicit AMF0Number(double number) : value(number) {}

    std::istream& read(std::istream& stream) override;
    std::ostream& write(std::ostream& stream) const override;

    double value = 0.0;
};

/// A string in one of two forms: the short one holds up to 65535 bytes, the long one the rest.
///
///   offset  size  field           offset  size  field
///        0     1  0x02                 0     1  0x0C
///        1     2  length               1     4  length
///        3     n  bytes                5     n  bytes
///
/// `write` throws WriteException for a string that 32 bits can't measure.
class AMF0String final : public AMF0Base {
public:
    AMF0String() = default;
    explicit AMF0String(std::string text) : value(std::move(text)) {}

    std::istream& read(std::istream& stream) override;
    std::ostream& write(std::ostream& stream) const override;

    std::string value;
};

/// A string without a marker, as names of properties are written.
///
///   offset  size  field
///        0     2  length
///        2     n  bytes
///
/// There is no long form: from 65536 bytes on `write` throws WriteException, before anything
/// is written.
class AMF0NoHeaderString final : public AMF0Base {
public:
    AMF0NoHeaderString() = default;
    explicit AMF0NoHeaderString(std::string text) : value(std::move(text)) {}

    std::istream& read(std::istream& stream) override;
    std::ostream& write(std::ostream& stream) const override;

    std::string value;
};

}  // namespace kvl::amfmessage
