#pragma once

#include <cstdint>
#include <iosfwd>
#include <map>
#include <string>
#include <vector>

#include "kzs/ManifestContent.h"

namespace torvo::kzs {

/// The XML file that lists the renditions of a presentation.
///
/// A run makes a new one or loads an existing one, adds a rendition, fills it, commits once and
/// writes. Every constructor seeds the random numbers from which ids are made.
class Manifest {
public:
    /// A new manifest. `fragmentDuration`, `durationPrecision`, `frameDuration` and
    /// `allowedDrift` are milliseconds and go into every BootstrapBuilder made here; `duration`
    /// is in seconds. `id` is the presentation's name.
    Manifest(std::uint32_t fragmentDuration, double durationPrecision, double frameDuration,
             std::uint32_t allowedDrift, const std::string& id, const std::string& mimeType,
             const std::string& streamType, double duration);

    /// From a parsed document, which is edited in place. Without `loadMedia` no renditions are
    /// made of its `media` elements. Throws InvalidBootstrapFormat for a bootstrap that can't be
    /// read and std::runtime_error for content that isn't base64.
    Manifest(kvl::minidom::DocumentPtr document, std::uint32_t fragmentDuration,
             double durationPrecision, double frameDuration, std::uint32_t allowedDrift,
             bool loadMedia);

    Manifest(const Manifest&) = delete;
    Manifest& operator=(const Manifest&) = delete;

    /// A new rendition under `streamId`, in the place of one that was there. The reference lives
    /// as long as the manifest or until the next call with that id.
    Rendition& addMedia(const std::string& streamId, const std::string& url, double bitrate);

    /// Swaps the protection header of all renditions for `header`, which lies at `url` if that
    /// isn't empty. Throws std::logic_error if the renditions name headers that the manifest
    /// doesn't have.
    void updateDRMMetadata(const std::vector<std::uint8_t>& header, const std::string& url);

    /// Whether any protection header of the loaded file lies in a file of its own.
    bool hasExternalDrmHeader() const;

    /// Brings the document up to date with the renditions. Throws std::logic_error if a rendition
    /// names a protection header that the manifest doesn't have.
    void commit();

    /// Writes the document as of the last commit. Failures are left to the stream's exception
    /// setting.
    void write(std::ostream& stream) const;

    const std::map<std::string, Rendition>& renditions() const { return content_.renditions; }
    const std::map<std::string, BootstrapEntry>& bootstraps() const { return content_.bootstraps; }
    const std::map<std::string, DrmHeaderEntry>& drmHeaders() const { return content_.drmHeaders; }

private:
    ManifestContent content_;
};

}  // namespace torvo::kzs
