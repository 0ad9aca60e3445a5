#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include <boost/smart_ptr/shared_ptr.hpp>

#include "kzm/KZSWriter.h"
#include "kzm/WriterRecords.h"
#include "kzspkgutil/MediaWriterCore.h"
#include "kzspkgutil/model/KZSTrack.h"
#include "kzspkgutil/model/PackagerContext.h"
#include "support/Bytes.h"
#include "support/MemoryStream.h"
#include "support/Presentation.h"

namespace torvo::kzspkgutil::test {

constexpr std::uint32_t kSyncFlags = 0x02000000;
constexpr std::uint32_t kOtherFlags = 0x01010000;

/// A writer over memory with one media track, made by a core, and a hint track that refers to it.
class WriterHarness {
public:
    explicit WriterHarness(const KZSTrack& track);

    /// Closes the file and reads it with the tests' own reader.
    kz::test::Segment finish();
    /// The same, and answers its only fragment.
    kz::test::PackedFragment finishFragment();

    RefCountedMemoryArena arena;
    PackagerContext context{arena};
    kz::test::MemoryStream stream;
    MediaWriterCore core{context};
    qlix::kzm::KZSWriter writer;
    qlix::kzm::TrackHandle media;
    qlix::kzm::TrackHandle hint;
};

/// The first box of a type in a file, found by its letters. Throws std::logic_error without one.
kz::test::Bytes boxIn(const kz::test::Bytes& file, std::string_view type);

/// The bytes of a sample.
kz::test::Bytes bytesOf(const kz::test::Segment& segment, const kz::test::PackedSample& sample);

}  // namespace torvo::kzspkgutil::test
