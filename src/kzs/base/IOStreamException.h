#pragma once

#include <cstdint>
#include <string>

#include "kvl/KVLException.h"

namespace torvo::kzs {

/// A failed file operation. The inherited text stays empty; the code tells what went wrong.
///
///   code  system error
///      0  none
///      1  any other
///      2  EINVAL
///      3  EACCES
///      4  EEXIST
///      5  EMFILE
///      6  ENOENT
class IOStreamException : public kvl::KVLException {
public:
    IOStreamException(std::int32_t code, std::string path);

    std::int32_t code() const { return code_; }
    const std::string& path() const { return path_; }

    /// The code of a system error number.
    static std::int32_t codeOf(int systemError);

private:
    std::int32_t code_;
    std::string path_;
};

}  // namespace torvo::kzs
