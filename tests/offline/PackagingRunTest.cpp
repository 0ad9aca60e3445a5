#include <cerrno>
#include <filesystem>
#include <ios>

#include <boost/smart_ptr/make_shared.hpp>
#include <gtest/gtest.h>

#include "kzm/Exception.h"
#include "kzs/Rendition.h"
#include "kzs/base/ByteOrder.h"
#include "kzspkgutil/KZSMediaWriterPolicy.h"
#include "kzspkgutil/model/KZSPkgUtilException.h"
#include "kzspkgutil/model/KZSTrackIterator.h"
#include "offline/OfflineException.h"
#include "offline/OptionFixture.h"
#include "offline/PackagingRun.h"
#include "support/FailingClose.h"
#include "support/FlvBuilder.h"
#include "support/Presentation.h"
#include "support/TempDir.h"

namespace torvo::offline {
namespace {

using kzs::FragmenterSample;
using kzs::milliseconds;
using kzspkgutil::BlockPtr;
using kzspkgutil::KZSTrack;
using kzspkgutil::TCMessage;

/// MP3 samples at given times, the first of which is never 0 samples long.
class AudioSource final : public kzspkgutil::IMediaSource {
public:
    AudioSource() {
        auto info = boost::make_shared<kzspkgutil::AudioSampleDescInfo>();
        info->format = kzs::fourCc(".mp3");
        info->handler = kzs::fourCc("soun");
        info->sampleRate = 44000;
        info->channelCount = 2;
        info->sampleSize = 16;
        auto descriptor = boost::make_shared<kzspkgutil::KZSSampleDescriptor>();
        descriptor->info = info;
        descriptor->format = info->format;
        track_ = boost::make_shared<KZSTrack>();
        track_->handler = info->handler;
        track_->language = "eng";
        track_->timescale = 1000;
        track_->descriptionCount = 1;
        track_->descriptors = {descriptor};
    }

    kzspkgutil::MediaProperties getProperties() const override { return {}; }
    boost::shared_ptr<kzspkgutil::ITrackIterator> getTracks() const override {
        return boost::make_shared<kzspkgutil::KZSTrackIterator>(
            std::vector<boost::shared_ptr<KZSTrack>>{track_});
    }
    boost::shared_ptr<kzspkgutil::ISampleIterator> getSampleIterator() override;

    std::vector<std::uint64_t> times;
    std::vector<std::uint64_t> skipped;     ///< times that are reported as skipped
    std::vector<std::uint64_t> unreadable;  ///< times of samples whose data can't be had
    std::vector<std::uint64_t> messages;    ///< the times whose data was asked for
    std::vector<BlockPtr> blocks;           ///< that data

private:
    boost::shared_ptr<KZSTrack> track_;
};

class AudioIterator final : public kzspkgutil::ISampleIterator {
public:
    explicit AudioIterator(AudioSource& source) : source_(source) {}

    bool hasNext() override { return next_ < source_.times.size(); }

    FragmenterSample next() override {
        time_ = source_.times[next_++];
        FragmenterSample sample;
        sample.time = milliseconds(time_);
        sample.isSkipped = std::count(source_.skipped.begin(), source_.skipped.end(), time_) > 0;
        return sample;
    }

    TCMessage currentMessage() override {
        if (std::count(source_.unreadable.begin(), source_.unreadable.end(), time_) > 0) {
            throw kzspkgutil::KZSPkgUtilException(1, "unreadable");
        }
        source_.messages.push_back(time_);
        const auto ms = static_cast<std::uint32_t>(time_);
        const kz::test::Bytes image = kz::test::mp3Frame(ms, kz::test::pattern(8, ms)).image();
        const BlockPtr block(new kzspkgutil::Block(image.size()));
        std::copy(image.begin(), image.end(), block->data());
        source_.blocks.push_back(block);
        return TCMessage(milliseconds(time_), milliseconds(time_),
                         static_cast<std::uint32_t>(image.size()), block, block->data() + 12, 8);
    }

private:
    AudioSource& source_;
    std::size_t next_ = 0;
    std::uint64_t time_ = 0;
};

boost::shared_ptr<kzspkgutil::ISampleIterator> AudioSource::getSampleIterator() {
    return boost::make_shared<AudioIterator>(*this);
}

/// Asks how many owners the blocks of the samples have when it is reset.
class WatchingArena final : public kzspkgutil::IMemoryArena {
public:
    explicit WatchingArena(const AudioSource& source) : source_(source) {}

