#include "kzm/impl/FragmentHeap.h"

#include <algorithm>
#include <limits>
#include <new>

#include "kzm/impl/AllocateFrom.h"

namespace qlix::kzm::impl {
namespace {

constexpr std::size_t kAlignment = alignof(std::max_align_t);

}  // namespace

FragmentHeap::~FragmentHeap() { dropChunks(0); }

void* FragmentHeap::allocate(std::size_t size) {
    if (size > std::numeric_limits<std::size_t>::max() - kAlignment) throw std::bad_alloc();
    const std::size_t count = (size + kAlignment - 1) / kAlignment * kAlignment;
    if (chunks_.empty() || chunks_.back().size - used_ < count) addChunk(count);
    void* const piece = chunks_.back().bytes + used_;
    used_ += count;
    ++live_;
    return piece;
}

void FragmentHeap::release(void* pointer) noexcept {
    if (pointer == nullptr) return;
    if (--live_ > 0) return;
    // One chunk stays for the next fragment; a long one gives back what it took beyond that.
    dropChunks(1);
    used_ = 0;
}

void FragmentHeap::addChunk(std::size_t size) {
    const std::size_t count = std::max(size, kChunkSize);
    chunks_.reserve(chunks_.size() + 1);
    void* const bytes = allocateFrom(source_, count);
    chunks_.push_back({static_cast<unsigned char*>(bytes), count});
    used_ = 0;
}

void FragmentHeap::dropChunks(std::size_t kept) noexcept {
    for (; chunks_.size() > kept; chunks_.pop_back()) releaseTo(source_, chunks_.back().bytes);
}

}  // namespace qlix::kzm::impl
