#pragma once

#include <boost/smart_ptr/shared_ptr.hpp>

#include "kzm/SampleDescriptor.h"
#include "kzspkgutil/model/SampleDescriptions.h"

namespace torvo::kzspkgutil {

/// Copies a stored description: the facts by the description's handler (`vide`, `soun`, any
/// other), its codec data as extra data, and no protection data.
boost::shared_ptr<KZSSampleDescriptor> readDescriptor(
    const qlix::kzm::SampleDescriptor& description);

}  // namespace torvo::kzspkgutil
