#pragma once

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <vector>

namespace torvo::kzs {

struct AfraIndex;

/// Writes `index` as an `afra` box at the stream's position, in one write.
///
/// The stream throws std::ios_base::failure when that fails; its exception setting is put back.
void writeAfra(std::ostream& stream, const AfraIndex& index);

/// The bytes that writeAfra writes. `bytes` is replaced and keeps its capacity.
void serialiseAfra(const AfraIndex& index, std::vector<std::uint8_t>& bytes);

/// The bytes that writeAfra writes, in pieces that need little memory however long the index is.
///
/// A piece ends between two entries and has at most kMaxSize bytes, except that the local entries
/// are all in the first one. As global entries are appended, the pieces stay where they are.
class AfraPieces {
public:
    static constexpr std::size_t kMaxSize = std::size_t{256} * 1024;

    /// `index` outlives this and doesn't change in the meantime.
    explicit AfraPieces(const AfraIndex& index);

    std::size_t count() const;  ///< at least 1
    std::size_t offsetOf(std::size_t piece) const;
    std::size_t totalSize() const;
    /// `bytes` is replaced and keeps its capacity.
    void serialise(std::size_t piece, std::vector<std::uint8_t>& bytes) const;

private:
    /// The number of the first global entry that isn't in the pieces before `piece`.
    std::size_t firstEntryOf(std::size_t piece) const;

    const AfraIndex& index_;
    std::size_t frontSize_;       // all that is before the global entries
    std::size_t entrySize_;       // of a global entry
    std::size_t entriesInFirst_;  // that the first piece has room for
};

}  // namespace torvo::kzs
