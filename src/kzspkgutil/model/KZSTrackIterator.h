#pragma once

#include <cstddef>
#include <vector>

#include <boost/smart_ptr/shared_ptr.hpp>

#include "kzspkgutil/model/IMediaProperties.h"

namespace torvo::kzspkgutil {

/// Walks a copy of the list it is made on.
class KZSTrackIterator final : public ITrackIterator {
public:
    explicit KZSTrackIterator(std::vector<boost::shared_ptr<KZSTrack>> tracks);

    bool hasNext() const override;
    boost::shared_ptr<KZSTrack> next() override;

private:
    std::vector<boost::shared_ptr<KZSTrack>> tracks_;
    std::size_t position_ = 0;
};

}  // namespace torvo::kzspkgutil
