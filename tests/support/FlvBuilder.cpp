#include "support/FlvBuilder.h"

#include "support/AmfBuilder.h"

namespace kz::test {
namespace {

constexpr int kAudio = 8;
constexpr int kVideo = 9;
constexpr int kScript = 18;
constexpr int kAvc = 7;
constexpr int kAac = 10;

}  // namespace

Bytes FlvTag::headerAndBody() const {
    return u8(static_cast<std::uint64_t>(type)) + u24(claimedBodySize.value_or(body.size())) +
           u24(timeMs) + u8(timeMs >> 24) + u24(streamId) + body;
}

Bytes FlvTag::image() const {
    return headerAndBody() + u32(claimedTagSize.value_or(body.size() + 11));
}

FlvTag FlvTag::claimingBody(std::uint32_t size) const {
    FlvTag copy = *this;
    copy.claimedBodySize = size;
    return copy;
}

FlvTag FlvTag::claimingTag(std::uint32_t size) const {
    FlvTag copy = *this;
    copy.claimedTagSize = size;
    return copy;
}

Bytes flvHeader(int flags, std::uint32_t dataOffset, int version) {
    return text("FLV") + raw({version, flags}) + u32(dataOffset);
}

Bytes flvFile(const std::vector<FlvTag>& tags, int flags) {
    Bytes out = flvHeader(flags) + u32(0);
    for (const FlvTag& tag : tags) out += tag.image();
    return out;
}

FlvTag flvTag(int type, std::uint32_t timeMs, const Bytes& body) {
    FlvTag tag;
    tag.type = type;
    tag.timeMs = timeMs;
    tag.body = body;
    return tag;
}

FlvTag videoTag(std::uint32_t timeMs, int frameType, int codecId, const Bytes& rest) {
    return flvTag(kVideo, timeMs, raw({frameType * 16 + codecId}) + rest);
}

FlvTag audioTag(std::uint32_t timeMs, int soundFormat, const Bytes& rest, int rateIndex,
                bool is16Bit, bool isStereo) {
    const int first = soundFormat * 16 + rateIndex * 4 + (is16Bit ? 2 : 0) + (isStereo ? 1 : 0);
    return flvTag(kAudio, timeMs, raw({first}) + rest);
}

Bytes avcRecord() {
    return hexTable(R"(
        0   0142c01e    version 1, profile 66, compatibility, level 30
        4   ff          lengths of 4 bytes
        5   e1          one sequence parameter set
        6   0004        its size
        8   6742c01e
        12  01          one picture parameter set
        13  0004        its size
        15  68ce3c80
    )");
}

FlvTag avcConfig(std::uint32_t timeMs) { return avcConfig(timeMs, avcRecord()); }

FlvTag avcConfig(std::uint32_t timeMs, const Bytes& record) {
    return videoTag(timeMs, 1, kAvc, raw({0, 0, 0, 0}) + record);
}

FlvTag avcFrame(std::uint32_t timeMs, bool isKey, const Bytes& data, int compositionMs) {
    return videoTag(timeMs, isKey ? 1 : 2, kAvc,
                    u8(1) + u24(static_cast<std::uint64_t>(compositionMs)) + data);
}

FlvTag avcEnd(std::uint32_t timeMs) { return videoTag(timeMs, 1, kAvc, raw({2, 0, 0, 0})); }

FlvTag vp6Frame(std::uint32_t timeMs, bool isKey, const Bytes& data, int adjustment) {
    return videoTag(timeMs, isKey ? 1 : 2, 4, raw({adjustment}) + data);
}

FlvTag h263Frame(std::uint32_t timeMs, bool isKey, const Bytes& data) {
    return videoTag(timeMs, isKey ? 1 : 2, 2, data);
}

FlvTag aacConfig(std::uint32_t timeMs) { return aacConfig(timeMs, raw({0x12, 0x10})); }

FlvTag aacConfig(std::uint32_t timeMs, const Bytes& record) {
    return audioTag(timeMs, kAac, u8(0) + record);
}

FlvTag aacFrame(std::uint32_t timeMs, const Bytes& data) {
    return audioTag(timeMs, kAac, u8(1) + data);
}

FlvTag mp3Frame(std::uint32_t timeMs, const Bytes& data) { return audioTag(timeMs, 2, data); }

FlvTag speexFrame(std::uint32_t timeMs, const Bytes& data) {
    return audioTag(timeMs, 11, data, 0, true, false);
}

FlvTag nellymoserFrame(std::uint32_t timeMs, const Bytes& data) {
    return audioTag(timeMs, 6, data, 2, true, false);
}

FlvTag scriptTag(std::uint32_t timeMs, const Bytes& values) {
    return flvTag(kScript, timeMs, values);
}

FlvTag onMetaDataTag(double width, double height) {
    return scriptTag(0, amfString("onMetaData") + amfEcmaArray({{"width", amfNumber(width)},
                                                                {"height", amfNumber(height)}}));
}

}  // namespace kz::test
