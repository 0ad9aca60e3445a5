#include "offline/ProtectedFlow.h"

#include <iostream>
#include <memory>
#include <string>

#include "hlx/HLXLibrary.h"
#include "offline/EncryptionSetup.h"
#include "offline/ManifestUpdate.h"
#include "offline/PackageInput.h"
#include "offline/Secrets.h"

namespace torvo::offline {
namespace {

/// A setup stops the library when it goes; one that can't be made leaves that to us.
std::unique_ptr<EncryptionSetup> makeSetup(const OptionMap& options,
                                           kzspkgutil::IPackagerContext& context) {
    hlx::startLibrary();
    try {
        return std::make_unique<EncryptionSetup>(options, context);
    } catch (...) {
        hlx::stopLibrary();
        throw;
    }
}

void warnOfExpiry(const EncryptionSetup& setup) {
    std::string dateText;
    if (!setup.certificateStaysValid(dateText)) std::cerr << certificateWarning(dateText);
}

}  // namespace

void runProtectedFlow(OptionMap& options, kzspkgutil::IPackagerContext& context) {
    const std::unique_ptr<EncryptionSetup> setup = makeSetup(options, context);
    wipePassword(options);
    wipeStack();
    stopWipingFreedMemory();
    warnOfExpiry(*setup);
    if (flagOf(options, "update-drm-info")) {
        // On purpose: `dump-drm-metadata` has no effect here.
        // Pinned by ProtectRenditionsTest.AnUpdateLeavesOneInlineHeaderForAll.
        updateManifest(options, setup->additionalHeader());
        return;
    }
    packageInput(options, context, setup->policy(), setup->additionalHeader());
    if (flagOf(options, "dump-drm-metadata")) writeDrmMetadataFile(options, *setup);
}

}  // namespace torvo::offline
