#include "kzm/impl/KZMSampleEntry.h"

#include <utility>

namespace qlix::kzm::impl {
namespace {

constexpr std::uint64_t kFixedSize = kBoxHeaderSize + 8;
constexpr std::uint64_t kMaxCodecData = 0xFFFFFFFF;

}  // namespace

KZMSampleEntry::KZMSampleEntry(const BoxContext& context, const SampleDescriptor& descriptor)
    : KZMSampleEntry(context, descriptor.copyOut(), 0) {}

KZMSampleEntry::KZMSampleEntry(const BoxContext& context, const BoxHeader& header)
    : KZMSampleEntry(context, header, std::make_unique<SampleDescriptor>()) {}

KZMSampleEntry::KZMSampleEntry(const BoxContext& context,
                               std::unique_ptr<SampleDescriptor> descriptor, std::uint64_t kindSize)
    : Box(context, descriptor->format), descriptor_(std::move(descriptor)) {
    setFixedSize(kFixedSize + kindSize + descriptor_->data.size());
}

KZMSampleEntry::KZMSampleEntry(const BoxContext& context, const BoxHeader& header,
                               std::unique_ptr<SampleDescriptor> descriptor)
    : Box(context, header), descriptor_(std::move(descriptor)) {
    descriptor_->format = header.type;
}

void KZMSampleEntry::setPlace(std::uint32_t index, std::uint32_t handler) {
    descriptor_->index = index;
    descriptor_->handler = handler;
}

void KZMSampleEntry::writeFields() {
    FieldWriter out;
    out.zeros(6);
    out.u16(dataReferenceIndex_);
    writeKind(out);
    out.bytes(descriptor_->data.data(), descriptor_->data.size());
    put(out);
}

void KZMSampleEntry::readFields() {
    FieldReader in = fields();
    EntryBlock block(in.left() <= kMaxCodecData ? in.bytes(in.left())
                                                : std::vector<std::uint8_t>());
    block.skip(6);
    dataReferenceIndex_ = block.u16();
    readKind(block);
    descriptor_->data = block.rest();
}

void KZMSampleEntry::writeKind(FieldWriter& /*out*/) const {}

void KZMSampleEntry::readKind(EntryBlock& /*block*/) {}

}  // namespace qlix::kzm::impl
