#include "flv/Exception.h"

namespace flv {

Exception::Exception(std::uint32_t code) : code_(code) {}

Exception::~Exception() = default;

const char* Exception::what() const noexcept { return "flv::Exception"; }

void check(std::uint32_t result) {
    if (result != kQlixFLVOk) throw Exception(result);
}

}  // namespace flv
