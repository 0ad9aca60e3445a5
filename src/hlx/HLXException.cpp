#include "hlx/HLXException.h"

namespace hlx {

HLXException::HLXException(std::uint32_t code)
    : code_(code), text_("encryption library error " + std::to_string(code)) {}

HLXInvalidCertException::HLXInvalidCertException(std::uint32_t code, std::uint32_t detail)
    : HLXException(code), detail_(detail) {}

void checkResult(HLXResult result) {
    if (result == HLX_OK) return;
    const std::uint32_t code = result & 0xFFFF;
    if (code == HLX_ERROR_INVALID_CERTIFICATE) throw HLXInvalidCertException(code, result >> 16);
    throw HLXException(result);
}

}  // namespace hlx
