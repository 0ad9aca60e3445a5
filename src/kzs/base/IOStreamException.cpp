#include "kzs/base/IOStreamException.h"

#include <cerrno>
#include <utility>

namespace torvo::kzs {

IOStreamException::IOStreamException(std::int32_t code, std::string path)
    : kvl::KVLException(std::string()), code_(code), path_(std::move(path)) {}

std::int32_t IOStreamException::codeOf(int systemError) {
    switch (systemError) {
        case 0:
            return 0;
        case EINVAL:
            return 2;
        case EACCES:
            return 3;
        case EEXIST:
            return 4;
        case EMFILE:
            return 5;
        case ENOENT:
            return 6;
        default:
            return 1;
    }
}

}  // namespace torvo::kzs
