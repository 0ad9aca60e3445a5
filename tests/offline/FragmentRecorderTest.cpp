#include <sstream>

#include <gtest/gtest.h>

#include "kzs/Rendition.h"
#include "offline/FragmentRecorder.h"
#include "offline/ISegmenter.h"
#include "offline/OfflineException.h"
#include "support/Presentation.h"
#include "support/TempDir.h"

namespace torvo::offline {
namespace {

using kz::test::TempDir;
using kzs::FragmentEvent;
using kzs::FragmentEventKind;
using kzs::milliseconds;
using kzspkgutil::TCMessage;

constexpr std::uint32_t kF = 4000;

/// Writes nothing; notes what it is asked, and gives out offsets 1000, 2000, ...
class Output final : public kzspkgutil::IMediaWriter, public ISegmenter {
public:
    kzspkgutil::FragmentPosition writeUpTo(kzspkgutil::MessageList&& messages,
                                           const kzs::Timestamp& endTime,
                                           const std::uint8_t* bootstrap,
                                           std::uint64_t bootstrapSize) override {
        log += "write " + std::to_string(endTime.value) + " of";
        for (const TCMessage& message : messages) {
            log += " " + std::to_string(message.getSampleTime().value);
            message.getBlock()->addRef();
            owners.push_back(message.getBlock()->release());
        }
        log += "\n";
        lastBootstrap = kz::test::bytesOf(bootstrap, static_cast<std::size_t>(bootstrapSize));
        bootstraps.push_back(kz::test::readAbstPayload(lastBootstrap));
        offset += 1000;
        return {offset, 0};
    }
    void finishWriter() override { log += "finish\n"; }
    std::uint32_t currentSegment() const override { return segment; }
    void advance(std::uint32_t ms) override {
        const std::string file = folder / ("bSeg" + std::to_string(segment) + ".kzx");
        log += "advance " + std::to_string(ms) +
               (kz::test::fileExists(file) ? "\n" : " before the index file\n");
        if (rolls) ++segment;
    }

    TempDir folder;
    std::string log;
    std::vector<kz::test::Abst> bootstraps;
    kz::test::Bytes lastBootstrap;
    std::vector<std::uint32_t> owners;  ///< of the blocks of the messages that were to be written
    std::uint64_t offset = 0;
    std::uint32_t segment = 1;
    bool rolls = false;
};

TCMessage messageAt(std::uint64_t sampleMs, std::uint64_t messageMs) {
    return TCMessage(milliseconds(sampleMs), milliseconds(messageMs), 15,
                     kzspkgutil::BlockPtr(new kzspkgutil::Block(15)), nullptr, 0);
}

TCMessage messageAt(std::uint64_t ms) { return messageAt(ms, ms); }

FragmentEvent event(FragmentEventKind kind, std::uint32_t number, std::uint64_t startMs,
                    std::uint64_t endMs) {
    FragmentEvent made;
    made.kind = kind;
    made.fragmentNumber = number;
    made.start = milliseconds(startMs);
    made.end = milliseconds(endMs);
    return made;
}

class FragmentRecorderTest : public testing::Test {
protected:
    bool handle(FragmentEventKind kind, std::uint32_t number, std::uint64_t startMs,
                std::uint64_t endMs, std::uint64_t sampleMs = 0) {
        return recorder.handleEvent(event(kind, number, startMs, endMs), milliseconds(sampleMs));
    }

    void end(FragmentEventKind kind, std::uint32_t number, std::uint64_t startMs,
             std::uint64_t endMs, std::uint64_t lastMs) {
        recorder.handleEnd(event(kind, number, startMs, endMs), milliseconds(lastMs));
    }

    /// One word for each entry: fragment@time:segment:offset, "-" for no data.
    std::string entries() const { return textOf(recorder.index().globalEntries); }

    template <typename Entries>
    static std::string textOf(const Entries& list) {
        std::ostringstream out;
        for (const kzs::AfraEntry& entry : list) {
            out << entry.fragment << '@' << entry.time.value << ':' << entry.segment << ':';
            if (entry.afraOffset == kzs::kNoFragmentData) {
                out << '-';
            } else {
                out << entry.afraOffset;
            }
            out << ' ';
        }
        return out.str();
    }

    /// The same of an index file.
    std::string inFile(std::uint32_t segment) const {
        const std::string path = output.folder / ("bSeg" + std::to_string(segment) + ".kzx");
        if (!kz::test::fileExists(path)) return "no file";
        std::vector<kzs::AfraEntry> list;
        for (const kz::test::IndexRow& row :
             kz::test::readAfraBox(kz::test::readFile(path)).global) {
            kzs::AfraEntry entry;
            entry.time = milliseconds(row.time);
            entry.segment = row.segment;
            entry.fragment = row.fragment;
            entry.afraOffset = row.afraOffset;
            list.push_back(entry);
        }
        return textOf(list);
    }

