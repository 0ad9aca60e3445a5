#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "kzspkgutil/model/IMediaSource.h"

namespace torvo::kzspkgutil {

/// Recognises KZM files by their first box.
class KZMMediaSourceProvider final : public IMediaSourceProvider {
public:
    /// With `ignoreEdits` the sources it makes give the media without its edit lists.
    explicit KZMMediaSourceProvider(bool ignoreEdits) : ignoreEdits_(ignoreEdits) {}

    /// Whether the file begins with `ftyp`, `mdat` or `moov`. Throws qlix::kzm::Exception when it
    /// can't be read.
    bool canOpen(const std::string& path, std::uint32_t openFlags) override;
    std::unique_ptr<IMediaSource> createSource(IPackagerContext& context, const std::string& path,
                                               std::uint32_t openFlags) override;

private:
    bool ignoreEdits_;
};

}  // namespace torvo::kzspkgutil
