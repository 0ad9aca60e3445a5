#include "kzspkgutil/model/MemoryArena.h"

#include <new>

namespace torvo::kzspkgutil {

// Not make_unique: that would clear the bytes, which are all about to be written.
Block::Block(std::uint64_t size) : data_(new std::uint8_t[size]), size_(size) {}

BlockPtr RefCountedMemoryArena::allocate(std::uint64_t size) { return BlockPtr(new Block(size)); }

}  // namespace torvo::kzspkgutil
