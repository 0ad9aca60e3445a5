#pragma once

#include <memory>

#include "kzm/Reader.h"
#include "kzspkgutil/model/IMediaSource.h"
#include "kzspkgutil/model/PackagerContext.h"

namespace torvo::kzspkgutil {

/// What a fragmenter is told of a sample of a KZM file: its time in whole milliseconds, its kind by
/// the handler. A marker of a pause is skipped.
kzs::FragmenterSample fragmenterSampleOf(const qlix::kzm::Sample& sample);

/// The samples that the reader of a KZM file gives, in its order.
class KZMSampleIterator final : public ISampleIterator {
public:
    /// `context` and `reader` outlive the iterator.
    KZMSampleIterator(IPackagerContext& context, qlix::kzm::Reader& reader,
                      std::shared_ptr<qlix::kzm::SampleIterator> samples);

    bool hasNext() override;
    kzs::FragmenterSample next() override;
    /// Reads the sample's bytes straight to their place in the tag. The empty message for a
    /// handler other than `vide`, `soun` and `meta`. Throws qlix::kzm::Exception, sampleUnreadable
    /// when the bytes aren't all there, and KZSPkgUtilException when they don't fit a tag.
    TCMessage currentMessage() override;

private:
    IPackagerContext& context_;
    qlix::kzm::Reader& reader_;
    std::shared_ptr<qlix::kzm::SampleIterator> samples_;
    qlix::kzm::Sample current_;
};

}  // namespace torvo::kzspkgutil
