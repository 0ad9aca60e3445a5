#include "kzm/impl/TrunBox.h"

#include <algorithm>
#include <vector>

#include "kzm/ErrorCode.h"
#include "kzm/WriterRecords.h"

namespace qlix::kzm::impl {
namespace {

using torvo::kzs::low32;
using torvo::kzs::storeU32;

/// Samples of 0 bytes that a run may count without a field for any of them.
constexpr std::uint32_t kMostBareSamples = 1024;

std::uint8_t* store(std::uint8_t* out, std::uint32_t value) {
    storeU32(out, value);
    return out + 4;
}

}  // namespace

TrunBox::TrunBox(const BoxContext& context, std::uint64_t baseOffset, std::uint32_t dataOffset,
                 std::uint32_t flags)
    : FullBox(context, fourCc("trun"), 0, flags),
      dataOffset_(dataOffset),
      dataStart_(baseOffset + dataOffset),
      dataEnd_(dataStart_),
      samples_(HeapOf<TrunSample>(context.allocator)) {
    setFixedSize(fixedBytes());
}

TrunBox::TrunBox(const BoxContext& context, const BoxHeader& header)
    : FullBox(context, header), samples_(HeapOf<TrunSample>(context.allocator)) {}

/// Header, count and the two optional words.
std::uint64_t TrunBox::fixedBytes() const {
    return kFullBoxHeaderSize + 4 + (has(kDataOffsetPresent) ? 4 : 0) +
           (has(kFirstFlagsPresent) ? 4 : 0);
}

std::uint32_t TrunBox::bytesPerSample() const {
    return (has(kDurationPresent) ? 4U : 0U) + (has(kSizePresent) ? 4U : 0U) +
           (has(kFlagsPresent) ? 4U : 0U) + (has(kCompositionPresent) ? 4U : 0U);
}

bool TrunBox::append(const FragmentSample& sample) {
    if (sample.offset != dataEnd_) return false;

    TrunSample row;
    row.decodeTime = sample.decodeTime;
    row.size = sample.size;
    row.compositionOffset = sample.compositionOffset;
    row.offset = sample.offset;
    row.flags = isSyncSample(sample.kind) ? kSyncFlags : kOtherFlags;
    const std::uint32_t difference = low32(sample.decodeTime - lastDecodeTime_);
    // On purpose: 1 whenever the last time held is 0, so in the first row of each run and behind
    // a row at time 0. Pinned by TrunBoxTest.TheNewRowHasDurationOneWhenTheLastTimeIsZero.
    row.duration = lastDecodeTime_ == 0 ? 1 : difference;
    if (!samples_.empty()) samples_.back().duration = difference;

    samples_.push_back(row);
    ++count_;
    lastDecodeTime_ = sample.decodeTime;
    dataEnd_ += sample.size;
    grow(bytesPerSample());
    return true;
}

std::uint64_t TrunBox::lastDurationPosition() const {
    return position() + fixedBytes() + std::uint64_t{count_ - 1} * bytesPerSample();
}

void TrunBox::readFields() {
    FieldReader in = fields();
    in.need(4 + (has(kDataOffsetPresent) ? 4 : 0) + (has(kFirstFlagsPresent) ? 4 : 0));
    count_ = in.u32();
    dataStart_ = defaults_.nextOffset;
    if (has(kDataOffsetPresent)) {
        dataOffset_ = in.u32();
        // The word may be negative: data in front of the base.
        dataStart_ =
            defaults_.baseOffset +
            static_cast<std::uint64_t>(std::int64_t{static_cast<std::int32_t>(dataOffset_)});
    }
    firstFlags_ = has(kFirstFlagsPresent) ? in.u32() : defaults_.flags;

    const std::uint64_t tableBytes = std::uint64_t{count_} * bytesPerSample();
    if (tableBytes > 0xFFFFFFFF) raise(ErrorCode::runTooLarge);
    in.need(tableBytes);
    isUniform_ = bytesPerSample() == 0;
    if (!isUniform_) {
        readRows(in);
        return;
    }
    // Such a count costs the file nothing, so it is held to what can be meant.
    if (count_ > (defaults_.size == 0 ? kMostBareSamples : kSanityLimit)) {
        raise(ErrorCode::runTooLarge);
    }
    dataEnd_ = dataStart_ + std::uint64_t{count_} * defaults_.size;
}

void TrunBox::readRows(FieldReader& in) {
    samples_.reserve(count_);
    const std::vector<std::uint8_t> table = in.bytes(std::uint64_t{count_} * bytesPerSample());
    if (table.size() < std::uint64_t{count_} * bytesPerSample()) raise(ErrorCode::boxTooShort);
    const std::uint8_t* next = table.data();
    const auto field = [&](std::uint32_t flag, std::uint32_t substitute) {
        if (!has(flag)) return substitute;
        const std::uint32_t value = torvo::kzs::loadU32(next);
        next += 4;
        return value;
    };
    dataEnd_ = dataStart_;
    for (std::uint32_t i = 0; i < count_; ++i) {
        TrunSample row;
        row.duration = field(kDurationPresent, defaults_.duration);
        row.size = field(kSizePresent, defaults_.size);
        row.flags = field(kFlagsPresent, i == 0 ? firstFlags_ : defaults_.flags);
        row.compositionOffset = field(kCompositionPresent, 0);
        row.offset = dataEnd_;
        dataEnd_ += row.size;
        samples_.push_back(row);
    }
}

std::uint64_t TrunBox::setStartTime(std::uint64_t start) {
    startTime_ = start;
    endTime_ = start;
    if (isUniform_) endTime_ += std::uint64_t{count_} * defaults_.duration;
    for (TrunSample& row : samples_) {
        row.decodeTime = endTime_;
        endTime_ += row.duration;
    }
    return endTime_;
}

void TrunBox::takeSamplesOf(const std::vector<const TrunBox*>& runs) {
    std::size_t total = count_;
    for (const TrunBox* run : runs) total += run->count_;
    BoxVector<TrunSample> rows(HeapOf<TrunSample>(context().allocator));
    rows.reserve(total);
    const auto take = [&rows](const TrunBox& run) {
        for (std::uint32_t i = 0; i < run.count_; ++i) rows.push_back(run.sample(i));
    };
    take(*this);
    for (const TrunBox* run : runs) {
        take(*run);
        endTime_ = run->endTime_;
        dataEnd_ = run->dataEnd_;
    }
    samples_.swap(rows);
    count_ = low32(total);
    isUniform_ = false;
}

TrunSample TrunBox::sample(std::uint32_t index) const {
    if (!isUniform_) return samples_[index];
    TrunSample row;
    row.decodeTime = startTime_ + std::uint64_t{index} * defaults_.duration;
    row.duration = defaults_.duration;
    row.size = defaults_.size;
    row.flags = index == 0 ? firstFlags_ : defaults_.flags;
    row.offset = dataStart_ + std::uint64_t{index} * defaults_.size;
    return row;
}

std::uint32_t TrunBox::firstAtOrAfter(std::uint64_t time) const {
    // Decode times never go down inside a run.
    std::uint32_t low = 0;
    std::uint32_t high = count_;
    while (low < high) {
        const std::uint32_t middle = low + (high - low) / 2;
        if (sample(middle).decodeTime < time) {
            low = middle + 1;
        } else {
            high = middle;
        }
    }
    return low;
}

void TrunBox::write() {
    // A fragment has a run for nearly each sample: the usual one fits here, and is one write.
    std::uint8_t usual[64];
    std::vector<std::uint8_t> large;
    std::uint8_t* bytes = usual;
    if (size() > sizeof(usual)) {
        large.resize(static_cast<std::size_t>(size()));
        bytes = large.data();
    }
    storeFields(storeHeader(bytes));
    stream().seek(position());
    stream().write(bytes, size());
}

void TrunBox::writeHeader() {
    std::uint8_t bytes[kFullBoxHeaderSize];
    storeHeader(bytes);
    stream().write(bytes, sizeof(bytes));
}

void TrunBox::writeFields() {
    std::vector<std::uint8_t> bytes(static_cast<std::size_t>(fieldsSize()));
    storeFields(bytes.data());
    stream().write(bytes.data(), bytes.size());
}

std::uint8_t* TrunBox::storeHeader(std::uint8_t* out) const {
    out = store(out, low32(size()));
    out = store(out, type());
    return store(out, (std::uint32_t{version()} << 24) | flags());
}

std::uint8_t* TrunBox::storeFields(std::uint8_t* out) const {
    out = store(out, count_);
    if (has(kDataOffsetPresent)) out = store(out, dataOffset_);
    // On purpose: the word is written as 0, since each row has flags of its own.
    // Pinned by TrunBoxTest.WritesTheFlagsOfTheFirstSampleAsZero.
    if (has(kFirstFlagsPresent)) out = store(out, 0);
    for (const TrunSample& row : samples_) {
        if (has(kDurationPresent)) out = store(out, row.duration);
        if (has(kSizePresent)) out = store(out, row.size);
        if (has(kFlagsPresent)) out = store(out, row.flags);
        if (has(kCompositionPresent)) out = store(out, row.compositionOffset);
    }
    return out;
}

}  // namespace qlix::kzm::impl
