#include "offline/ProtectedFlow.h"

#include "offline/OfflineException.h"

namespace torvo::offline {

void runProtectedFlow(const OptionMap&, kzspkgutil::IPackagerContext&) {
    throw InternalException();
}

}  // namespace torvo::offline
