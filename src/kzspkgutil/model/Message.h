#pragma once

#include <cstdint>

#include "kzs/base/Timestamp.h"

namespace torvo::kzspkgutil {

using kzs::Timestamp;

/// One sample as a complete FLV tag image.
///
/// Tag image, big-endian, as in FLV files:
///
///   offset  size  field
///        0     1  tag type: 8 audio, 9 video, 18 data (AMF0), 15 data (AMF3); 0x20 added when the
///                 body carries an encryption header
///        1     3  body size n
///        4     3  time in milliseconds, low 24 bits
///        7     1  time, high 8 bits
///        8     3  stream id
///       11     n  body: codec header, then sample data
///     11+n     4  n + 11
class Message {
public:
    virtual ~Message() = default;

    virtual Timestamp getSampleTime() const = 0;
    /// The first byte of the tag image.
    virtual const std::uint8_t* getTag() const = 0;
    /// The tag body, 11 bytes behind the start of the tag.
    virtual const std::uint8_t* getTagBody() const = 0;
    virtual std::uint64_t getTagBodySize() const = 0;
    /// Where the sample proper begins inside the image.
    virtual const std::uint8_t* getSampleData() const = 0;
    virtual std::uint32_t getSampleDataOffset() const = 0;
    virtual std::uint32_t getSampleDataSize() const = 0;

    /// The time by which messages are ordered, and which stands in the tag header.
    const Timestamp& getMessageTime() const { return messageTime_; }

protected:
    Message() = default;
    explicit Message(const Timestamp& messageTime) : messageTime_(messageTime) {}
    Message(const Message&) = default;
    Message& operator=(const Message&) = default;

private:
    Timestamp messageTime_;
};

}  // namespace torvo::kzspkgutil
