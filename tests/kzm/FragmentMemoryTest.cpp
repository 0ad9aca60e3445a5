#include <algorithm>
#include <cstddef>
#include <new>

#include <gtest/gtest.h>

#include "kzm/Allocator.h"
#include "kzm/ReaderSupport.h"
#include "support/Random.h"

namespace qlix::kzm {
namespace {

using namespace kz::test;

/// Two tracks whose fragments have `perFragment` samples of each.
IsoFile fragmentedTracks(unsigned count, unsigned perFragment) {
    IsoFile file;
    file.tracks = {isoVideoTrack(1, count), isoAudioTrack(2, count, 40)};
    file.movieDuration = 0;  // no limit
    file.samplesPerFragment = perFragment;
    return file;
}

/// Counts the bytes that are given out at the time.
class MeasuringAllocator : public Allocator {
public:
    void* allocate(std::size_t size) override {
        auto* block =
            static_cast<std::max_align_t*>(::operator new(size + sizeof(std::max_align_t)));
        *reinterpret_cast<std::size_t*>(block) = size;
        live += size;
        return block + 1;
    }
    void release(void* pointer) noexcept override {
        if (pointer == nullptr) return;
        auto* block = static_cast<std::max_align_t*>(pointer) - 1;
        live -= *reinterpret_cast<std::size_t*>(block);
        ::operator delete(block);
    }
    std::size_t live = 0;
};

/// What two walks over the same samples must agree on.
using Fields = std::vector<std::uint64_t>;

Fields fieldsOf(const Sample& sample) {
    return {sample.track.info().trackId, sample.time,       sample.size,          sample.flags,
            sample.compositionOffset,    sample.fileOffset, sample.sequenceNumber};
}

std::vector<Fields> allFields(const OpenIso& open) {
    std::vector<Fields> out;
    for (const Sample& sample : open.samples()) out.push_back(fieldsOf(sample));
    return out;
}

std::shared_ptr<SampleIterator> walk(const OpenIso& open) {
    return open.reader.createIterator({0, 1000}, open.reader.wholeEnd(),
                                      std::vector<std::uint32_t>{});
}

TEST(FragmentMemoryTest, AFragmentThatWasLeftTakesLessThanFourBytesASample) {
    MeasuringAllocator allocator;
    MemoryStream memory(fragmentedTracks(200 * 100, 100).build());
    const Reader reader(memory, nullptr, &allocator, true);
    const auto iterator =
        reader.createIterator({0, 1000}, reader.wholeEnd(), std::vector<std::uint32_t>{});
    const auto peakOver = [&](int fragments) {
        std::size_t peak = 0;
        for (int i = 0; i < fragments * 200; ++i) {
            iterator->next();
            peak = std::max(peak, allocator.live);
        }
        return peak;
    };
    peakOver(10);
    const std::size_t early = peakOver(10);
    peakOver(150);
    const std::size_t late = peakOver(10);
    EXPECT_LT(late - early, 160U * 200 * 4);
    // Two of them are whole at once, 32 bytes a sample and a few boxes.
    EXPECT_LT(early, 60000U);
}

TEST(FragmentMemoryTest, ASecondWalkGivesTheSameSamples) {
    for (const IsoBase base : {IsoBase::kFileOffset, IsoBase::kMoof, IsoBase::kImplied}) {
        IsoFile file = fragmentedTracks(50, 7);
        file.base = base;
        file.samplesPerRun = 2;
        for (const bool usesTrackDefaults : {false, true}) {
            file.usesTrackDefaults = usesTrackDefaults;
            const OpenIso open(file);
            const std::vector<Fields> first = allFields(open);
            ASSERT_EQ(first.size(), 100U);
            EXPECT_EQ(allFields(open), first);
            EXPECT_EQ(open.reader.tracks()[0].sampleCount(), 50U) << "each counted once";
        }
    }
}

TEST(FragmentMemoryTest, AnIteratorGoesBackToTheFirstFragmentWhileAnotherIsAtTheEnd) {
    const OpenIso open(fragmentedTracks(20, 3));
    const std::vector<Fields> expected = allFields(open);
    const auto late = walk(open);
    for (int i = 0; i < 39; ++i) late->next();
    const auto early = walk(open);
    EXPECT_EQ(fieldsOf(early->next()), expected[0]);
    EXPECT_EQ(fieldsOf(late->next()), expected[39]);
    EXPECT_FALSE(late->hasSample());
    for (std::size_t i = 1; i < 40; ++i) EXPECT_EQ(fieldsOf(early->next()), expected[i]);
}

TEST(FragmentMemoryTest, IteratorsInTurnDoNotDisturbEachOther) {
    constexpr unsigned kSeed = 20260;
    SCOPED_TRACE(kSeed);
    Random random(kSeed);
    const OpenIso open(fragmentedTracks(60, 4));
    const std::vector<Fields> expected = allFields(OpenIso(fragmentedTracks(60, 4)));
    struct Walk {
        std::shared_ptr<SampleIterator> iterator;
        std::size_t done = 0;
    };
    std::vector<Walk> walks;
    for (int step = 0; step < 3000; ++step) {
        if (walks.size() < 4) walks.push_back({walk(open), 0});
        Walk& each = walks[random() % walks.size()];
        if (!each.iterator->hasSample() || random() % 300 == 0) {
            each = {walk(open), 0};
        }
        ASSERT_EQ(fieldsOf(each.iterator->next()), expected.at(each.done++));
    }
}

TEST(FragmentMemoryTest, EditsThatGoBackAndForthGiveEachTimeTheSame) {
    IsoFile file = fragmentedTracks(12, 2);
    file.tracks.pop_back();
    // Twenty times the last fragment, then the first.
    std::vector<IsoEdit> edits;
    std::string expected;
    for (int i = 0; i < 20; ++i) {
        edits.push_back({80, 400});
        edits.push_back({80, 0});
        const int at = i * 160;
        for (const int time : {at, at + 40, at + 80, at + 120}) {
            expected += std::to_string(time);
            expected += (time == at || time == at + 80) ? "k " : " ";
        }
    }
    expected.pop_back();
    file.tracks[0].edits = edits;
    file.movieDuration = 20 * 160;
    const OpenIso open(file, false);
    EXPECT_EQ(timesOf(open.samples()), expected);
}

TEST(FragmentMemoryTest, NoFragmentIsReadMoreThanEightTimes) {
    OpenIso open(fragmentedTracks(1000, 1));
    std::uint64_t least = MemoryStream::kNever;
    for (int i = 0; i < 8; ++i) {
        const std::uint64_t before = open.memory.reads;
        EXPECT_EQ(open.samples().size(), 2000U);
        least = std::min(least, open.memory.reads - before);
    }
    EXPECT_GT(least, 0U);
    const std::uint64_t before = open.memory.reads;
    EXPECT_EQ(open.samples().size(), 2000U);
    EXPECT_EQ(open.memory.reads, before);
}

TEST(FragmentMemoryTest, AStreamThatFailsTheSecondTimeFailsTheWalk) {
    OpenIso open(fragmentedTracks(1000, 1));
    EXPECT_EQ(open.samples().size(), 2000U);
    const auto again = walk(open);
    open.memory.failAtCall = open.memory.calls + 4;
    open.memory.failure = 77;
    std::size_t given = 0;
    const auto toTheEnd = [&] {
        while (again->hasSample()) {
            again->next();
            ++given;
        }
    };
    EXPECT_EQ(codeThrownBy(toTheEnd), 77U);
    EXPECT_GT(given, 0U);
    EXPECT_LT(given, 2000U);
    // The next one meets a stream that is well again.
    EXPECT_EQ(open.samples().size(), 2000U);
}

TEST(FragmentMemoryTest, ARunThatLostItsSamplesMeanwhileFailsTheWalk) {
    OpenIso open(fragmentedTracks(1000, 1));
    EXPECT_EQ(open.samples().size(), 2000U);
    Bytes& bytes = open.memory.content;
    const std::size_t trun = bytes.find("trun");
    bytes = bytes.patched(trun + 8, u32(0));
    EXPECT_EQ(codeThrownBy([&] { open.samples(); }), 14U);
}

TEST(FragmentMemoryTest, AFileThatWasCutMeanwhileFailsTheWalk) {
    OpenIso open(fragmentedTracks(1000, 1));
    EXPECT_EQ(open.samples().size(), 2000U);
    open.memory.content.resize(open.memory.content.size() / 2);
    EXPECT_EQ(codeThrownBy([&] { open.samples(); }), 5U);
}

}  // namespace
}  // namespace qlix::kzm
