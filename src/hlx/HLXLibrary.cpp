#include "hlx/HLXLibrary.h"

#include "hlx/HLXException.h"

namespace hlx {
namespace {

const HLXInitRecord kInitRecord = {};

}  // namespace

void startLibrary() { checkResult(HLXInitialize(&kInitRecord)); }

void stopLibrary() noexcept { HLXTerminate(); }

}  // namespace hlx
