#pragma once

#include <string>

namespace kz::test {

/// For as long as it lives, closing a file whose path ends so closes it and reports an error: as
/// file systems do that find out only then that what was written can't be kept. One at a time.
class FailingClose {
public:
    /// `error` is a number of <cerrno>.
    FailingClose(std::string pathEnd, int error);
    ~FailingClose();
    FailingClose(const FailingClose&) = delete;
    FailingClose& operator=(const FailingClose&) = delete;
};

}  // namespace kz::test
