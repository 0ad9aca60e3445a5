#pragma once

#include <string>
#include <utility>

#include "kvl/amfmessage/AMF0Base.h"

namespace kvl::amfmessage {

/// A property that opens an object: the name, then 0x03.
class AMF0PropObjectBegin final : public AMF0PropBase {
public:
    using AMF0PropBase::AMF0PropBase;

    std::istream& read(std::istream& stream) override;
    std::ostream& write(std::ostream& stream) const override;
};

/// A property that is a number: the name, then the bytes of an AMF0Number.
class AMF0PropNumber final : public AMF0PropBase {
public:
    AMF0PropNumber() = default;
    AMF0PropNumber(std::string propertyName, double number)
        : AMF0PropBase(std::move(propertyName)), value(number) {}

    std::istream& read(std::istream& stream) override;
    std::ostream& write(std::ostream& stream) const override;

    double value = 0.0;
};

/// A property that is a string: the name, then the bytes of an AMF0String.
class AMF0PropString final : public AMF0PropBase {
public:
    AMF0PropString() = default;
    AMF0PropString(std::string propertyName, std::string text)
        : AMF0PropBase(std::move(propertyName)), value(std::move(text)) {}

    std::istream& read(std::istream& stream) override;
    std::ostream& write(std::ostream& stream) const override;

    std::string value;
};

}  // namespace kvl::amfmessage
