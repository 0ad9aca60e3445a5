#include "kzspkgutil/CodecConfig.h"

#include "kzs/base/ByteOrder.h"

namespace torvo::kzspkgutil {
namespace {

constexpr std::size_t kFullBoxHeaderSize = 12;
constexpr std::uint8_t kStreamDescriptor = 3;
constexpr std::uint8_t kDecoderConfigDescriptor = 4;
constexpr std::uint8_t kDecoderSpecificInfo = 5;
constexpr std::size_t kStreamIdSize = 2;
constexpr std::size_t kStreamIdAndFlagsSize = 3;
constexpr std::size_t kDecoderFactsSize = 13;
constexpr int kMostLengthBytes = 4;

/// Reads descriptors one after the other. Once a step fails, all later ones do.
class DescriptorCursor {
public:
    explicit DescriptorCursor(ByteView bytes) : bytes_(bytes) {}

    bool skip(std::size_t count) {
        if (count > bytes_.size) return fail();
        bytes_.data += count;
        bytes_.size -= count;
        return true;
    }

    bool readByte(std::uint8_t& value) {
        if (bytes_.size == 0) return fail();
        value = *bytes_.data;
        return skip(1);
    }

    bool readLength(std::size_t& length) {
        length = 0;
        for (int i = 0; i < kMostLengthBytes; ++i) {
            std::uint8_t byte = 0;
            if (!readByte(byte)) return false;
            length = length * 0x80 + (byte & 0x7F);
            if ((byte & 0x80) == 0) return true;
        }
        return fail();
    }

    bool expectTag(std::uint8_t wanted) {
        std::uint8_t tag = 0;
        return readByte(tag) && (tag == wanted || fail());
    }

    ByteView take(std::size_t count) {
        if (count > bytes_.size) return {};
        return {bytes_.data, count};
    }

private:
    bool fail() {
        bytes_ = {};
        return false;
    }

    ByteView bytes_;
};

}  // namespace

ByteView findAudioSpecificConfig(const Blob& blob) {
    const ByteView box = findBox(blob, kzs::fourCc("esds"));
    if (box.size == 0) return {};
    const auto start = static_cast<std::size_t>(box.data - blob.data());
    DescriptorCursor in({box.data, blob.size() - start});

    std::uint8_t first = 0;
    std::size_t length = 0;
    if (!in.skip(kFullBoxHeaderSize) || !in.readByte(first)) return {};
    if (first == kStreamDescriptor) {
        if (!in.readLength(length) || !in.skip(kStreamIdAndFlagsSize)) return {};
    } else if (!in.skip(kStreamIdSize)) {
        return {};
    }
    if (!in.expectTag(kDecoderConfigDescriptor) || !in.readLength(length)) return {};
    if (!in.skip(kDecoderFactsSize) || !in.expectTag(kDecoderSpecificInfo)) return {};
    if (!in.readLength(length)) return {};
    return in.take(length);
}

}  // namespace torvo::kzspkgutil
