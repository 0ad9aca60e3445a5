#include <cstddef>
#include <new>
#include <type_traits>

#include <gtest/gtest.h>

#include "kzspkgutil/model/MemoryArena.h"
#include "kzspkgutil/model/PackagerContext.h"

namespace {

bool refusesArrays = false;
std::size_t lastArraySize = 0;

}  // namespace

// The arrays of this program: their sizes are seen, and they can run out while all other memory is
// there.
void* operator new[](std::size_t size) {
    if (refusesArrays) throw std::bad_alloc();
    lastArraySize = size;
    return ::operator new(size);
}

void operator delete[](void* array) noexcept { ::operator delete(array); }

void operator delete[](void* array, std::size_t) noexcept { ::operator delete(array); }

namespace torvo::kzspkgutil {
namespace {

static_assert(!std::has_virtual_destructor<IPackagerContext>::value,
              "the interface has one operation and no destructor slot");

TEST(BlockTest, StartsWithoutAnOwner) {
    auto* block = new Block(4);
    EXPECT_EQ(block->addRef(), 1U);
    EXPECT_EQ(block->addRef(), 2U);
    EXPECT_EQ(block->release(), 1U);
    EXPECT_EQ(block->release(), 0U);  // the address checker sees a block that stays
}

class Counted : public kzs::NoLockRefCountedObject<kzs::IRefCountedObject> {
public:
    explicit Counted(bool& isGone) : isGone_(isGone) {}
    ~Counted() override { isGone_ = true; }

private:
    bool& isGone_;
};

TEST(RefCountedObjectTest, GoesWithItsLastOwnerThroughTheInterface) {
    bool isGone = false;
    kzs::IRefCountedObject* object = new Counted(isGone);
    object->addRef();
    object->addRef();
    object->release();
    EXPECT_FALSE(isGone);
    object->release();
    EXPECT_TRUE(isGone);
}

TEST(BlockPtrTest, HoldsOneReferenceForEachCopy) {
    RefCountedMemoryArena arena;
    const BlockPtr first = arena.allocate(1);
    {
        const BlockPtr second = first;
        EXPECT_EQ(first->addRef(), 3U);
        EXPECT_EQ(first->release(), 2U);
    }
    EXPECT_EQ(first->addRef(), 2U);
    EXPECT_EQ(first->release(), 1U);
}

TEST(RefCountedMemoryArenaTest, GivesBlocksOfExactlyTheSizeAskedFor) {
    RefCountedMemoryArena arena;
    for (const std::uint64_t size : {0U, 1U, 15U, 4097U}) {
        const BlockPtr block = arena.allocate(size);
        EXPECT_EQ(lastArraySize, size);
        EXPECT_EQ(block->size(), size);
    }
}

TEST(RefCountedMemoryArenaTest, GivesEachCallABlockOfItsOwn) {
    RefCountedMemoryArena arena;
    const BlockPtr first = arena.allocate(8);
    const BlockPtr second = arena.allocate(8);
    EXPECT_NE(first->data(), second->data());
}

TEST(RefCountedMemoryArenaTest, LeavesBlocksAloneOnReset) {
    RefCountedMemoryArena arena;
    const BlockPtr block = arena.allocate(2);
    block->data()[1] = 7;
    arena.reset();
    EXPECT_EQ(block->size(), 2U);
    EXPECT_EQ(block->data()[1], 7);
}

TEST(RefCountedMemoryArenaTest, EndsAFailedAllocationInOutOfMemoryAndKeepsNothing) {
    RefCountedMemoryArena arena;
    refusesArrays = true;
    EXPECT_THROW(arena.allocate(4), std::bad_alloc);
    refusesArrays = false;
    // The address checker sees a block that stays.
}

TEST(PackagerContextTest, GivesOutTheArenaItWasMadeOn) {
    RefCountedMemoryArena arena;
    PackagerContext context(arena);
    EXPECT_EQ(&context.getMemoryArena(), &arena);
}

}  // namespace
}  // namespace torvo::kzspkgutil
