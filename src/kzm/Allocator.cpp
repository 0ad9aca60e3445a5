#include "kzm/Allocator.h"

#include <new>

namespace qlix::kzm {

void* Allocator::allocate(std::size_t size) { return ::operator new(size); }

void Allocator::release(void* pointer) noexcept { ::operator delete(pointer); }

}  // namespace qlix::kzm
