#include "flv/Allocator.h"

#include <new>

namespace flv {
namespace {

Allocator& allocatorOf(void* context) { return *static_cast<Allocator*>(context); }

void* allocateCallBack(void* context, std::size_t size) {
    try {
        return allocatorOf(context).allocate(size);
    } catch (...) {
        return nullptr;
    }
}

void freeCallBack(void* context, void* pointer) { allocatorOf(context).free(pointer); }

}  // namespace

Allocator::~Allocator() = default;

void Allocator::getCallBacks(QlixFLVAllocatorCallBacks& out) {
    out.context = this;
    out.allocate = allocateCallBack;
    out.free = freeCallBack;
}

void* Allocator::allocate(std::size_t size) { return ::operator new(size); }

void Allocator::free(void* pointer) { ::operator delete(pointer); }

}  // namespace flv
