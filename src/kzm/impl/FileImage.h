#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "kzm/impl/QlixKZMStream.h"

namespace qlix::kzm::impl {

/// A stretch of a file that is kept in memory, so that boxes can be rewritten in place without a
/// write for each of their fields.
///
/// Boxes write to it as to the file. Bytes that differ from those held wait until `flush`, which
/// joins what lies close together and hands it to the file in the order of the first change.
class FileImage final : public QlixKZMStream {
public:
    /// Changes nearer to each other than this go out as one write, with the bytes between.
    static constexpr std::size_t kJoinDistance = 16384;

    /// `file` outlives the image.
    explicit FileImage(QlixKZMStream& file) : file_(file) {}

    /// Forgets all bytes held, waiting or not; the stretch begins at `start` from now on.
    void begin(std::uint64_t start);
    /// Whether all of `count` bytes at `position` are held.
    bool holds(std::uint64_t position, std::uint64_t count) const;

    /// The position must not lie before the start. Room left in between reads as zeros and is not
    /// written unless it lies between two changes.
    void write(const void* buffer, std::uint64_t count) override;
    void seek(std::uint64_t position) override { position_ = position; }
    std::uint64_t tell() const override { return position_; }
    /// Hands the changes to the file, which may keep them waiting in turn. Throws writeFailed.
    void flush() override;

private:
    struct Range {  // offsets in held_
        std::size_t first;
        std::size_t end;
    };
    void markChanged(Range range);

    QlixKZMStream& file_;
    std::uint64_t start_ = 0;
    std::uint64_t position_ = 0;
    std::vector<std::uint8_t> held_;
    std::vector<Range> changes_;  // more than kJoinDistance apart
};

}  // namespace qlix::kzm::impl
