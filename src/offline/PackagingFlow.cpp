#include "offline/PackagingFlow.h"

#include "offline/ErrorMapping.h"
#include "offline/OfflineException.h"

namespace torvo::offline {

void runPackagingFlow(const OptionMap&) {
    translateFailures([] { throw InternalException(); });
}

}  // namespace torvo::offline
