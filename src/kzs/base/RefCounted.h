#pragma once

#include <cstdint>

namespace torvo::kzs {

/// An object that counts its owners and goes with the last one.
class IRefCountedObject {
public:
    virtual ~IRefCountedObject() = default;

    /// Returns the new count.
    virtual std::uint32_t addRef() = 0;
    /// Returns the new count; at 0 the object is gone.
    virtual std::uint32_t release() = 0;
};

/// A plain counter without locks: the program has one thread, and what is counted must not
/// cross threads.
class NoLockCountingPolicy {
public:
    std::uint32_t increment() { return ++count_; }
    std::uint32_t decrement() { return --count_; }

private:
    // On purpose: a fresh object has no owner yet. Pinned by BlockTest.StartsWithoutAnOwner.
    std::uint32_t count_ = 0;
};

/// Implements the two operations of `Interface`, which derives from IRefCountedObject.
template <typename Interface, typename Policy>
class RefCountedObjectT : public Interface {
public:
    std::uint32_t addRef() override { return policy_.increment(); }

    std::uint32_t release() override {
        const std::uint32_t left = policy_.decrement();
        if (left == 0) delete this;
        return left;
    }

private:
    Policy policy_;
};

template <typename Interface>
class NoLockRefCountedObject : public RefCountedObjectT<Interface, NoLockCountingPolicy> {};

/// For boost::intrusive_ptr.
inline void intrusive_ptr_add_ref(IRefCountedObject* object) { object->addRef(); }
inline void intrusive_ptr_release(IRefCountedObject* object) { object->release(); }

}  // namespace torvo::kzs
