#pragma once

#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "KzmFileBuilder.h"
#include "kzs/base/FileStream.h"
#include "kzspkgutil/KZMMediaSource.h"
#include "kzspkgutil/KZMMediaSourceProvider.h"
#include "kzspkgutil/model/MemoryArena.h"
#include "kzspkgutil/model/PackagerContext.h"
#include "support/TempDir.h"

namespace torvo::kzspkgutil::test {

/// Tracks with one description of the format. Video: 3 and 2 bytes at 0 and 40; audio: 1 and 2
/// bytes at 0 and 30; data: 2 bytes at 0.
inline KzmTrack videoTrack(const std::string& format = "avc1") {
    KzmTrack track;
    track.handler = "vide";
    track.entries = {videoEntry(format)};
    track.samples = {{kz::test::raw({1, 2, 3}), 40, true}, {kz::test::raw({4, 5}), 40, false}};
    return track;
}

inline KzmTrack audioTrack(const std::string& format = "mp4a") {
    KzmTrack track;
    track.handler = "soun";
    track.entries = {audioEntry(format)};
    track.samples = {{kz::test::raw({6}), 30, false}, {kz::test::raw({7, 8}), 30, false}};
    return track;
}

inline KzmTrack dataTrack(const std::string& format = "amf0") {
    KzmTrack track;
    track.handler = "meta";
    track.entries = {plainEntry(format)};
    track.samples = {{kz::test::raw({9, 9}), 50, false}};
    return track;
}

/// Writes files and opens them as sources.
class KZMSourceFixture : public testing::Test {
protected:
    std::unique_ptr<IMediaSource> open(const Bytes& file, bool ignoreEdits = true) {
        KZMMediaSourceProvider provider(ignoreEdits);
        return provider.createSource(context_, folder_.write("in.mp4", file), kFlags);
    }

    bool canOpen(const Bytes& file) {
        return KZMMediaSourceProvider(true).canOpen(folder_.write("in.mp4", file), kFlags);
    }

    static std::vector<boost::shared_ptr<KZSTrack>> tracksOf(const IMediaSource& source) {
        std::vector<boost::shared_ptr<KZSTrack>> all;
        const auto tracks = source.getTracks();
        while (tracks->hasNext()) all.push_back(tracks->next());
        return all;
    }

    struct Seen {
        kzs::FragmenterSample sample;
        TCMessage message;
        Bytes tag;
    };

    static std::vector<Seen> samplesOf(IMediaSource& source) {
        std::vector<Seen> all;
        const auto samples = source.getSampleIterator();
        while (samples->hasNext()) {
            Seen seen;
            seen.sample = samples->next();
            seen.message = samples->currentMessage();
            seen.tag = kz::test::bytesOf(seen.message.getTag(), seen.message.getTagSize());
            all.push_back(seen);
        }
        return all;
    }

    static constexpr std::uint32_t kFlags = kzs::openFlagsFor(false, false);
    kz::test::TempDir folder_;
    RefCountedMemoryArena arena_;
    PackagerContext context_{arena_};
};

}  // namespace torvo::kzspkgutil::test
