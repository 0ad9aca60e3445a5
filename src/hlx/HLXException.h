#pragma once

#include <cstdint>
#include <exception>
#include <string>

#include "qlix_hlx/qlix_hlx.h"

namespace hlx {

/// A table of the library is missing or too old.
constexpr std::uint32_t kTableCode = 1;
/// A certificate could not be identified. The library itself has no such result: 0 is success.
constexpr std::uint32_t kNotIdentifiedCode = 0;

/// A failure of the encryption library: one of its results, or one of the two codes above.
class HLXException : public std::exception {
public:
    explicit HLXException(std::uint32_t code);

    std::uint32_t code() const { return code_; }
    const char* what() const noexcept override { return text_.c_str(); }

private:
    std::uint32_t code_;
    std::string text_;
};

/// The library refused a certificate; the detail is one of HLX_CERT_....
class HLXInvalidCertException : public HLXException {
public:
    HLXInvalidCertException(std::uint32_t code, std::uint32_t detail);

    std::uint32_t detail() const { return detail_; }

private:
    std::uint32_t detail_;
};

/// The one test that all results go through. Throws unless `result` is 0:
/// HLXInvalidCertException when its low 16 bits are 256, with those as the code and the high 16
/// bits as the detail, else HLXException with the whole value.
void checkResult(HLXResult result);

}  // namespace hlx
