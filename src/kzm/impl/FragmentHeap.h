#pragma once

#include <cstddef>
#include <vector>

#include "kzm/Allocator.h"

namespace qlix::kzm::impl {

/// Memory for boxes that live and die together, those of one fragment.
///
/// What is asked for is cut off the end of a chunk. Nothing is taken back by itself; once all of
/// it was released, the chunks are used from the start. A fragment has a box for nearly each of
/// its samples, and the heap would look for a place for each of them.
class FragmentHeap final : public Allocator {
public:
    static constexpr std::size_t kChunkSize = 64 * 1024;

    /// `source` gives the chunks and outlives the heap; null means the global heap.
    explicit FragmentHeap(Allocator* source) : source_(source) {}
    FragmentHeap(const FragmentHeap&) = delete;
    FragmentHeap& operator=(const FragmentHeap&) = delete;
    /// Everything must have been released.
    ~FragmentHeap() override;

    /// Throws std::bad_alloc.
    void* allocate(std::size_t size) override;
    void release(void* pointer) noexcept override;

private:
    struct Chunk {
        unsigned char* bytes;
        std::size_t size;
    };

    void addChunk(std::size_t size);
    void dropChunks(std::size_t kept) noexcept;

    Allocator* source_;
    std::vector<Chunk> chunks_;  // the last one is cut
    std::size_t used_ = 0;       // bytes of the last chunk
    std::size_t live_ = 0;       // pieces given out and not released
};

}  // namespace qlix::kzm::impl
