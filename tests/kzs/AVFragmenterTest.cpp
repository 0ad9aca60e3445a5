#include <sstream>
#include <string>
#include <type_traits>

#include <gtest/gtest.h>

#include "kzs/AVFragmenter.h"
#include "kzs/FragmenterText.h"

namespace torvo::kzs {
namespace {

static_assert(!std::has_virtual_destructor<Fragmenter>::value,
              "the interface has two operations and no destructor slot");

constexpr std::uint32_t kF = 100;

// The answer to the last of `samples`, then the answer of finish for that sample.
struct Answers {
    std::string last;
    std::string finish;
};

Answers answersTo(const std::string& samples, bool checkFirstCut = false) {
    AVFragmenter fragmenter(kF, checkFirstCut);
    FragmentEvent event;
    FragmenterSample last;
    for (const FragmenterSample& sample : samplesFrom(samples)) {
        event = fragmenter.addSample(sample);
        last = sample;
    }
    return {textOf(event), textOf(fragmenter.finish(last))};
}

// Roads into each state. The open fragment's start, the previous and the current cell are then:
const std::string kInState1 = "a50 ";                // 0, 0, 1
const std::string kInState2 = "a50 a150 ";           // 100, 1, 2
const std::string kInState3 = "v0 p100 ";            // 0, 1, 2
const std::string kInState4 = "v0 ";                 // 0, 0, 1
const std::string kInState5 = "v0 p100 v200 v300 ";  // 200, 3, 4
const std::string kInState6 = "v0 p100 p200 ";       // 100, 2, 3
const std::string kInState7 = "v0 p100 v200 ";       // 100, 2, 3
const std::string kInState8 = "v0 p100 v200 p300 ";  // 200, 3, 4

struct Case {
    std::string road;
    std::string sample;
    std::string answer;
    std::string start;  // of the open fragment afterwards, and the current cell behind the slash
};

// Cases of one transition table, each a row: road, sample, event, open fragment afterwards.
class TransitionTest : public testing::TestWithParam<Case> {};

TEST_P(TransitionTest, AnswersAndMovesAsItsRowSays) {
    const Case& row = GetParam();
    AVFragmenter fragmenter(kF, false);
    for (const FragmenterSample& sample : samplesFrom(row.road)) fragmenter.addSample(sample);
    const FragmenterSample sample = samplesFrom(row.sample).front();
    EXPECT_EQ(textOf(fragmenter.addSample(sample)), row.answer) << row.road << row.sample;
    if (row.start.empty()) return;
    const FragmentEvent end = fragmenter.finish(sample);
    EXPECT_EQ(std::to_string(end.start.value) + "/" + std::to_string(end.previousCell), row.start)
        << row.road << row.sample;
}

// What AV events say: kind, number, [start, end), current cell / previous cell, state.
INSTANTIATE_TEST_SUITE_P(FromState0, TransitionTest,
                         testing::Values(Case{"", "a50", "None 0 [0,0) 1/1 state 1", "0/1"},
                                         Case{"", "v50", "None 0 [0,0) 1/1 state 1", "0/1"},
                                         Case{"", "v0", "None 0 [0,0) 1/1 state 4", "0/1"},
                                         Case{"", "a0", "None 0 [0,0) 1/1 state 2", "0/1"},
                                         Case{"", "v300", "None 0 [0,0) 4/4 state 4", "300/4"},
                                         Case{"", "p300", "None 0 [0,0) 4/4 state 2", "300/4"}));

INSTANTIATE_TEST_SUITE_P(
    FromState1, TransitionTest,
    testing::Values(Case{kInState1, "p60", "None 0 [0,0) 1/1 state 1", "0/1"},
                    Case{kInState1, "v60", "None 0 [0,0) 1/1 state 1", "0/1"},
                    Case{kInState1, "v150", "None 0 [0,0) 2/2 state 4", "150/2"},
                    Case{kInState1, "v100", "None 0 [0,0) 2/2 state 4", "100/2"},
                    Case{kInState1, "p150", "None 0 [0,0) 2/2 state 2", "100/2"},
                    Case{kInState1, "a250", "None 0 [0,0) 3/3 state 2", "200/3"},
                    Case{kInState1, "A150", "None 0 [0,0) 2/2 state 2", "100/2"}));

INSTANTIATE_TEST_SUITE_P(
    FromState2, TransitionTest,
    testing::Values(Case{kInState2, "p170", "None 0 [0,0) 2/2 state 2", "100/2"},
                    Case{kInState2, "p350", "None 0 [0,0) 4/2 state 2", "100/2"},
                    Case{kInState2, "A350", "None 0 [0,0) 4/2 state 2", "100/2"},
                    Case{kInState2, "v170", "None 0 [0,0) 2/2 state 4", "100/2"},
                    Case{kInState2, "v350", "None 0 [0,0) 4/4 state 4", "100/4"},
                    Case{"a50 a100 ", "v100", "None 0 [0,0) 2/2 state 4", "100/2"}));

INSTANTIATE_TEST_SUITE_P(
    FromState3, TransitionTest,
    testing::Values(Case{kInState3, "v150", "Complete 1 [0,150) 2/2 state 4", "150/2"},
                    Case{kInState3, "v250", "SpanStart 1 [0,100) 3/2 state 7", "100/3"},
                    Case{kInState3, "v200", "SpanStart 1 [0,100) 3/2 state 7", "100/3"},
                    Case{kInState3, "p250", "SpanStart 1 [0,100) 3/2 state 6", "100/3"},
                    Case{kInState3, "A250", "SpanStart 1 [0,100) 3/2 state 6", "100/3"},
                    Case{kInState3, "p150", "None 0 [0,0) 2/2 state 3", "0/2"},
                    Case{kInState3, "v0", "None 0 [0,0) 1/2 state 3", "0/2"}));

INSTANTIATE_TEST_SUITE_P(
    FromState4, TransitionTest,
    testing::Values(Case{kInState4, "v50", "None 0 [0,0) 1/1 state 4", "0/1"},
                    Case{kInState4, "p50", "None 0 [0,0) 1/1 state 4", "0/1"},
                    Case{kInState4, "v100", "Complete 1 [0,100) 2/1 state 4", "100/2"},
                    Case{kInState4, "v350", "Complete 1 [0,350) 4/1 state 4", "350/4"},
                    Case{kInState4, "p100", "None 0 [0,0) 2/2 state 3", "0/2"},
                    Case{kInState4, "A350", "None 0 [0,0) 4/4 state 3", "0/4"},
                    Case{kInState4, "v0", "None 0 [0,0) 1/1 state 4", "0/1"}));

INSTANTIATE_TEST_SUITE_P(
    FromState5, TransitionTest,
    testing::Values(Case{kInState5, "v400", "Complete 3 [200,300) 5/4 state 5", ""},
                    Case{kInState5, "p400", "None 0 [0,0) 5/5 state 3", "200/5"},
                    Case{kInState5, "A400", "None 0 [0,0) 5/5 state 3", "200/5"},
                    Case{kInState5, "v350", "None 0 [0,0) 4/4 state 5", ""},
                    Case{kInState5, "p350", "None 0 [0,0) 4/4 state 5", ""},
                    Case{kInState5, "v200", "None 0 [0,0) 3/4 state 5", ""}));

INSTANTIATE_TEST_SUITE_P(
    FromState6, TransitionTest,
    testing::Values(Case{kInState6, "v300", "SpanCell 2 [100,200) 4/3 state 7", "200/4"},
                    Case{kInState6, "v250", "SpanEnd 2 [100,250) 3/3 state 4", "250/3"},
                    Case{kInState6, "p300", "SpanCell 2 [100,200) 4/3 state 6", "200/4"},
                    Case{kInState6, "A300", "SpanCell 2 [100,200) 4/3 state 6", "200/4"},
                    Case{kInState6, "p250", "None 0 [0,0) 3/3 state 6", "100/3"},
                    Case{kInState6, "v100", "None 0 [0,0) 2/3 state 6", "100/3"}));

INSTANTIATE_TEST_SUITE_P(
    FromState7, TransitionTest,
    testing::Values(Case{kInState7, "v300", "SpanEnd 2 [100,200) 4/3 state 5", ""},
                    Case{kInState7, "p300", "SpanEnd 2 [100,200) 4/3 state 8", "200/4"},
                    Case{kInState7, "A300", "SpanEnd 2 [100,200) 4/3 state 8", "200/4"},
                    Case{kInState7, "p250", "None 0 [0,0) 3/3 state 7", "100/3"},
                    Case{kInState7, "v100", "None 0 [0,0) 2/3 state 7", "100/3"}));

INSTANTIATE_TEST_SUITE_P(
    FromState8, TransitionTest,
    testing::Values(Case{kInState8, "v350", "Complete 3 [200,350) 4/4 state 4", "350/4"},
                    Case{kInState8, "v400", "SpanStart 3 [200,300) 5/4 state 7", "300/5"},
                    Case{kInState8, "p400", "SpanStart 3 [200,300) 5/4 state 6", "300/5"},
                    Case{kInState8, "p350", "None 0 [0,0) 4/4 state 8", "200/4"},
                    Case{kInState8, "v200", "None 0 [0,0) 3/4 state 8", "200/4"}));

TEST(AVFragmenterTest, PutsASampleOnALineIntoTheLaterCell) {
    EXPECT_EQ(answersTo("v0 p99").last, "None 0 [0,0) 1/1 state 4");
    EXPECT_EQ(answersTo("v0 p100").last, "None 0 [0,0) 2/2 state 3");
    EXPECT_EQ(answersTo("v0 p101").last, "None 0 [0,0) 2/2 state 3");
}

TEST(AVFragmenterTest, CrossesTheLineOnWhichTheFirstSampleLies) {
    EXPECT_EQ(answersTo("v199").last, "None 0 [0,0) 2/2 state 1");
    EXPECT_EQ(answersTo("v200").last, "None 0 [0,0) 3/3 state 4");
    EXPECT_EQ(answersTo("v201").last, "None 0 [0,0) 3/3 state 1");
}

TEST(AVFragmenterTest, ClosesNothingBeforeTheFirstKeyFrame) {
    const Answers answers = answersTo("a50 a150 p250 p950");
    EXPECT_EQ(answers.last, "None 0 [0,0) 10/2 state 2");
    EXPECT_EQ(answers.finish, "SpanCell 2 [100,951) 10/2 state -1");
}

TEST(AVFragmenterTest, IgnoresFurtherKeyFramesInACellOpenedByOne) {
    EXPECT_EQ(answersTo(kInState7 + "v250").last, "None 0 [0,0) 3/3 state 7");
}

TEST(AVFragmenterTest, KeepsTheCellsWhenItClosesAtASample) {
    // The key frame at 150 closes in cell 2. The previous cell, 1, is still the line of the next
    // closing on the grid, although the fragment that ends there started behind it.
    AVFragmenter fragmenter(kF, false);
    std::string last;
    for (const FragmenterSample& s : samplesFrom("v0 p100 v150 p200 p300")) {
        last = textOf(fragmenter.addSample(s));
    }
    // At 200 the fragment of 150 goes past its cell: previous cell 2; at 300 it closes on 200.
    EXPECT_EQ(last, "SpanStart 2 [150,200) 4/3 state 6");

    // Where times fall back the key frame lies in an earlier cell, and the current one stays.
    EXPECT_EQ(answersTo(kInState3 + "v50").finish, "Complete 1 [50,51) 1/2 state -1");
    EXPECT_EQ(answersTo(kInState6 + "v150").finish, "Complete 2 [150,151) 2/3 state -1");
    EXPECT_EQ(answersTo(kInState8 + "v250").finish, "Complete 3 [250,251) 3/4 state -1");
}

TEST(AVFragmenterTest, ClosesOnTheLineOfThePreviousCell) {
    // The sample lies four cells on; the fragment still ends at the line behind its own cell.
    EXPECT_EQ(answersTo(kInState3 + "p550").last, "SpanStart 1 [0,100) 6/2 state 6");
    EXPECT_EQ(answersTo(kInState3 + "p550 p600").last, "SpanCell 2 [100,200) 7/6 state 6");
}

TEST(AVFragmenterTest, MakesNoFragmentOfLengthZero) {
    // Audio and a key frame of equal times, in either order.
    EXPECT_EQ(answersTo("v0 v100 a100").last, "None 0 [0,0) 2/2 state 4");
    EXPECT_EQ(answersTo("v0 a100 v100").last, "Complete 1 [0,100) 2/2 state 4");
}

TEST(AVFragmenterTest, CrossesALineOnAnySample) {
    EXPECT_EQ(answersTo("v0 d100").last, "None 0 [0,0) 2/2 state 3");
    EXPECT_EQ(answersTo("v0 D100").last, "None 0 [0,0) 2/2 state 3");
}

TEST(AVFragmenterTest, KeepsAFirstSampleInsideACellInState1) {
    AVFragmenter fragmenter(4000, false);
    const auto samples = samplesFrom("v500 p3999 v4000");
    EXPECT_EQ(textOf(fragmenter.addSample(samples[0])), "None 0 [0,0) 1/1 state 1");
    EXPECT_EQ(textOf(fragmenter.addSample(samples[1])), "None 0 [0,0) 1/1 state 1");
    EXPECT_EQ(textOf(fragmenter.addSample(samples[2])), "None 0 [0,0) 2/2 state 4");
}

TEST(AVFragmenterTest, SpansWhereTheKeyFrameIsLate) {
    // One sample every 20 ms, key frames at 0 and 9000.
    AVFragmenter fragmenter(4000, false);
    std::string log;
    for (std::uint64_t t = 0; t <= 9000; t += 20) {
        FragmenterSample sample;
        sample.trackKind = FragmenterSample::kVideo;
        sample.time = milliseconds(t);
        sample.isKeyFrame = t == 0 || t == 9000;
        const FragmentEvent event = fragmenter.addSample(sample);
        if (event.kind != FragmentEventKind::None) {
            log += std::to_string(t) + ": " + textOf(event) + "\n";
        }
    }
    EXPECT_EQ(log,
              "8000: SpanStart 1 [0,4000) 3/2 state 6\n"
              "9000: SpanEnd 2 [4000,9000) 3/3 state 4\n");
}

TEST(AVFragmenterTest, FinishesByItsState) {
    EXPECT_EQ(answersTo(kInState1).finish, "SpanCell 1 [0,51) 1/1 state -1");
    EXPECT_EQ(answersTo(kInState2).finish, "SpanCell 2 [100,151) 2/2 state -1");
    EXPECT_EQ(answersTo(kInState3).finish, "Complete 1 [0,101) 2/2 state -1");
    EXPECT_EQ(answersTo(kInState4).finish, "Complete 1 [0,1) 1/1 state -1");
    EXPECT_EQ(answersTo(kInState6).finish, "SpanEnd 2 [100,201) 3/3 state -1");
    EXPECT_EQ(answersTo(kInState7).finish, "SpanEnd 2 [100,201) 3/3 state -1");
    EXPECT_EQ(answersTo(kInState8).finish, "Complete 3 [200,301) 4/4 state -1");
}

TEST(AVFragmenterTest, FinishesWithNothingInStatesZeroAndFive) {
    EXPECT_EQ(answersTo("").finish, "None 0 [0,0) 0/0 state 0");
    EXPECT_EQ(answersTo(kInState5).finish, "None 0 [0,0) 0/0 state 0");
}

TEST(AVFragmenterTest, FinishesTwiceAlikeSinceItLeavesTheState) {
    AVFragmenter fragmenter(kF, false);
    const FragmenterSample sample = samplesFrom("v0").front();
    fragmenter.addSample(sample);
    EXPECT_EQ(fragmenter.finish(sample), fragmenter.finish(sample));
}

TEST(AVFragmenterTest, AddsOneMillisecondInTheTimescaleOfTheLastSample) {
    AVFragmenter fragmenter(kF, false);
    FragmenterSample sample = samplesFrom("v0").front();
    fragmenter.addSample(sample);
    sample.time = Timestamp{90050, 90000, {0, 0}};
    const FragmentEvent event = fragmenter.finish(sample);
    EXPECT_EQ(event.end.value, 90140U);
    EXPECT_EQ(event.end.timescale, 90000U);
}

TEST(AVFragmenterTest, NumbersByTheBareValueOfTheStart) {
    // The key frame at 250 ticks of 500 a second starts a fragment at 0.5 s; its number is taken
    // from the 250 all the same.
    AVFragmenter fragmenter(kF, false);
    FragmenterSample sample = samplesFrom("v50").front();
    fragmenter.addSample(sample);
    sample.time = Timestamp{250, 500, {0, 0}};
    fragmenter.addSample(sample);
    sample.time = Timestamp{300, 500, {0, 0}};
    const FragmentEvent event = fragmenter.addSample(sample);
    EXPECT_EQ(event.fragmentNumber, 3U);
    EXPECT_EQ(event.start.timescale, 500U);
}

TEST(AVFragmenterTest, AStartOnTheGridKeepsTheTimescaleItHad) {
    AVFragmenter fragmenter(kF, false);
    FragmenterSample sample = samplesFrom("a50").front();
    fragmenter.addSample(sample);
    sample.time = Timestamp{150, 500, {0, 0}};
    fragmenter.addSample(sample);
    const FragmentEvent event = fragmenter.finish(sample);
    EXPECT_EQ(event.start.value, 100U);
    EXPECT_EQ(event.start.timescale, 1000U);
}

TEST(AVFragmenterTest, ComparesASampleWithTheStartInTheTimescaleOfTheStart) {
    AVFragmenter fragmenter(kF, false);
    FragmenterSample sample = samplesFrom("v0").front();
    fragmenter.addSample(sample);
    sample.time = milliseconds(100);
    fragmenter.addSample(sample);  // the open fragment starts at 100 ms
    sample.time = Timestamp{300, 3000, {0, 0}};
    EXPECT_EQ(textOf(fragmenter.addSample(sample)), "None 0 [0,0) 4/2 state 4");
}

TEST(AVFragmenterTest, ReportsAFirstCutBehindTheFirstSampleWhenAsked) {
    EXPECT_EQ(answersTo("a50 v150", true).last, "FirstCutMoved 2 [150,150) 2/1 state 4");
    EXPECT_EQ(answersTo("a50 a150 v170", true).last, "FirstCutMoved 2 [170,170) 2/2 state 4");
    EXPECT_EQ(answersTo("a50 a150 v170", true).finish, "Complete 2 [170,171) 2/2 state -1");
}

TEST(AVFragmenterTest, ReportsNoFirstCutAtTheFirstSample) {
    EXPECT_EQ(answersTo("v0", true).last, "None 0 [0,0) 1/1 state 4");
    // From state 2 the start stays on its line.
    EXPECT_EQ(answersTo("a100 v100", true).last, "None 0 [0,0) 2/2 state 4");
    EXPECT_EQ(answersTo("a100 v100", true).finish, "Complete 2 [100,101) 2/2 state -1");
}

TEST(AVFragmenterTest, CutsItsNumbersTo32Bits) {
    AVFragmenter fragmenter(1, false);
    FragmenterSample sample = samplesFrom("v0").front();
    sample.time = milliseconds(0x1FFFFFFFF);
    fragmenter.addSample(sample);
    EXPECT_EQ(fragmenter.finish(sample).fragmentNumber, 0U);
}

}  // namespace
}  // namespace torvo::kzs