    BlockPtr allocate(std::uint64_t size) override { return arena_.allocate(size); }
    void reset() override {
        ++resets;
        for (const BlockPtr& block : source_.blocks) {
            block->addRef();
            if (block->release() == 1) ++freeBlocks;  // the source's own
        }
    }

    int resets = 0;
    std::size_t freeBlocks = 0;

private:
    kzspkgutil::RefCountedMemoryArena arena_;
    const AudioSource& source_;  // outlives the arena
};

/// How often this process has the file open.
int openFilesAt(const std::string& path) {
    int count = 0;
    for (const auto& each : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code gone;  // the iterator's own descriptor, perhaps
        if (std::filesystem::read_symlink(each, gone) == path) ++count;
    }
    return count;
}

class PackagingRunTest : public testing::Test {
protected:
    void run(double limitMs, const OptionMap& replaced = {}) {
        OptionMap options = defaultsWith(replaced);
        options["input-file"] = std::string("clip.flv");
        options["output-path"] = folder.path();
        kzspkgutil::KZSMediaWriterPolicy policy(context);
        PackagingRun(options, context, policy, source, rendition).run(limitMs);
    }

    std::vector<kz::test::IndexRow> index(int segment = 1) const {
        const std::string name = "clipSeg" + std::to_string(segment) + ".kzx";
        return kz::test::readAfraBox(kz::test::readFile(folder / name)).global;
    }

    void samplesEvery(std::uint64_t stepMs, std::uint64_t lastMs) {
        for (std::uint64_t ms = 0; ms <= lastMs; ms += stepMs) source.times.push_back(ms);
    }

