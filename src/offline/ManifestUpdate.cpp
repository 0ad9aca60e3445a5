#include "offline/ManifestUpdate.h"

#include <boost/filesystem/operations.hpp>
#include <boost/filesystem/path.hpp>

#include "offline/InputPath.h"
#include "offline/ManifestFile.h"
#include "offline/OfflineException.h"
#include "offline/OutputFile.h"
#include "offline/OutputNames.h"

namespace torvo::offline {

namespace fs = boost::filesystem;

namespace {

std::string withExtension(const std::string& path, const std::string& extension) {
    return fs::path(path).replace_extension(extension).string();
}

std::string targetPath(const OptionMap& options) {
    const std::string& outputName = textOf(options, "output-manifest-file");
    const std::string& manifestFile = textOf(options, "manifest-file");
    // On purpose: a name of the user's own is taken as it is, and the test for a free name comes
    // ahead of the change of the extension.
    // Pinned by ManifestUpdateTest.ANameOfTheUsersOwnIsOverwritten and
    // .AFreeNameIsLookedForBeforeTheExtensionChanges.
    const std::string target =
        outputName.empty() ? uniquePath(pathInOutput(options, lastComponentOf(manifestFile)))
                           : pathInOutput(options, lastComponentOf(outputName));
    return withExtension(target, ".kzd");
}

}  // namespace

void updateManifest(const OptionMap& options, const std::vector<std::uint8_t>& additionalHeader) {
    const std::string& manifestFile = textOf(options, "manifest-file");
    if (manifestFile.empty()) throw ManifestFileNotGivenException();
    requireFile(manifestFile);
    makeOutputPath(options);
    const std::string target = targetPath(options);

    const auto manifest = makeManifest(options, /*id=*/"", /*durationSeconds=*/0.0);
    const std::string headerPath =
        manifest->hasExternalDrmHeader() ? withExtension(target, ".drmmeta") : "";
    manifest->updateDRMMetadata(additionalHeader, lastComponentOf(headerPath));
    manifest->commit();
    writeManifestFile(*manifest, target);
    if (headerPath.empty()) return;
    OutputFile header(headerPath);
    header.write(additionalHeader);
    header.close();
}

std::string uniquePath(const std::string& path) {
    const std::string extension = fs::path(path).extension().string();
    const std::string stem = path.substr(0, path.size() - extension.size());
    for (unsigned long n = 1;; ++n) {
        const std::string candidate = stem + "_" + std::to_string(n) + extension;
        if (!fs::exists(candidate)) return candidate;
    }
}

}  // namespace torvo::offline
