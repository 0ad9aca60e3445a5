#pragma once

#include <array>
#include <cstdint>

#include "qlix_flv/Memory.h"
#include "qlix_flv/Stream.h"

namespace qlix::flv {

/// The last few aligned blocks of the file that were touched.
///
/// Small tags cost no read of their own, and the bodies of tags whose headers were looked at ahead
/// of time are mostly still here when they are copied. A block is read whole, so a walk in file
/// order never seeks. Blocks are allocated when first needed. Offsets must lie inside the stream.
class ReadAhead {
public:
    static constexpr std::uint32_t kBlockSize = 256 * 1024;
    static constexpr std::size_t kBlockCount = 4;

    /// What happens to blocks between the stream's position and the one that is wanted.
    enum class Gap {
        skip,        ///< nobody will want them: seek
        readThrough  ///< the bodies in them are copied soon: read them in passing
    };

    ReadAhead(Stream& stream, const Memory& memory);
    ReadAhead(const ReadAhead&) = delete;
    ReadAhead& operator=(const ReadAhead&) = delete;

    /// Few bytes, such as a header, by way of the blocks.
    void peek(std::uint64_t offset, std::uint8_t* buffer, std::uint32_t count, Gap gap);
    /// Many bytes: what is held is copied, whole blocks that aren't held are read straight into
    /// `buffer` with one read for each run of them.
    void copy(std::uint64_t offset, std::uint8_t* buffer, std::uint32_t count);

private:
    struct Block {
        explicit Block(const Memory& memory) : bytes(memory) {}
        std::uint64_t index = 0;
        std::uint64_t lastUse = 0;  // 0: holds nothing
        MemoryBytes bytes;
    };

    /// The short way of small tags: hundreds of them lie in one block.
    bool copyFromLatest(std::uint64_t offset, std::uint8_t* buffer, std::uint32_t count);
    Block* find(std::uint64_t index);
    Block& load(std::uint64_t index);
    Block& fetch(std::uint64_t index, Gap gap);
    void readThroughTo(std::uint64_t index);
    std::uint32_t uncachedRun(std::uint64_t offset, std::uint32_t count);
    std::uint32_t copyFromBlock(Block& block, std::uint64_t offset, std::uint8_t* buffer,
                                std::uint32_t count);

    Stream& stream_;  // outlives this
    std::uint64_t uses_ = 0;
    std::array<Block, kBlockCount> blocks_;
    const Block* latest_ = nullptr;  // the one touched last
};

}  // namespace qlix::flv