    kz::test::TempDir folder;
    kzspkgutil::RefCountedMemoryArena arena;
    kzspkgutil::PackagerContext context{arena};
    AudioSource source;
    kzs::Rendition rendition;
};

TEST_F(PackagingRunTest, WithoutALimitAllSamplesArePackaged) {
    samplesEvery(500, 20000);
    run(0.0);
    EXPECT_EQ(source.messages.size(), 41U);
    EXPECT_EQ(index().size(), 6U);
}

TEST_F(PackagingRunTest, BehindTheLimitTheNextFragmentIsTheLastButOne) {
    samplesEvery(500, 20000);
    run(5000.0);
    // 5500 is past the limit; the cut at 8000 ends the run at 8500, which only counts for the end.
    EXPECT_EQ(source.messages.back(), 8000U);
    ASSERT_EQ(index().size(), 3U);
    EXPECT_EQ(index().back().time, 8000U);
    EXPECT_EQ(rendition.bootstrap().currentMediaTime.value, 8500U);
}

TEST_F(PackagingRunTest, ASampleAtTheLimitIsNotPastIt) {
    // The cut at 1000 would be the last if its sample counted as past the limit.
    source.times = {0, 500, 1000, 1000};
    run(1000.0, {{"fragment-duration", 1.0}});
    EXPECT_EQ(source.messages, (std::vector<std::uint64_t>{0, 500, 1000, 1000}));
}

TEST_F(PackagingRunTest, ALimitThatRoundingMadeSmallerThanTheLastSampleEndsTheRun) {
    // 1.001 s in milliseconds is a little less than 1001, so the sample at 1001 counts as past it
    // and the cut that it brings is the last: a second sample of that time is left out.
    source.times = {0, 500, 1001, 1001};
    run(1.001 * 1000.0, {{"fragment-duration", 1.0}});
    EXPECT_EQ(source.messages, (std::vector<std::uint64_t>{0, 500, 1001}));
}

TEST_F(PackagingRunTest, SkippedSamplesAreNotReadButCanBeTheLast) {
    samplesEvery(500, 5000);
    source.skipped = {1000, 5000};
    run(0.0);
    EXPECT_EQ(source.messages.size(), 9U);
    EXPECT_EQ(rendition.bootstrap().currentMediaTime.value, 5000U);
}

TEST_F(PackagingRunTest, WhatIsCutIsPackagedBeforeTheSampleThatBringsTheCutIsRead) {
    samplesEvery(500, 5000);
    source.unreadable = {4000};
    EXPECT_THROW(run(0.0), kzspkgutil::KZSPkgUtilException);
    ASSERT_EQ(index().size(), 1U);
    EXPECT_EQ(index().front().fragment, 1U);
}

TEST_F(PackagingRunTest, AnInputWithoutSamplesLeavesASegmentAndAnIndex) {
    run(0.0);
    ASSERT_EQ(index().size(), 1U);
    EXPECT_EQ(index()[0].fragment, 1U);  // without video the end is always a fragment
    EXPECT_TRUE(kz::test::fileExists(folder / "clipSeg1.kzs"));
}

TEST_F(PackagingRunTest, TheIndexOfTheLastSegmentIsWrittenEvenIfThatHasNoFragment) {
    samplesEvery(500, 7500);
    run(0.0, {{"segment-duration", 7.0}});
    EXPECT_EQ(index(1).size(), 2U);
    EXPECT_EQ(index(2).size(), 2U);
}

TEST_F(PackagingRunTest, NoSampleIsHeldAnyMoreWhenTheMemoryIsGivenBack) {
    samplesEvery(500, 5000);
    WatchingArena watched(source);
    kzspkgutil::PackagerContext watchedContext(watched);
    kzspkgutil::KZSMediaWriterPolicy policy(watchedContext);
    OptionMap options = defaultsWith({});
    options["input-file"] = std::string("clip.flv");
    options["output-path"] = folder.path();
    PackagingRun(options, watchedContext, policy, source, rendition).run(0.0);
    EXPECT_EQ(watched.resets, 1);
    EXPECT_EQ(source.blocks.size(), 11U);
    EXPECT_EQ(watched.freeBlocks, 11U);
}

TEST_F(PackagingRunTest, TheLastSegmentStaysOpenUntilTheProcessEnds) {
    samplesEvery(500, 3000);
    run(0.0);
    EXPECT_EQ(openFilesAt(folder / "clipSeg1.kzs"), 1);
}

TEST_F(PackagingRunTest, ASegmentThatIsFollowedByAnotherIsClosed) {
    samplesEvery(500, 7500);
    run(0.0, {{"segment-duration", 7.0}});
    EXPECT_EQ(openFilesAt(folder / "clipSeg1.kzs"), 0);
    EXPECT_EQ(openFilesAt(folder / "clipSeg2.kzs"), 1);
}

TEST_F(PackagingRunTest, AFailureThatOnlyAClosedSegmentTellsIsAFailureOfTheWriter) {
    samplesEvery(500, 7500);
    for (const char* segment : {"clipSeg1.kzs", "clipSeg2.kzs"}) {
        rendition = kzs::Rendition();
        const kz::test::FailingClose fault(segment, EDQUOT);
        std::uint32_t code = 0;
        try {
            run(0.0, {{"segment-duration", 7.0}});
        } catch (const qlix::kzm::Exception& failure) {
            code = failure.code();
        }
        EXPECT_EQ(code, numberOf(qlix::kzm::ErrorCode::writeFailed)) << segment;
    }
}

// An index stays open from its second fragment on: until the next segment's first, or the end.
TEST_F(PackagingRunTest, AFailureThatOnlyAClosedIndexTellsEndsTheRun) {
    samplesEvery(500, 13000);
    for (const double segmentDuration : {7.0, 0.0}) {
        rendition = kzs::Rendition();
        const kz::test::FailingClose fault("clipSeg1.kzx", EDQUOT);
        EXPECT_THROW(run(0.0, {{"segment-duration", segmentDuration}}), std::ios_base::failure)
            << segmentDuration;
    }
}

TEST_F(PackagingRunTest, NoIndexStaysOpenBehindTheRun) {
    samplesEvery(500, 13000);
    run(0.0);
    EXPECT_EQ(openFilesAt(folder / "clipSeg1.kzx"), 0);
}

TEST_F(PackagingRunTest, BadTimingIsRefused) {
    EXPECT_THROW(run(0.0, {{"fragment-duration", 0.0}}), StdErrorException);
}

TEST_F(PackagingRunTest, AnEarlierSegmentDoesNotOverwriteTheInput) {
    OptionMap options = defaultsWith({});
    options["input-file"] = folder.write("aSeg2.kzs", kz::test::text("the input"));
    options["output-path"] = folder.path();
    options["output-manifest-file"] = std::string("a");
    options["segment-duration"] = 1.0;
    samplesEvery(500, 9000);
    kzspkgutil::KZSMediaWriterPolicy policy(context);
    PackagingRun packaging(options, context, policy, source, rendition);
    EXPECT_THROW(packaging.run(0.0), CantAccessFileException);
    EXPECT_EQ(kz::test::readFile(folder / "aSeg2.kzs"), kz::test::text("the input"));
}

}  // namespace
}  // namespace torvo::offline