    /// The fragment runs of the last bootstrap that was handed on, as first@time+duration/mark.
    std::string runs() const {
        std::ostringstream out;
        for (const kz::test::FragmentRun& run : output.bootstraps.back().fragments) {
            out << run.first << '@' << run.time << '+' << run.duration;
            if (run.duration == 0) out << '/' << run.discontinuity;
            out << ' ';
        }
        return out.str();
    }

    Output output;
    kzs::Rendition rendition;
    FragmentRecorder recorder{output, output, rendition, kF, output.folder.path(), "b"};
};

TEST_F(FragmentRecorderTest, ACompleteFragmentIsWrittenIndexedAndThenCounted) {
    recorder.keep(messageAt(0));
    recorder.keep(messageAt(2000));
    EXPECT_TRUE(handle(FragmentEventKind::Complete, 1, 0, 4000, 4000));
    EXPECT_EQ(output.log, "write 4000 of 0 2000\nadvance 4000\n");
    EXPECT_EQ(entries(), "1@0:1:1000 ");
    EXPECT_EQ(inFile(1), entries());
}

TEST_F(FragmentRecorderTest, TheBootstrapInFrontOfAFragmentHasThatFragment) {
    handle(FragmentEventKind::Complete, 1, 0, 4000, 4040);
    EXPECT_EQ(runs(), "1@0+4000 ");
    EXPECT_EQ(output.bootstraps.back().version, 1U);
    EXPECT_EQ(output.bootstraps.back().bits, 0);
    handle(FragmentEventKind::Complete, 2, 4000, 9000, 9000);
    EXPECT_EQ(runs(), "1@0+4000 2@4000+5000 ");
}

TEST_F(FragmentRecorderTest, TheCurrentMediaTimeIsThatOfTheSampleAndNotOfTheCut) {
    handle(FragmentEventKind::Complete, 1, 0, 4000, 4123);
    EXPECT_EQ(output.bootstraps.back().currentMediaTime, 4123U);
}

TEST_F(FragmentRecorderTest, AGapLeavesTheCurrentMediaTimeAlone) {
    handle(FragmentEventKind::SpanStart, 1, 0, 4000, 8000);
    handle(FragmentEventKind::SpanEnd, 2, 4000, 9000, 9000);
    EXPECT_EQ(output.bootstraps.back().currentMediaTime, 8000U);
}

TEST_F(FragmentRecorderTest, MessagesBeforeTheCutAreDroppedUpToTheFirstThatStays) {
    for (const std::uint64_t ms : {0U, 3999U, 4000U, 3000U, 5000U}) recorder.keep(messageAt(ms));
    handle(FragmentEventKind::Complete, 1, 0, 4000, 5000);
    ASSERT_EQ(recorder.pending().size(), 3U);
    EXPECT_EQ(recorder.pending()[0].getSampleTime().value, 4000U);
    EXPECT_EQ(recorder.pending()[1].getSampleTime().value, 3000U);
}

TEST_F(FragmentRecorderTest, MessagesAreDroppedByTheTimeOfTheirSample) {
    recorder.keep(messageAt(3999, 4000));
    recorder.keep(messageAt(4000, 3999));
    handle(FragmentEventKind::Complete, 1, 0, 4000, 4000);
    ASSERT_EQ(recorder.pending().size(), 1U);
    EXPECT_EQ(recorder.pending()[0].getSampleTime().value, 4000U);
}

// The writer alone holds what the cut drops, so that it can let go of each message it encrypted.
TEST_F(FragmentRecorderTest, MessagesThatTheCutDropsAreHandedOverWithTheirBytes) {
    for (const std::uint64_t ms : {0U, 3999U, 4000U, 3000U}) recorder.keep(messageAt(ms));
    handle(FragmentEventKind::Complete, 1, 0, 4000, 4000);
    EXPECT_EQ(output.log, "write 4000 of 0 3999 4000 3000\nadvance 4000\n");
    EXPECT_EQ(output.owners, (std::vector<std::uint32_t>{1, 1, 2, 2}));
    EXPECT_NE(recorder.pending().at(0).getTag(), nullptr);
    EXPECT_EQ(recorder.bytesKept(), 60U);
}

TEST_F(FragmentRecorderTest, AllMessagesGoWhenNoneIsBehindTheCut) {
    recorder.keep(messageAt(0));
    recorder.keep(messageAt(100));
    handle(FragmentEventKind::Complete, 1, 0, 4000, 4000);
    EXPECT_TRUE(recorder.pending().empty());
}

TEST_F(FragmentRecorderTest, TheStartOfASpanIsRegisteredAndNothingIsWritten) {
    EXPECT_FALSE(handle(FragmentEventKind::SpanStart, 1, 0, 4000, 8000));
    EXPECT_EQ(output.log, "");
    EXPECT_EQ(entries(), "1@0:1:0 ");
    EXPECT_EQ(inFile(1), "no file");
    const auto& runsSoFar = rendition.bootstrap().fragmentRunTables.front().entries;
    ASSERT_EQ(runsSoFar.size(), 1U);
    EXPECT_EQ(runsSoFar.front().fragmentDuration, 4000U);
}

TEST_F(FragmentRecorderTest, ACellOfASpanHasAnEntryWithoutData) {
    handle(FragmentEventKind::SpanStart, 1, 0, 4000, 8000);
    EXPECT_FALSE(handle(FragmentEventKind::SpanCell, 2, 4000, 8000, 12000));
    EXPECT_EQ(output.log, "");
    EXPECT_EQ(entries(), "1@0:1:0 2@4000:1:- ");
}

TEST_F(FragmentRecorderTest, TheEndOfASpanWritesTheKeptFragment) {
    handle(FragmentEventKind::SpanStart, 1, 0, 4000, 8000);
    handle(FragmentEventKind::SpanCell, 2, 4000, 8000, 12000);
    recorder.keep(messageAt(0));
    recorder.keep(messageAt(11000));
    EXPECT_TRUE(handle(FragmentEventKind::SpanEnd, 3, 8000, 12500, 12500));
    EXPECT_EQ(output.log, "write 12500 of 0 11000\nadvance 12500\n");
    EXPECT_EQ(entries(), "1@0:1:1000 2@4000:1:- 3@8000:1:- ");
    EXPECT_EQ(inFile(1), entries());
    // The copy has the discontinuity already; two cells in a row share an entry.
    EXPECT_EQ(runs(), "1@0+4000 2@4000+0/1 ");
    EXPECT_TRUE(recorder.pending().empty());
}

// The gap that the span's end fills is longer than a piece of the index file.
TEST_F(FragmentRecorderTest, TheOffsetOfTheKeptFragmentIsInAFileOfSeveralPieces) {
    handle(FragmentEventKind::Complete, 1, 0, 4000, 4000);
    handle(FragmentEventKind::SpanStart, 2, 4000, 8000, 8000);
    handle(FragmentEventKind::SpanEnd, 20000, 8000, 12500, 12500);
    const auto rows = kz::test::readAfraBox(kz::test::readFile(output.folder / "bSeg1.kzx")).global;
    ASSERT_EQ(rows.size(), 20000U);
    EXPECT_EQ(rows[0].afraOffset, 1000U);
    EXPECT_EQ(rows[1].afraOffset, 2000U);
    EXPECT_EQ(rows[19999].afraOffset, kzs::kNoFragmentData);
}

TEST_F(FragmentRecorderTest, OfTwoEntriesOfTheKeptNumberTheFirstGetsTheOffset) {
    handle(FragmentEventKind::SpanStart, 1, 0, 4000, 8000);
    EXPECT_THROW(handle(FragmentEventKind::SpanEnd, 1, 4000, 9000, 9000), InvalidAfraException);
    EXPECT_EQ(entries(), "1@0:1:1000 1@4000:1:- ");
}

TEST_F(FragmentRecorderTest, ALeapInTheNumbersIsFilledWithTheTimeBeforeIt) {
    handle(FragmentEventKind::Complete, 5, 16000, 20000, 20000);
    handle(FragmentEventKind::Complete, 9, 32000, 36000, 36000);
    EXPECT_EQ(entries(), "5@16000:1:1000 6@16000:1:- 7@16000:1:- 8@16000:1:- 9@32000:1:2000 ");
}

TEST_F(FragmentRecorderTest, EntriesAndFilesNameTheSegmentOfTheFragment) {
    output.rolls = true;
    handle(FragmentEventKind::Complete, 1, 0, 4000, 4000);
    handle(FragmentEventKind::Complete, 2, 4000, 8000, 8000);
    EXPECT_EQ(inFile(1), "1@0:1:1000 ");
    EXPECT_EQ(inFile(2), "1@0:1:1000 2@4000:2:2000 ");
    EXPECT_EQ(inFile(3), "no file");
    recorder.finishIndexFile();
    EXPECT_EQ(inFile(3), inFile(2));
}

TEST_F(FragmentRecorderTest, EventsThatCloseNothingDoNothing) {
    EXPECT_FALSE(handle(FragmentEventKind::None, 0, 0, 0));
    EXPECT_FALSE(handle(FragmentEventKind::FirstCutMoved, 1, 5, 5));
    EXPECT_FALSE(handle(FragmentEventKind::WrongTrack, 0, 0, 0));
    EXPECT_EQ(output.log, "");
    EXPECT_EQ(entries(), "");
}

TEST_F(FragmentRecorderTest, NumbersThatFallBackFailOnceTheDataIsWritten) {
    handle(FragmentEventKind::Complete, 2, 4000, 8000);
    EXPECT_THROW(handle(FragmentEventKind::Complete, 1, 0, 4000), InvalidAfraException);
    EXPECT_EQ(output.log, "write 8000 of\nadvance 4000\nwrite 4000 of\n");
}

TEST_F(FragmentRecorderTest, ALeapBeyondAllBoundsFailsInsteadOfFillingMemory) {
    handle(FragmentEventKind::Complete, 1, 0, 4000);
    EXPECT_THROW(handle(FragmentEventKind::Complete, 4000000000U, 0, 4000), std::length_error);
}

TEST_F(FragmentRecorderTest, TheLastFragmentHasTheEndMarkBeforeItIsWritten) {
    handle(FragmentEventKind::Complete, 1, 0, 4000, 4000);
    end(FragmentEventKind::Complete, 2, 4000, 8000, 7999);
    EXPECT_EQ(runs(), "1@0+4000 0@0+0/0 ");
    EXPECT_EQ(output.bootstraps.back().currentMediaTime, 7999U);
    // What goes into the manifest afterwards is the same.
    EXPECT_EQ(kz::test::u8(0) + output.lastBootstrap, kz::test::text(primedBootstrap(rendition)));
    EXPECT_EQ(output.log, "write 4000 of\nadvance 4000\nwrite 8000 of\nadvance 4000\n");
}

TEST_F(FragmentRecorderTest, ASpanThatEndsTheInputHasNoEndMarkAndCountsNothing) {
    handle(FragmentEventKind::SpanStart, 1, 0, 4000, 8000);
    recorder.keep(messageAt(100));
    end(FragmentEventKind::SpanEnd, 2, 4000, 9001, 9000);
    EXPECT_EQ(runs(), "1@0+4000 2@4000+0/1 ");
    EXPECT_EQ(output.log, "write 9001 of 100\n");
    EXPECT_EQ(recorder.pending().size(), 1U);
    EXPECT_EQ(inFile(1), "1@0:1:1000 2@4000:1:- ");
}

TEST_F(FragmentRecorderTest, ACellAtTheEndIsWrittenWithTheEndMarkAlone) {
    recorder.keep(messageAt(500));
    end(FragmentEventKind::SpanCell, 1, 0, 501, 500);
    EXPECT_EQ(output.log, "write 501 of 500\nadvance 501\n");
    EXPECT_EQ(runs(), "0@0+0/0 ");
    EXPECT_TRUE(output.bootstraps.back().segments.empty());
    EXPECT_EQ(inFile(1), "1@0:1:1000 ");
}

TEST_F(FragmentRecorderTest, AnInputWithoutSamplesHasAFragmentNumberedZero) {
    end(FragmentEventKind::None, 0, 0, 0, 0);
    EXPECT_EQ(output.log, "write 0 of\nadvance 0\n");
    EXPECT_EQ(inFile(1), "0@0:1:1000 ");
    EXPECT_EQ(runs(), "0@0+0/0 ");
}

TEST_F(FragmentRecorderTest, TheTailThatTheFragmenterDoesNotTellOfIsAFragment) {
    handle(FragmentEventKind::SpanStart, 1, 0, 4000, 8000);
    handle(FragmentEventKind::SpanEnd, 2, 4000, 8000, 12000);
    recorder.keep(messageAt(12000));
    end(FragmentEventKind::None, 0, 0, 0, 13000);
    EXPECT_EQ(output.log, "write 8000 of\nadvance 8000\nwrite 13001 of 12000\nadvance 5001\n");
    EXPECT_EQ(inFile(1), "1@0:1:1000 2@4000:1:- 3@8000:1:2000 ");
    EXPECT_EQ(runs(), "1@0+4000 2@4000+0/1 3@8000+5000 0@0+0/0 ");
}

TEST_F(FragmentRecorderTest, TheBootstrapIsPrimedWithAZeroByte) {
    const std::string primed = primedBootstrap(rendition);
    ASSERT_GT(primed.size(), 5U);
    EXPECT_EQ(primed.substr(0, 5), std::string(5, '\0'));
    rendition.bootstrap().version = 0x41424344;
    EXPECT_EQ(primedBootstrap(rendition).substr(0, 5), std::string("\0ABCD", 5));
}

}  // namespace
}  // namespace torvo::offline
