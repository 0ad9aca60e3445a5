#pragma once

#include <cstdint>
#include <vector>

#include <boost/smart_ptr/make_shared.hpp>

#include "kzspkgutil/KZSMediaWriterPolicy.h"

namespace torvo::offline {

/// What a plain run is given in the place of a protection set-up.
struct PlainSetup {
    /// `context` outlives the set-up.
    explicit PlainSetup(kzspkgutil::IPackagerContext& context)
        : policy(boost::make_shared<kzspkgutil::KZSMediaWriterPolicy>(context)) {}

    boost::shared_ptr<kzspkgutil::KZSMediaWriterPolicy> policy;
    std::vector<std::uint8_t> protectionHeader;  ///< stays empty
};

}  // namespace torvo::offline
