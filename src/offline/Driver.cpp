#include "offline/Driver.h"

#include <iostream>

#include "offline/OfflineException.h"
#include "offline/PackagerOptions.h"
#include "offline/PackagingFlow.h"
#include "offline/RunModes.h"
#include "offline/Secrets.h"

namespace torvo::offline {

std::int32_t main(OptionMap& options, std::vector<std::string> arguments) {
    try {
        std::string helpText;
        std::string versionText;
        // On purpose: the options are read and checked as a whole before any mode is looked at, so
        // that a broken set stops even the help; and a mode never starts the encryption library.
        // Pinned by OptionsCliTest.AnIncompleteProtectionSetStopsEvenHelp and
        // InspectCliTest.ACommonKeyDoesNotStartTheEncryptionLibrary.
        parseOptions(options, arguments, helpText, versionText);
        wipe(arguments);
        if (!runModes(options, helpText, versionText, std::cout)) runPackagingFlow(options);
        return 0;
    } catch (const OfflineException& failure) {
        // One write for the line. Where standard error is closed, the status alone must tell.
        std::cerr << "Error " + std::to_string(failure.code()) + ": " + failure.text() + "\n"
                  << std::flush;
        return failure.code();
    }
}

}  // namespace torvo::offline
