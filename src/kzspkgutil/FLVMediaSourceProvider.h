#pragma once

#include "kzspkgutil/model/IMediaSource.h"

namespace torvo::kzspkgutil {

/// Recognises and opens FLV files. Throws flv::Exception: kStreamFailed where a file
/// can't be opened.
class FLVMediaSourceProvider final : public IMediaSourceProvider {
public:
    bool canOpen(const std::string& path, std::uint32_t openFlags) override;
    std::unique_ptr<IMediaSource> createSource(IPackagerContext& context, const std::string& path,
                                               std::uint32_t openFlags) override;
};

}  // namespace torvo::kzspkgutil
