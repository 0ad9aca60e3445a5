#pragma once

#include <cstdint>
#include <string>

#include "flv/InputStream.h"
#include "kzs/base/FileStream.h"

namespace torvo::kzspkgutil {

/// A file as a stream of the FLV library.
///
/// Failures of the file become flv::Exception, kStreamFailed. A reader counts itself in and out;
/// the file is closed when the last one is gone, or with the object.
class FLVStream final : public flv::InputStream {
public:
    /// Opens the file. `openFlags` as for kzs::FileStream.
    FLVStream(const std::string& path, std::uint32_t openFlags);

    void addRef() override;
    void release() override;
    std::uint32_t read(void* buffer, std::uint32_t size) override;
    void seek(std::int64_t offset, std::uint32_t whence) override;
    std::int64_t tell() override;
    /// Does nothing while the file is open, so that no descriptor is lost.
    void open() override;
    void close() override;

    bool isOpen() const { return file_.isOpen(); }

private:
    kzs::FileStream file_;
    std::uint32_t references_ = 0;
};

}  // namespace torvo::kzspkgutil
