#pragma once

#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "Fixtures.h"
#include "kzs/base/ByteOrder.h"
#include "kzspkgutil/KZSMediaWriter.h"
#include "kzspkgutil/KZSMediaWriterPolicy.h"
#include "support/MemoryStream.h"
#include "support/Presentation.h"

namespace torvo::kzspkgutil::test {

/// A writer over a file in memory, with the clear policy.
class KZSMediaWriterFixture : public testing::Test {
protected:
    /// Makes the writer on a source of the tracks.
    KZSMediaWriter& open(std::vector<boost::shared_ptr<KZSTrack>> tracks,
                         const MediaProperties& properties = MediaProperties()) {
        FixedSource source(std::move(tracks));
        source.properties = properties;
        writer_ = std::make_unique<KZSMediaWriter>(context_, policy_, source, stream_);
        return *writer_;
    }

    KZSMediaWriter& openVideo() { return open({videoTrackOf(kzs::fourCc("avc1"), avcBox())}); }

    FragmentPosition writeUpTo(const MessageList& messages, std::uint64_t endMs,
                               const kz::test::Bytes& bootstrap = kz::test::raw({1, 2, 3})) {
        return writer_->writeUpTo(MessageList(messages), kzs::milliseconds(endMs), bootstrap.data(),
                                  bootstrap.size());
    }

    kz::test::Segment close() {
        writer_.reset();
        return kz::test::readSegment(stream_.content);
    }

    static TCMessage frame(std::uint32_t timeMs, bool isKey = false) {
        return messageOf(kz::test::avcFrame(timeMs, isKey, kz::test::raw({1, 2, 3})), 5);
    }

    /// The times of the hint samples of a fragment, by their tags.
    static std::vector<std::uint32_t> timesIn(const kz::test::Segment& segment,
                                              std::size_t fragment) {
        std::vector<std::uint32_t> times;
        const std::uint32_t hint = segment.track("hint")->id;
        for (const auto& sample : segment.fragments.at(fragment).samples.at(hint)) {
            times.push_back(kzs::loadU24(&segment.file[sample.offset + 4]));
        }
        return times;
    }

    RefCountedMemoryArena arena_;
    PackagerContext context_{arena_};
    KZSMediaWriterPolicy policy_{context_};
    kz::test::MemoryStream stream_;
    std::unique_ptr<KZSMediaWriter> writer_;
};

}  // namespace torvo::kzspkgutil::test
