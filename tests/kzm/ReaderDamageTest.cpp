#include <gtest/gtest.h>

#include "kzm/ReaderSupport.h"

namespace qlix::kzm {
namespace {

using namespace kz::test;

IsoFile smallPlain() {
    IsoFile file;
    file.tracks = {isoVideoTrack(1, 6), isoAudioTrack(2, 6)};
    file.tracks[0].edits = {{{40, -1}, {1000, 40}}};
    file.tracks[0].hasDependencies = true;
    return file;
}

IsoFile smallFragmented() {
    IsoFile file;
    file.tracks = {isoVideoTrack(1, 6), isoAudioTrack(2, 6)};
    file.tracks[0].edits = {{{40, -1}, {1000, 40}}};
    file.samplesPerFragment = 2;
    file.samplesPerRun = 1;
    file.base = IsoBase::kMoof;
    file.fragmentDuration = 100;
    return file;
}

// Walks a document to its end as a caller would, with the data of every sample that can be read.
// Whatever the bytes are, that ends, or fails with an Exception.
void walk(const Bytes& bytes) {
    try {
        const OpenIso open(bytes, false);
        open.reader.docInfo();
        for (const Track& track : open.reader.tracks()) {
            for (std::size_t i = 0; i < track.descriptionCount(); ++i) track.description(i);
            track.sampleCount();
        }
        const auto iterator = open.reader.createIterator({0, 1000}, open.reader.wholeEnd(),
                                                         std::vector<std::uint32_t>{});
        std::uint64_t count = 0;
        while (iterator->hasSample()) {
            const Sample sample = iterator->next();
            ASSERT_LE(++count, 10 * bytes.size());
            if (sample.size <= bytes.size()) {
                codeThrownBy([&] { open.dataOf(sample); });
            }
        }
    } catch (const Exception&) {
    }
}

TEST(ReaderDamageTest, EndsWhereverAFileIsCut) {
    for (const IsoFile& file : {smallPlain(), smallFragmented()}) {
        const Bytes bytes = file.build();
        for (std::size_t length = 0; length < bytes.size(); ++length) {
            SCOPED_TRACE(length);
            walk(bytes.cutTo(length));
        }
    }
}

TEST(ReaderDamageTest, EndsWhicheverWordIsWrong) {
    for (const IsoFile& file : {smallPlain(), smallFragmented()}) {
        const Bytes bytes = file.build();
        for (const std::uint32_t word : {0U, 1U, 0x7FFFFFFFU, 0xFFFFFFFFU}) {
            for (std::size_t at = 0; at + 4 <= bytes.size(); at += 2) {
                SCOPED_TRACE(std::to_string(at) + " = " + std::to_string(word));
                walk(bytes.patched(at, u32(word)));
            }
        }
    }
}

TEST(ReaderDamageTest, CutsAreReportedWhenAMovieIsIncomplete) {
    const Bytes bytes = smallPlain().build();
    // In front of the media data lie the movie's 24 + n bytes: any cut there loses the movie.
    EXPECT_NE(codeThrownBy([&] { OpenIso(bytes.cutTo(200)); }), 0U);
    EXPECT_EQ(codeThrownBy([&] { OpenIso(bytes.cutTo(24)); }), 6U);
}

}  // namespace
}  // namespace qlix::kzm
