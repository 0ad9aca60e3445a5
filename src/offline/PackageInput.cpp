#include "offline/PackageInput.h"

#include <memory>

#include <boost/filesystem/operations.hpp>

#include "kzs/BootstrapWriter.h"
#include "kzs/Manifest.h"
#include "kzs/OnMetaDataBuilder.h"
#include "kzs/XmlText.h"
#include "kzs/base/FileStream.h"
#include "kzspkgutil/FLVMediaSourceProvider.h"
#include "kzspkgutil/KZMMediaSourceProvider.h"
#include "kzspkgutil/model/IMediaSource.h"
#include "offline/InputPath.h"
#include "offline/ManifestFile.h"
#include "offline/OfflineException.h"
#include "offline/OutputFile.h"
#include "offline/OutputNames.h"
#include "offline/PackagingRun.h"

namespace torvo::offline {
namespace {

using kzspkgutil::IMediaSource;
using kzspkgutil::IMediaSourceProvider;
using kzspkgutil::IPackagerContext;

/// What goes into the manifest must be able to come back from it; better told before any work
/// than by the next run that merges into it.
void requireManifestTexts(const OptionMap& options) {
    kzs::requireXmlText(baseNameOf(options));
    kzs::requireXmlText(textOf(options, "content-id"));
}

std::unique_ptr<IMediaSource> openSource(const OptionMap& options, IPackagerContext& context) {
    const std::string& path = textOf(options, "input-file");
    if (!boost::filesystem::exists(path)) throw FileNotFoundException(path);

    // On purpose: edit lists of the input count only when asked for.
    // Pinned by PackageKzmCliTest.EditListsCountOnlyWhenAskedFor.
    const bool ignoresEdits = !flagOf(options, "edit-list");
    const std::unique_ptr<IMediaSourceProvider> providers[] = {
        std::make_unique<kzspkgutil::FLVMediaSourceProvider>(),
        std::make_unique<kzspkgutil::KZMMediaSourceProvider>(ignoresEdits)};
    constexpr std::uint32_t kReadOnly = kzs::openFlagsFor(false, false);
    for (const auto& provider : providers) {
        if (provider->canOpen(path, kReadOnly)) {
            return provider->createSource(context, path, kReadOnly);
        }
    }
    throw InvalidInputFileException();
}

void writeExternalFiles(const OptionMap& options, const std::string& baseName,
                        const std::vector<std::uint8_t>& protectionHeader,
                        kzs::Rendition& rendition) {
    const std::string bootstrapPath = pathInOutput(options, baseName + ".bootstrap");
    OutputFile bootstrapFile(bootstrapPath);
    bootstrapFile.write(kzs::serialiseBootstrap(rendition.bootstrap(), /*bodyOnly=*/false));
    bootstrapFile.close();
    rendition.bootstrapUrl = lastComponentOf(bootstrapPath);

    // On purpose: no file without a header. Both files are named without their folder.
    // Pinned by PackageCliTest.AnExternalBootstrapIsWrittenAndNamed.
    if (protectionHeader.empty()) return;
    const std::string headerPath = pathInOutput(options, baseName + ".drmmeta");
    OutputFile headerFile(headerPath);
    headerFile.write(protectionHeader);
    headerFile.close();
    rendition.drmUrl = lastComponentOf(headerPath);
}

}  // namespace

void packageInput(const OptionMap& options, IPackagerContext& context,
                  kzspkgutil::IKZSMediaWriterPolicy& policy,
                  const std::vector<std::uint8_t>& protectionHeader) {
    const std::string& inputPath = textOf(options, "input-file");
    // On purpose: a folder is told before the output path is made, a missing file behind it.
    // Pinned by PackageFailureCliTest.AFolderAsInputIsToldBeforeTheOutputPathIsMade.
    if (boost::filesystem::is_directory(inputPath)) throw PathNotFileException(inputPath);
    refuseFifo(inputPath);
    requireManifestTexts(options);
    makeOutputPath(options);
    const std::string baseName = baseNameOf(options);
    for (const char* suffix : {".kzd", ".bootstrap", ".drmmeta"}) {
        refuseInput(pathInOutput(options, baseName + suffix), inputPath);
    }

    const std::unique_ptr<IMediaSource> source = openSource(options, context);
    if (!source->getTracks()->hasNext()) throw NoSupportedTracksException(inputPath);
    const double durationSeconds = source->getProperties().durationSeconds();

    const std::unique_ptr<kzs::Manifest> manifest =
        makeManifest(options, baseName, durationSeconds);
    // On purpose: the base name is both. An entry of that name in a loaded manifest is replaced.
    // Pinned by PackageCliTest.TheStreamAndItsUrlAreBothTheBaseName.
    kzs::Rendition& rendition =
        manifest->addMedia(baseName, baseName, numberOf(options, "bitrate"));
    PackagingRun(options, context, policy, *source, rendition).run(durationSeconds * 1000.0);

    // On purpose: what the source says, though the segments' tracks were changed.
    // Pinned by PackageKzmCliTest.TheMetadataDescribesTheSourceAndNotTheSegments.
    rendition.metadata = kzs::buildOnMetaData(*source, /*hasSmpte=*/false, /*smpteOffset=*/0.0);
    if (flagOf(options, "external-bootstrap")) {
        writeExternalFiles(options, baseName, protectionHeader, rendition);
    }
    rendition.drmMetadata = protectionHeader;
    // On purpose: in a plain run too, whose manifest then names the content.
    // Pinned by PackageCliTest.AContentIdAloneIsAPlainRunThatNamesTheContent.
    rendition.drmContentId = textOf(options, "content-id");
    manifest->commit();
    writeManifestFile(*manifest, pathInOutput(options, baseName + ".kzd"));
}

}  // namespace torvo::offline
