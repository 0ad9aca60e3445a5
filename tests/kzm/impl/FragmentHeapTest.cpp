#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>
#include <vector>

#include <gtest/gtest.h>

#include "kzm/impl/FragmentHeap.h"

namespace qlix::kzm::impl {
namespace {

/// Counts what is out, and refuses once `isEmpty` is set.
class CountingSource final : public Allocator {
public:
    void* allocate(std::size_t size) override {
        if (isEmpty) throw std::bad_alloc();
        ++held;
        largest = std::max(largest, size);
        return Allocator::allocate(size);
    }
    void release(void* pointer) noexcept override {
        --held;
        Allocator::release(pointer);
    }

    int held = 0;
    std::size_t largest = 0;
    bool isEmpty = false;
};

TEST(FragmentHeapTest, PiecesAreAlignedAndDoNotOverlap) {
    FragmentHeap heap(nullptr);
    std::vector<unsigned char*> pieces;
    for (std::size_t size = 1; size <= 3000; ++size) {  // 4.5 MB: many chunks
        auto* piece = static_cast<unsigned char*>(heap.allocate(size));
        EXPECT_EQ(0u, reinterpret_cast<std::uintptr_t>(piece) % alignof(std::max_align_t));
        std::memset(piece, static_cast<int>(size % 251), size);
        pieces.push_back(piece);
    }
    for (std::size_t size = 1; size <= pieces.size(); ++size) {
        const std::vector<unsigned char> expected(size, static_cast<unsigned char>(size % 251));
        ASSERT_EQ(0, std::memcmp(expected.data(), pieces[size - 1], size)) << size;
    }
    for (unsigned char* piece : pieces) heap.release(piece);
}

TEST(FragmentHeapTest, StartsAgainOnceEverythingWasReleased) {
    FragmentHeap heap(nullptr);
    void* const first = heap.allocate(100);
    void* const second = heap.allocate(100);
    heap.release(first);
    void* const third = heap.allocate(100);
    EXPECT_NE(first, third) << "the second piece is still held";
    heap.release(second);
    heap.release(third);
    void* const again = heap.allocate(50);
    EXPECT_EQ(first, again);
    heap.release(again);
}

TEST(FragmentHeapTest, KeepsOneChunkBetweenFragmentsAndNoneInTheEnd) {
    CountingSource source;
    {
        FragmentHeap heap(&source);
        EXPECT_EQ(0, source.held) << "nothing is taken ahead of need";
        std::vector<void*> pieces;
        for (int i = 0; i < 10; ++i) pieces.push_back(heap.allocate(40000));
        EXPECT_EQ(10, source.held) << "two don't fit into 65536 bytes";
        for (void* piece : pieces) heap.release(piece);
        EXPECT_EQ(1, source.held);
        heap.release(heap.allocate(65536));
        EXPECT_EQ(1, source.held) << "a whole chunk fits into the one that was kept";
    }
    EXPECT_EQ(0, source.held);
}

TEST(FragmentHeapTest, APieceLargerThanAChunkGetsOneOfItsSize) {
    CountingSource source;
    FragmentHeap heap(&source);
    void* const piece = heap.allocate(100000);
    EXPECT_EQ(100000u, source.largest);
    std::memset(piece, 1, 100000);
    heap.release(piece);
}

TEST(FragmentHeapTest, ANullPieceIsIgnored) {
    FragmentHeap heap(nullptr);
    void* const piece = heap.allocate(8);
    heap.release(nullptr);
    void* const next = heap.allocate(8);
    EXPECT_NE(piece, next) << "the first piece is still held";
    heap.release(piece);
    heap.release(next);
}

TEST(FragmentHeapTest, TellsThatThereIsNoMemoryAndGoesOn) {
    CountingSource source;
    FragmentHeap heap(&source);
    void* const first = heap.allocate(60000);
    source.isEmpty = true;
    EXPECT_THROW(heap.allocate(60000), std::bad_alloc);
    EXPECT_THROW(heap.allocate(static_cast<std::size_t>(-1)), std::bad_alloc);
    heap.release(heap.allocate(1000));  // what is left of the first chunk
    source.isEmpty = false;
    void* const second = heap.allocate(60000);
    EXPECT_EQ(2, source.held);
    heap.release(second);
    heap.release(first);
    EXPECT_EQ(1, source.held);
}

}  // namespace
}  // namespace qlix::kzm::impl
