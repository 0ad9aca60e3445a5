#include "kzspkgutil/FLVMediaSourceProvider.h"

#include "flv/Allocator.h"
#include "flv/Reader.h"
#include "kzspkgutil/FLVMediaSource.h"
#include "kzspkgutil/FLVStream.h"

namespace torvo::kzspkgutil {

bool FLVMediaSourceProvider::canOpen(const std::string& path, std::uint32_t openFlags) {
    FLVStream stream(path, openFlags);
    flv::Allocator allocator;
    const bool isFLV = flv::Reader::isFLV(stream, allocator);
    stream.close();
    return isFLV;
}

std::unique_ptr<IMediaSource> FLVMediaSourceProvider::createSource(IPackagerContext& context,
                                                                   const std::string& path,
                                                                   std::uint32_t openFlags) {
    return std::make_unique<FLVMediaSource>(context, path, openFlags);
}

}  // namespace torvo::kzspkgutil
