#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include <boost/smart_ptr/shared_ptr.hpp>

#include "kzs/base/FragmenterSample.h"
#include "kzspkgutil/model/IMediaProperties.h"
#include "kzspkgutil/model/PackagerContext.h"
#include "kzspkgutil/model/TCMessage.h"

namespace torvo::kzspkgutil {

/// Walks the samples of a source. The calling order is fixed: hasNext, next, then at most one
/// currentMessage.
class ISampleIterator {
public:
    virtual ~ISampleIterator() = default;

    virtual bool hasNext() = 0;
    /// Moves to the next sample and describes it, cheaply: its data isn't touched.
    virtual kzs::FragmenterSample next() = 0;
    /// Reads the sample that next moved to.
    virtual TCMessage currentMessage() = 0;
};

/// One opened recording. It outlives its sample iterators.
class IMediaSource : public IMediaProperties {
public:
    /// Each call starts a new pass.
    virtual boost::shared_ptr<ISampleIterator> getSampleIterator() = 0;
};

/// Recognises a format and opens sources of it.
class IMediaSourceProvider {
public:
    virtual ~IMediaSourceProvider() = default;

    /// `openFlags` as for kzs::FileStream.
    virtual bool canOpen(const std::string& path, std::uint32_t openFlags) = 0;
    /// `context` outlives the source.
    virtual std::unique_ptr<IMediaSource> createSource(IPackagerContext& context,
                                                       const std::string& path,
                                                       std::uint32_t openFlags) = 0;
};

}  // namespace torvo::kzspkgutil
