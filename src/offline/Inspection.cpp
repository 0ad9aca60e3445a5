#include "offline/Inspection.h"

#include "offline/OfflineException.h"

namespace torvo::offline {

void inspectIndex(const OptionMap&, std::ostream&) { throw InternalException(); }
void inspectBootstrap(const OptionMap&, std::ostream&) { throw InternalException(); }
void inspectFragments(const OptionMap&, std::ostream&) { throw InternalException(); }

}  // namespace torvo::offline
