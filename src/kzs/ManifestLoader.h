#pragma once

#include "kzs/ManifestContent.h"

namespace torvo::kzs {

/// Fills the maps of a manifest from its document, and takes off the document what a rewrite
/// would double: text and comments right under the root and inside the `media` elements.
class ManifestLoader {
public:
    /// `content` outlives the loader.
    explicit ManifestLoader(ManifestContent& content) : content_(content) {}

    /// Throws InvalidBootstrapFormat for a `bootstrapInfo` that can't be read, std::runtime_error
    /// for content that isn't base64.
    void load();

private:
    void loadBootstraps();
    void loadDrmHeaders();
    void loadRenditions();

    ManifestContent& content_;
};

}  // namespace torvo::kzs
