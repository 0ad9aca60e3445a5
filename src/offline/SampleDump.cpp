#include "offline/SampleDump.h"

#include "offline/OfflineException.h"

namespace torvo::offline {

void dumpSamples(const OptionMap&, std::ostream&) { throw InternalException(); }

}  // namespace torvo::offline
