#pragma once

#include <exception>
#include <istream>
#include <ostream>
#include <string>
#include <utility>

namespace kvl::amfmessage {

/// A marker or a count isn't what `read` expects.
class ParseException : public std::exception {};

/// A string is too long for the length field that it has to stand behind.
class WriteException : public std::exception {};

/// One AMF0 item that knows how to take itself off a stream and put itself on one.
///
/// All integers and doubles are big-endian. There is no tree: a record is written by writing
/// its items one after another.
///
/// `read` throws ParseException where a marker or count is wrong. A short read is not tested
/// for: the stream's own exception setting decides what becomes of it, and without one the
/// item is left with what did arrive.
class AMF0Base {
public:
    AMF0Base() = default;
    AMF0Base(const AMF0Base&) = default;
    AMF0Base& operator=(const AMF0Base&) = default;

    virtual std::istream& read(std::istream& stream) = 0;
    virtual std::ostream& write(std::ostream& stream) const = 0;

    virtual ~AMF0Base() = default;
};

/// An item that is the value of a named property; the name stands in front of it.
///
/// Names of 65536 bytes or more make `write` throw WriteException before anything is written.
class AMF0PropBase : public AMF0Base {
public:
    AMF0PropBase() = default;
    explicit AMF0PropBase(std::string propertyName) : name(std::move(propertyName)) {}

    std::string name;

protected:
    std::istream& readName(std::istream& stream);
    std::ostream& writeName(std::ostream& stream) const;
};

}  // namespace kvl::amfmessage
