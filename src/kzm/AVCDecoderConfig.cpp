#include "kzm/AVCDecoderConfig.h"

#include <algorithm>

#include "kzm/ErrorCode.h"
#include "kzs/base/ByteOrder.h"

namespace qlix::kzm {
namespace {

constexpr std::uint8_t kCode[] = {'a', 'v', 'c', 'C'};
constexpr std::size_t kSizeWord = 4;

/// Walks a block and can't leave it.
class Cursor {
public:
    Cursor(const std::uint8_t* at, const std::uint8_t* end) : at_(at), end_(end) {}

    const std::uint8_t* take(std::size_t count) {
        if (count > static_cast<std::size_t>(end_ - at_)) raise(ErrorCode::codecDataTooShort);
        const std::uint8_t* out = at_;
        at_ += count;
        return out;
    }

    std::uint8_t u8() { return *take(1); }

    std::vector<AVCDecoderConfig::ParameterSet> sets(std::uint32_t count) {
        std::vector<AVCDecoderConfig::ParameterSet> out;
        for (std::uint32_t i = 0; i < count; ++i) {
            const std::size_t length = torvo::kzs::loadU16(take(2));
            const std::uint8_t* first = take(length);
            out.emplace_back(first, first + length);
        }
        return out;
    }

private:
    const std::uint8_t* at_;
    const std::uint8_t* end_;
};

}  // namespace

AVCDecoderConfig AVCDecoderConfig::parse(const std::uint8_t* data, std::size_t size) {
    if (size < kSizeWord) raise(ErrorCode::codecDataTooShort);
    // A code without a size word in front of it is no box.
    const std::uint8_t* end = data + size;
    const std::uint8_t* code =
        std::search(data + kSizeWord, end, std::begin(kCode), std::end(kCode));
    if (code == end) raise(ErrorCode::noDecoderConfig);
    const auto boxStart = static_cast<std::size_t>(code - data) - kSizeWord;
    if (torvo::kzs::loadU32(data + boxStart) > size - boxStart) {
        raise(ErrorCode::decoderConfigTooLarge);
    }

    Cursor in(code + sizeof(kCode), end);
    AVCDecoderConfig out;
    in.u8();  // version
    out.profile = in.u8();
    out.compatibility = in.u8();
    out.level = in.u8();
    out.nalLengthSize = static_cast<std::uint8_t>((in.u8() & 3) + 1);
    out.sequenceParameterSets = in.sets(in.u8() & 0x1F);
    out.pictureParameterSets = in.sets(in.u8());
    return out;
}

}  // namespace qlix::kzm
