#pragma once

#include <sys/types.h>

namespace kz::test {

/// While it lives, the superuser's right to open every file is put aside, so that permissions
/// count. Does nothing for anybody else.
///
/// Throws std::runtime_error where the system doesn't let the superuser become somebody else.
class OrdinaryUser {
public:
    OrdinaryUser();
    ~OrdinaryUser();
    OrdinaryUser(const OrdinaryUser&) = delete;
    OrdinaryUser& operator=(const OrdinaryUser&) = delete;

private:
    uid_t former_;
};

}  // namespace kz::test
