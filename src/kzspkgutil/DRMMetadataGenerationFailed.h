#pragma once

#include "kzspkgutil/model/KZSPkgUtilException.h"

namespace torvo::kzspkgutil {

/// Code 4: the encryption library made no protection metadata.
class DRMMetadataGenerationFailed : public KZSPkgUtilException {
public:
    DRMMetadataGenerationFailed() : KZSPkgUtilException(4, "DRM metadata generation failed") {}
};

}  // namespace torvo::kzspkgutil
