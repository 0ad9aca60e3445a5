#include "kzs/ManifestContent.h"

namespace torvo::kzs {

Rendition makeRendition(const ManifestContent& content) {
    Rendition rendition;
    rendition.bootstrapBuilder =
        BootstrapBuilder(content.durationPrecision, content.frameDuration, content.allowedDrift);
    return rendition;
}

}  // namespace torvo::kzs
