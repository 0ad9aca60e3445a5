#include "offline/FailingMemory.h"

#include <cstddef>
#include <cstdlib>
#include <new>

namespace {

long allocationsLeft = -1;  // below 0: without end

void* allocate(std::size_t size) {
    if (allocationsLeft == 0) throw std::bad_alloc();
    if (allocationsLeft > 0) --allocationsLeft;
    void* memory = std::malloc(size == 0 ? 1 : size);
    if (memory == nullptr) throw std::bad_alloc();
    return memory;
}

}  // namespace

namespace kz::test {

FailingMemory::FailingMemory(long succeeding) { allocationsLeft = succeeding; }

FailingMemory::~FailingMemory() { allocationsLeft = -1; }

}  // namespace kz::test

// In the place of the library's for the whole test program.
void* operator new(std::size_t size) { return allocate(size); }
void* operator new[](std::size_t size) { return allocate(size); }
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }
