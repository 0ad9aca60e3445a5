#include "offline/OutputNames.h"

#include <boost/filesystem/operations.hpp>
#include <boost/filesystem/path.hpp>

#include "offline/OfflineException.h"

namespace torvo::offline {

namespace fs = boost::filesystem;

std::string baseNameOf(const OptionMap& options) {
    // On purpose: folders of the name don't count, and only the last extension goes.
    // Pinned by PackageCliTest.AnOutputNameReplacesTheInputsAndItsFoldersDoNotCount and
    // .OnlyTheLastExtensionGoes.
    const std::string& outputName = textOf(options, "output-manifest-file");
    return fs::path(outputName.empty() ? textOf(options, "input-file") : outputName)
        .stem()
        .string();
}

std::string pathInOutput(const OptionMap& options, const std::string& name) {
    return (fs::path(textOf(options, "output-path")) / name).string();
}

void makeOutputPath(const OptionMap& options) {
    const fs::path path(textOf(options, "output-path"));
    // The test is not only quicker: "." and ".." can't be created, though they are there.
    if (!fs::is_directory(path)) fs::create_directories(path);
}

void refuseInput(const std::string& path, const std::string& inputPath) {
    boost::system::error_code incomparable;
    if (fs::equivalent(path, inputPath, incomparable)) throw CantAccessFileException(path);
}

std::string lastComponentOf(const std::string& path) { return fs::path(path).filename().string(); }

}  // namespace torvo::offline
