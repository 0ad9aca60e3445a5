#pragma once

#include "hlx/CSmartPtrBase.h"

namespace hlx {

/// The wrapper of a policy parser. The tables have no operation on one: policies go to the library
/// as they are, so this wrapper is always null.
class HLXPolicyParser final : public CSmartPtrBase {
public:
    HLXPolicyParser() = default;
};

}  // namespace hlx
