#pragma once

namespace kz::test {

/// For as long as it lives, memory runs out: `new` succeeds a number of times, and from then on it
/// throws std::bad_alloc. One at a time.
class FailingMemory {
public:
    explicit FailingMemory(long succeeding);
    ~FailingMemory();
    FailingMemory(const FailingMemory&) = delete;
    FailingMemory& operator=(const FailingMemory&) = delete;
};

}  // namespace kz::test
