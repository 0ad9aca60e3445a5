#include "offline/PackagingFlow.h"

#include "kzspkgutil/model/MemoryArena.h"
#include "kzspkgutil/model/PackagerContext.h"
#include "offline/ErrorMapping.h"
#include "offline/PackageInput.h"
#include "offline/PlainSetup.h"
#include "offline/ProtectedFlow.h"
#include "offline/Secrets.h"

namespace torvo::offline {
namespace {

void runFlow(OptionMap& options) {
    kzspkgutil::RefCountedMemoryArena arena;
    kzspkgutil::PackagerContext context(arena);
    // On purpose: this alone tells a protected job from a plain one, whatever else is given.
    // Pinned by ProtectCliTest.CommonKeyAndContentIdAloneFailOnTheNamelessFile.
    if (textOf(options, "common-key").empty()) {
        stopWipingFreedMemory();
        const PlainSetup setup(context);
        packageInput(options, context, *setup.policy, setup.protectionHeader);
    } else {
        runProtectedFlow(options, context);
    }
}

}  // namespace

void runPackagingFlow(OptionMap& options) {
    translateFailures([&] { runFlow(options); });
}

}  // namespace torvo::offline
