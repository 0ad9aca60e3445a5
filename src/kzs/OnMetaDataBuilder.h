#pragma once

#include <cstdint>
#include <vector>

namespace torvo::kzspkgutil {
class IMediaProperties;
}

namespace torvo::kzs {

/// The onMetaData record, in AMF0, of what a source tells of its recording.
std::vector<std::uint8_t> buildOnMetaData(const kzspkgutil::IMediaProperties& mediaProperties,
                                          bool hasSmpte, double smpteOffset);

}  // namespace torvo::kzs
