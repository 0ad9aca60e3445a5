#include "kzspkgutil/MessageEncryptor.h"

#include <cstring>

#include "kzs/base/ByteOrder.h"
#include "kzspkgutil/FLVCodecs.h"

namespace torvo::kzspkgutil {
namespace {

constexpr std::uint8_t kUnitIsEncrypted = 0x80;

/// The bytes that are put under encryption.
struct Sample {
    const std::uint8_t* data;
    std::uint32_t size;
};

Sample sampleOf(const TCMessage& message) {
    Sample sample{message.getSampleData(), message.getSampleDataSize()};
    if (message.getTagBodySize() == 0) return sample;
    const std::uint32_t codec = flvCodecIdOf(message.getTagBody()[0]);
    // On purpose: the second header byte of a VP6 tag is encrypted with its sample. The tag's type
    // isn't looked at, so an audio or data tag with such a first byte takes the same step.
    // Pinned by MessageEncryptorTest.SecondByteOfAVp6HeaderIsEncrypted and
    // .AudioWithSuchAFirstByteTakesTheSameStep.
    if ((codec == kFLVVp6 || codec == kFLVVp6WithAlpha) && message.getSampleDataOffset() > 0) {
        --sample.data;
        ++sample.size;
    }
    return sample;
}

/// The filter header of an encrypted tag, without its parameters.
std::uint8_t* putFilter(std::uint8_t* at, const hlx::EncryptionInfo& info, const char* name,
                        std::size_t nameSize, std::uint32_t parameterSize) {
    *at++ = static_cast<std::uint8_t>(info.filterCount);
    std::memcpy(at, name, nameSize);
    at += nameSize;
    kzs::storeU24(at, parameterSize);
    return at + 3;
}

TCMessage finish(const TCMessage& old, const BlockPtr& block, std::uint32_t bodySize,
                 std::uint8_t* sampleStart) {
    std::uint8_t* tag = block->data();
    storeTagSizes(tag, bodySize);
    const std::uint32_t tagSize = bodySize + kTagOverhead;
    const auto sampleOffset = static_cast<std::uint32_t>(sampleStart - tag);
    // On purpose: the flag and the IV count as sample data, so the hint's range covers them.
    // Pinned by EncryptedPolicyTest.MediaSamplesCoverTheInitialisationVector.
    return TCMessage(old.getSampleTime(), old.getMessageTime(), tagSize, block, sampleStart,
                     tagSize - sampleOffset - kPreviousTagSizeSize);
}

TCMessage copyClear(IPackagerContext& context, const TCMessage& message, const Sample& sample) {
    const BlockPtr block = allocateTag(context.getMemoryArena(), message.getTagBodySize());
    std::memcpy(block->data(), message.getTag(), message.getTagSize());
    const auto offset = static_cast<std::ptrdiff_t>(sample.data - message.getTag());
    return finish(message, block, kzs::low32(message.getTagBodySize()), block->data() + offset);
}

}  // namespace

std::uint32_t trackClassOf(std::uint8_t tagType) {
    switch (tagType & kTagTypeMask) {
        case kVideoTag:
            return kVideoTrackClass;
        case kAudioTag:
            return kAudioTrackClass;
        case kAmf0DataTag:
        case kAmf3DataTag:
            return kDataTrackClass;
        default:
            return kNoTrackClass;
    }
}

TCMessage encryptMessage(const hlx::HLXEncryptor& encryptor, IPackagerContext& context,
                         const TCMessage& message, bool isAvc) {
    const Sample sample = sampleOf(message);
    const hlx::EncryptionInfo info =
        encryptor.prepareSample(sample.data, sample.size, trackClassOf(message.getTag()[0]),
                                message.getSampleTime().value, isAvc);
    // On purpose: a new block for a clear sample, too. Callers get one of their own either way.
    // Pinned by MessageEncryptorTest.AClearSampleKeepsItsLayoutInANewBlock.
    if (info.encrypted == 0) return copyClear(context, message, sample);

    const char* name = info.filterNames[info.filterCount - 1];
    const std::size_t nameSize = std::strlen(name) + 1;
    const std::uint32_t parameterSize = info.ivSize + 1;
    const std::uint64_t filterSize = 1 + nameSize + 3 + parameterSize;
    const std::uint64_t bodySize =
        message.getTagBodySize() - sample.size + info.encryptedSize + filterSize;
    const BlockPtr block = allocateTag(context.getMemoryArena(), bodySize);

    std::uint8_t* tag = block->data();
    const std::size_t copied = message.getTagSize() - sample.size - kPreviousTagSizeSize;
    std::memcpy(tag, message.getTag(), copied);
    tag[0] = static_cast<std::uint8_t>(tag[0] + kEncryptedTagBit);
    std::uint8_t* start = putFilter(tag + copied, info, name, nameSize, parameterSize);
    start[0] = kUnitIsEncrypted;
    encryptor.encrypt(sample.data, sample.size, info, start + parameterSize, start + 1);
    return finish(message, block, kzs::low32(bodySize), start);
}

}  // namespace torvo::kzspkgutil
