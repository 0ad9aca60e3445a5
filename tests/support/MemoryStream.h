#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "kzm/Exception.h"
#include "kzm/QlixIOStream.h"
#include "support/Bytes.h"

namespace kz::test {

/// A box library stream over bytes in memory, with faults to switch on.
///
/// Writing beyond the end fills the gap with zeros, as a file does.
class MemoryStream : public qlix::kzm::QlixIOStream {
public:
    static constexpr std::uint64_t kNever = std::numeric_limits<std::uint64_t>::max();

    MemoryStream() = default;
    explicit MemoryStream(Bytes bytes) : content(std::move(bytes)) {}

    void addRef() override { ++references; }
    void release() override { --references; }

    void open() override {
        count();
        isOpen = true;
        position = 0;
    }
    void close() override {
        isOpen = false;
        if (closeFails) throw qlix::kzm::Exception(failure);
    }

    std::uint64_t read(void* buffer, std::uint64_t wanted) override {
        count();
        ++reads;
        if (position >= content.size()) return 0;
        const std::uint64_t got =
            std::min({wanted, mostPerRead, static_cast<std::uint64_t>(content.size()) - position});
        std::copy_n(content.data() + position, got, static_cast<std::uint8_t*>(buffer));
        position += got;
        return got;
    }

    std::uint64_t seek(std::int64_t offset, int origin) override {
        count();
        ++seeks;
        const std::uint64_t base = origin == qlix::kzm::kSeekFromStart     ? 0
                                   : origin == qlix::kzm::kSeekFromCurrent ? position
                                                                           : content.size();
        position = base + static_cast<std::uint64_t>(offset);
        return position;
    }

    std::uint64_t tell() override {
        count();
        return position;
    }

    std::uint64_t write(const void* buffer, std::uint64_t wanted) override {
        count();
        ++writes;
        const std::uint64_t room = capacity > position ? capacity - position : 0;
        const std::uint64_t taken = std::min({wanted, mostPerWrite, room});
        const auto* from = static_cast<const std::uint8_t*>(buffer);
        if (taken > 0 && position + taken > content.size()) {
            content.resize(static_cast<std::size_t>(position + taken));
        }
        std::copy_n(from, taken, content.data() + position);
        position += taken;
        return taken;
    }

    void truncate(std::uint64_t size) override {
        count();
        content.resize(static_cast<std::size_t>(size));
    }

    Bytes content;
    std::uint64_t position = 0;

    /// Faults: pieces that are shorter than asked, a full disk, and a call (from 0, counted over
    /// all operations but close) that throws `failure`.
    std::uint64_t mostPerRead = kNever;
    std::uint64_t mostPerWrite = kNever;
    std::uint64_t capacity = kNever;
    std::uint64_t failAtCall = kNever;
    bool closeFails = false;
    std::uint32_t failure = 1;

    std::uint64_t calls = 0;
    std::uint64_t reads = 0;
    std::uint64_t seeks = 0;
    std::uint64_t writes = 0;
    int references = 0;
    bool isOpen = false;

private:
    void count() {
        if (calls++ == failAtCall) throw qlix::kzm::Exception(failure);
    }
};

}  // namespace kz::test
