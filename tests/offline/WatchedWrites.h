#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace kz::test {

/// For as long as it lives, notes each write at an offset to a file whose path ends so. One at a
/// time.
class WatchedWrites {
public:
    explicit WatchedWrites(const std::string& pathEnd);
    ~WatchedWrites();
    WatchedWrites(const WatchedWrites&) = delete;
    WatchedWrites& operator=(const WatchedWrites&) = delete;

    /// Each as "offset+size", in the order in which they were made; forgotten with that.
    std::string take();
    /// `look` is called ahead of each write: the file is then what a kill would leave.
    void beforeEach(std::function<void()> look);
    /// Lets the write after the next `succeeding` ones fail, as on a full disk.
    void failAfter(std::size_t succeeding);
};

}  // namespace kz::test
