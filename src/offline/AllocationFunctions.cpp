// The allocation functions of the program, in the place of those of the standard library: they can
// wipe what is freed, and do while there may be a password in it.

#include <cstdlib>
#include <malloc.h>
#include <new>
#include <string.h>  // explicit_bzero

#include "offline/Secrets.h"

namespace {

void* allocate(std::size_t size) noexcept { return std::malloc(size == 0 ? 1 : size); }

void* allocateOrThrow(std::size_t size) {
    void* memory = allocate(size);
    if (memory == nullptr) throw std::bad_alloc();
    return memory;
}

void release(void* memory) noexcept {
    if (memory != nullptr && torvo::offline::isFreedMemoryWiped()) {
        explicit_bzero(memory, malloc_usable_size(memory));
    }
    std::free(memory);
}

}  // namespace

void* operator new(std::size_t size) { return allocateOrThrow(size); }
void* operator new[](std::size_t size) { return allocateOrThrow(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return allocate(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return allocate(size); }

void operator delete(void* memory) noexcept { release(memory); }
void operator delete[](void* memory) noexcept { release(memory); }
void operator delete(void* memory, std::size_t) noexcept { release(memory); }
void operator delete[](void* memory, std::size_t) noexcept { release(memory); }
void operator delete(void* memory, const std::nothrow_t&) noexcept { release(memory); }
void operator delete[](void* memory, const std::nothrow_t&) noexcept { release(memory); }
