#pragma once

#include "kzspkgutil/model/MemoryArena.h"

namespace torvo::kzspkgutil {

/// What a run shares among its objects. They keep non-owning pointers to it; it outlives them.
///
/// Nobody deletes a context through this interface: getMemoryArena is its only virtual operation.
class IPackagerContext {
public:
    virtual IMemoryArena& getMemoryArena() = 0;

protected:
    ~IPackagerContext() = default;
};

class PackagerContext final : public IPackagerContext {
public:
    /// `arena` outlives the context.
    explicit PackagerContext(IMemoryArena& arena) : arena_(arena) {}

    IMemoryArena& getMemoryArena() override { return arena_; }

private:
    IMemoryArena& arena_;
};

}  // namespace torvo::kzspkgutil
