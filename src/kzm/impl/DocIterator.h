#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "kzm/Sample.h"
#include "kzm/impl/SampleTime.h"

namespace qlix::kzm::impl {

class Reader;

/// Interleaves the samples of several tracks by time. Keeps the document open.
class DocIterator final : public SampleIterator {
public:
    /// Ties go to the track that comes first. Throws noSampleTables.
    DocIterator(std::shared_ptr<Reader> reader,
                const std::vector<std::shared_ptr<const KZMTrack>>& tracks, const TimeRange& range);

    bool hasSample() override;
    Sample next() override;

private:
    /// A track that still has samples, and the next one of them.
    struct Source {
        std::unique_ptr<SampleIterator> samples;
        std::optional<Sample> head;
        std::uint64_t left;  // samples that may still come
    };

    static void refill(Source& source);

    std::shared_ptr<Reader> reader_;
    std::vector<Source> sources_;
};

}  // namespace qlix::kzm::impl
