#pragma once

#include <memory>
#include <string>
#include <vector>

#include <boost/smart_ptr/shared_ptr.hpp>

#include "flv/Exception.h"
#include "kzspkgutil/FLVMediaSource.h"
#include "support/FlvBuilder.h"
#include "support/TempDir.h"

namespace torvo::kzspkgutil {

constexpr std::uint32_t kReadOnly = 0x8000;

/// An FLV file on disk with what a source needs around it.
class FLVFile {
public:
    explicit FLVFile(const kz::test::Bytes& content) : path(dir_.write("clip.flv", content)) {}
    explicit FLVFile(const std::vector<kz::test::FlvTag>& tags)
        : FLVFile(kz::test::flvFile(tags)) {}

    std::unique_ptr<FLVMediaSource> open() {
        return std::make_unique<FLVMediaSource>(context_, path, kReadOnly);
    }

private:
    kz::test::TempDir dir_;
    RefCountedMemoryArena arena_;
    PackagerContext context_{arena_};

public:
    const std::string path;
};

/// The code of the flv::Exception that `work` throws; 0 without one.
template <class Work>
std::uint32_t flvCodeOf(const Work& work) {
    try {
        work();
    } catch (const flv::Exception& failure) {
        return failure.code();
    }
    return 0;
}

}  // namespace torvo::kzspkgutil
