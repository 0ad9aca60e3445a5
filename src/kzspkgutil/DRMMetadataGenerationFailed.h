#pragma once

#include "kzspkgutil/model/KZSPkgUtilException.h"

namespace torvo::kzspkgutil {

/// kNoProtectionMetadata: the encryption library made no protection metadata.
class DRMMetadataGenerationFailed : public KZSPkgUtilException {
public:
    DRMMetadataGenerationFailed()
        : KZSPkgUtilException(kNoProtectionMetadata, "DRM metadata generation failed") {}
};

}  // namespace torvo::kzspkgutil
