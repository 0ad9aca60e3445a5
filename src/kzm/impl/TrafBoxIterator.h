#pragma once

#include "kzm/impl/BoxIterator.h"

namespace qlix::kzm::impl {

/// Walks the `traf` boxes of one track in a `moof`.
class TrafBoxIterator : public BoxIterator {
public:
    TrafBoxIterator(Box& parent, std::uint32_t trackId, std::size_t index = 0);

protected:
    void settle() override;

private:
    std::uint32_t trackId_;
};

/// Walks the `traf` boxes of one track from the last one down.
class ReverseTrafBoxIterator : public ReverseBoxIterator {
public:
    ReverseTrafBoxIterator(Box& parent, std::uint32_t trackId);

protected:
    void settle() override;

private:
    std::uint32_t trackId_;
};

}  // namespace qlix::kzm::impl
