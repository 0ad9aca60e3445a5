#pragma once

#include <cstdint>

#include <boost/smart_ptr/shared_ptr.hpp>

#include "kzspkgutil/model/KZSTrack.h"

namespace torvo::kzspkgutil {

/// What a source tells of the whole recording.
struct MediaProperties {
    bool isFragmented = false;
    std::uint64_t duration = 0;  ///< in `timescale`
    float rate = 1.0F;
    float volume = 1.0F;
    std::uint32_t timescale = 1000;  ///< ticks a second

    /// The duration in seconds; its bare number where the timescale is 0.
    double durationSeconds() const {
        const auto ticks = static_cast<double>(duration);
        return timescale != 0 ? ticks / timescale : ticks;
    }
};

/// Walks tracks in their order.
class ITrackIterator {
public:
    virtual ~ITrackIterator() = default;

    virtual bool hasNext() const = 0;
    /// Only to be called while hasNext().
    virtual boost::shared_ptr<KZSTrack> next() = 0;
};

/// The properties and tracks of a recording.
class IMediaProperties {
public:
    virtual ~IMediaProperties() = default;

    virtual MediaProperties getProperties() const = 0;
    virtual boost::shared_ptr<ITrackIterator> getTracks() const = 0;
};

}  // namespace torvo::kzspkgutil
