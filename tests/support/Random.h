#pragma once

#include <cstdint>
#include <random>

namespace kz::test {

/// Random 32-bit words that are the same for a seed on every machine. A property test prints the
/// seed (SCOPED_TRACE), so that a failure can be played again.
class Random {
public:
    explicit Random(unsigned seed) : engine_(seed) {}

    std::uint32_t operator()() { return static_cast<std::uint32_t>(engine_()); }
    std::uint64_t u64() {
        const std::uint64_t high = (*this)();
        return (high << 32) | (*this)();
    }

private:
    std::mt19937 engine_;
};

}  // namespace kz::test
