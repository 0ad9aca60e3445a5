#pragma once

#include <cstdint>

#include "kzs/Fragmenter.h"

namespace torvo::kzs {

/// Cuts at the first sample at or behind a grid line, for inputs without video.
///
///   state  meaning
///     0    nothing seen
///     1    first sample seen, no grid line crossed yet
///     2    a fragment is open
class AudioFragmenter final : public Fragmenter {
public:
    /// As for AVFragmenter.
    AudioFragmenter(std::uint32_t fragmentDuration, bool checkFirstCut);

    FragmentEvent addSample(const FragmenterSample& sample) override;
    FragmentEvent finish(const FragmenterSample& lastSample) override;

private:
    FragmentEvent openFirst(const Timestamp& time, std::uint64_t cell);
    FragmentEvent cut(const Timestamp& end, std::uint64_t cell) const;

    std::uint32_t fragmentDuration_;
    bool checkFirstCut_;
    Timestamp firstTime_;
    Timestamp fragmentStart_;
    std::uint64_t currentCell_ = 0;
    std::int32_t state_ = 0;
};

}  // namespace torvo::kzs
