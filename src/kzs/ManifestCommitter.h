#pragma once

#include <string>

#include "kzs/ManifestContent.h"

namespace torvo::kzs {

/// Brings the document of a manifest up to date with its maps.
class ManifestCommitter {
public:
    /// `content` outlives the committer.
    explicit ManifestCommitter(ManifestContent& content) : content_(content) {}

    /// Throws std::logic_error if a rendition names a protection header that isn't there.
    void commit();

private:
    /// The id of the element for the rendition's bootstrap, made if there is none; empty if the
    /// rendition has no bootstrap.
    std::string commitBootstrap(const Rendition& rendition);
    std::string addBootstrap(const Rendition& rendition);
    /// The id of the rendition's protection header; empty if it has none.
    std::string commitDrmHeader(const Rendition& rendition);
    std::string addDrmHeader(const Rendition& rendition);
    void rewriteDrmHeader(const std::string& id, DrmHeaderEntry& entry);
    void commitMedia(const std::string& streamId, Rendition& rendition,
                     const std::string& bootstrapId, const std::string& drmHeaderId);
    void removeDroppedDrmHeaders();

    kvl::minidom::Element& root() const;
    kvl::minidom::ElementPtr makeElement(const char* name) const;
    void setText(kvl::minidom::Element& element, const std::string& text) const;

    ManifestContent& content_;
};

}  // namespace torvo::kzs
