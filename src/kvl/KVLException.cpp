#include "kvl/KVLException.h"

#include <utility>

namespace kvl {

KVLException::KVLException(std::string message) : message_(std::move(message)) {}

KVLException::~KVLException() = default;

const char* KVLException::what() const noexcept { return message_.c_str(); }

}  // namespace kvl
