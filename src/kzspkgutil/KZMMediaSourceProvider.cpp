#include "kzspkgutil/KZMMediaSourceProvider.h"

#include "kzm/Reader.h"
#include "kzs/base/ByteOrder.h"
#include "kzspkgutil/KZMMediaSource.h"
#include "kzspkgutil/KZMStream.h"

namespace torvo::kzspkgutil {

bool KZMMediaSourceProvider::canOpen(const std::string& path, std::uint32_t openFlags) {
    KZMStream stream(path, openFlags);
    const std::uint32_t type = qlix::kzm::peekType(stream);
    // On purpose: no other box, not even a leading `free`.
    // Pinned by KZMMediaSourceProviderTest.RefusesAFileThatStartsWithAFreeBox.
    return type == kzs::fourCc("ftyp") || type == kzs::fourCc("mdat") ||
           type == kzs::fourCc("moov");
}

std::unique_ptr<IMediaSource> KZMMediaSourceProvider::createSource(IPackagerContext& context,
                                                                   const std::string& path,
                                                                   std::uint32_t openFlags) {
    return std::make_unique<KZMMediaSource>(context, path, openFlags, ignoreEdits_);
}

}  // namespace torvo::kzspkgutil
