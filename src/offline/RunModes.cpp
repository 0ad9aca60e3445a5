#include "offline/RunModes.h"

#include <exception>
#include <ostream>

#include "kzs/base/StreamExceptionGuard.h"
#include "offline/ConfigDump.h"
#include "offline/Inspection.h"
#include "offline/OfflineException.h"
#include "offline/SampleDump.h"

namespace torvo::offline {
namespace {

/// The order of the tests decides when several modes are asked for. On purpose even the dump of
/// the settings needs an input file, unless a manifest is to be updated, and the texts of help and
/// version get a line end beside their own. Pinned by OptionsCliTest.ConfigDumpAloneIsAMissingInput
/// and .VersionIsPrintedBetweenEmptyLines.
bool runFirstMode(const OptionMap& options, const std::string& helpText,
                  const std::string& versionText, std::ostream& out) {
    if (flagOf(options, "help")) {
        out << helpText << std::endl;
    } else if (flagOf(options, "version")) {
        out << versionText << std::endl;
    } else if (!flagOf(options, "update-drm-info") && textOf(options, "input-file").empty()) {
        throw InputFileNotGivenException();
    } else if (flagOf(options, "config-dump")) {
        dumpConfig(options, out);
    } else if (flagOf(options, "sample-dump")) {
        dumpSamples(options, out);
    } else if (flagOf(options, "inspect-fragments")) {
        inspectFragments(options, out);
    } else if (flagOf(options, "inspect-bootstrap")) {
        inspectBootstrap(options, out);
    } else if (flagOf(options, "inspect-index")) {
        inspectIndex(options, out);
    } else {
        return false;
    }
    return true;
}

}  // namespace

bool runModes(const OptionMap& options, const std::string& helpText, const std::string& versionText,
              std::ostream& out) {
    try {
        // A full disk or a closed pipe is a failure of the job, wherever in the output it strikes.
        const kzs::StreamExceptionGuard guard(out, std::ios::failbit | std::ios::badbit);
        const bool ran = runFirstMode(options, helpText, versionText, out);
        if (ran) out.flush();
        return ran;
    } catch (const std::exception& failure) {
        throw StdErrorException(failure.what());
    }
}

}  // namespace torvo::offline
