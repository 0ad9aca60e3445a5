#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "support/Bytes.h"

namespace kz::test {

/// One tag of an FLV file. All sizes are honest unless a test lies with the two `claiming`
/// operations.
struct FlvTag {
    int type = 0;
    std::uint32_t timeMs = 0;
    Bytes body;
    std::uint32_t streamId = 0;
    std::optional<std::uint32_t> claimedBodySize;
    std::optional<std::uint32_t> claimedTagSize;

    /// The 11 header bytes and the body.
    Bytes headerAndBody() const;
    /// The whole image: header, body and the word with the size of the two.
    Bytes image() const;

    /// A copy whose header claims `size` bytes of body.
    FlvTag claimingBody(std::uint32_t size) const;
    /// A copy whose size word behind the body says `size`.
    FlvTag claimingTag(std::uint32_t size) const;
};

/// The 9 bytes of the file header. Bit 2 of `flags` is audio, bit 0 video.
Bytes flvHeader(int flags = 5, std::uint32_t dataOffset = 9, int version = 1);
/// Header, the first size word (0) and the images of all tags.
Bytes flvFile(const std::vector<FlvTag>& tags, int flags = 5);

FlvTag flvTag(int type, std::uint32_t timeMs, const Bytes& body);
/// Video with the first body byte made of frame type (1 is a key frame) and codec id.
FlvTag videoTag(std::uint32_t timeMs, int frameType, int codecId, const Bytes& rest);
/// Audio with the first body byte made of format, rate index (0 to 3), sample size and channels.
FlvTag audioTag(std::uint32_t timeMs, int soundFormat, const Bytes& rest, int rateIndex = 3,
                bool is16Bit = true, bool isStereo = true);

/// AVC: sequence header (default: a small record of profile 66, level 30), frame, end of sequence.
Bytes avcRecord();
FlvTag avcConfig(std::uint32_t timeMs);
FlvTag avcConfig(std::uint32_t timeMs, const Bytes& record);
FlvTag avcFrame(std::uint32_t timeMs, bool isKey, const Bytes& data, int compositionMs = 0);
FlvTag avcEnd(std::uint32_t timeMs);

/// VP6 carries one byte behind the codec byte: the size adjustment.
FlvTag vp6Frame(std::uint32_t timeMs, bool isKey, const Bytes& data, int adjustment = 0);
FlvTag h263Frame(std::uint32_t timeMs, bool isKey, const Bytes& data);

/// AAC: sequence header (default: AAC-LC, 44100 Hz, stereo) and frame.
FlvTag aacConfig(std::uint32_t timeMs);
FlvTag aacConfig(std::uint32_t timeMs, const Bytes& record);
FlvTag aacFrame(std::uint32_t timeMs, const Bytes& data);
FlvTag mp3Frame(std::uint32_t timeMs, const Bytes& data);
FlvTag speexFrame(std::uint32_t timeMs, const Bytes& data);
/// Nellymoser at 22 kHz, mono.
FlvTag nellymoserFrame(std::uint32_t timeMs, const Bytes& data);

/// A script tag (type 18) with AMF0 values as its body.
FlvTag scriptTag(std::uint32_t timeMs, const Bytes& values);
/// The usual record: "onMetaData" and an array of width and height.
FlvTag onMetaDataTag(double width, double height);

}  // namespace kz::test
