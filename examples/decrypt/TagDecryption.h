#pragma once

#include "decrypt/LicenseServer.h"

namespace decrypt {

/// The clear tag that an encrypted tag image stands for; a clear one as it is. Throws
/// std::runtime_error.
Bytes decryptTag(const Bytes& tag, const Bytes& contentKey);

}  // namespace decrypt
