#include <gtest/gtest.h>

#include "kzs/AudioFragmenter.h"
#include "kzs/FragmenterText.h"

namespace torvo::kzs {
namespace {

constexpr std::uint32_t kF = 100;

// The answers to all of `samples` and of finish, a line each.
std::string answersTo(const std::string& samples, bool checkFirstCut = false) {
    AudioFragmenter fragmenter(kF, checkFirstCut);
    std::string lines;
    FragmenterSample last;
    for (const FragmenterSample& sample : samplesFrom(samples)) {
        lines += textOf(fragmenter.addSample(sample)) + "\n";
        last = sample;
    }
    return lines + textOf(fragmenter.finish(last));
}

TEST(AudioFragmenterTest, CutsAtTheFirstSampleBehindEachLine) {
    EXPECT_EQ(answersTo("a0 a90 a110 a190 a350"),
              "None 0 [0,0) 1/1 state 2\n"
              "None 0 [0,0) 1/1 state 2\n"
              "Complete 1 [0,110) 2/1 state 0\n"
              "None 0 [0,0) 2/2 state 2\n"
              "Complete 2 [110,350) 4/2 state 0\n"
              "Complete 4 [350,350) 4/4 state 0");
}

TEST(AudioFragmenterTest, OpensNoFragmentBeforeTheFirstLine) {
    EXPECT_EQ(answersTo("a50 a90 a100"),
              "None 0 [0,0) 1/1 state 1\n"
              "None 0 [0,0) 1/1 state 1\n"
              "None 0 [0,0) 2/2 state 2\n"
              "Complete 2 [100,100) 2/2 state 0");
}

TEST(AudioFragmenterTest, FinishesWithTheFirstFragmentWhenAllIsInOneCell) {
    EXPECT_EQ(answersTo("a50 a99"),
              "None 0 [0,0) 1/1 state 1\n"
              "None 0 [0,0) 1/1 state 1\n"
              "Complete 1 [0,99) 1/1 state 0");
}

TEST(AudioFragmenterTest, EndsExactlyAtTheLastSample) {
    AudioFragmenter fragmenter(kF, false);
    const auto samples = samplesFrom("a0 a170");
    fragmenter.addSample(samples[0]);
    EXPECT_EQ(textOf(fragmenter.finish(samples[1])), "Complete 1 [0,170) 2/1 state 0");
}

TEST(AudioFragmenterTest, ReportsState0WithEveryCut) {
    AudioFragmenter fragmenter(kF, false);
    const auto samples = samplesFrom("a0 a100 a150");
    fragmenter.addSample(samples[0]);
    EXPECT_EQ(fragmenter.addSample(samples[1]).state, 0);
    EXPECT_EQ(fragmenter.addSample(samples[2]).state, 2);
}

TEST(AudioFragmenterTest, RefusesVideoAndStaysAsItIs) {
    AudioFragmenter fragmenter(kF, false);
    const auto samples = samplesFrom("v500 a0 v700 a100");
    EXPECT_EQ(textOf(fragmenter.addSample(samples[0])), "WrongTrack 0 [0,0) 0/0 state 0");
    fragmenter.addSample(samples[1]);
    EXPECT_EQ(textOf(fragmenter.addSample(samples[2])), "WrongTrack 0 [0,0) 0/0 state 0");
    EXPECT_EQ(textOf(fragmenter.addSample(samples[3])), "Complete 1 [0,100) 2/1 state 0");
}

TEST(AudioFragmenterTest, CutsOnDataAsOnAudio) {
    EXPECT_EQ(answersTo("d0 a50 d120"),
              "None 0 [0,0) 1/1 state 2\n"
              "None 0 [0,0) 1/1 state 2\n"
              "Complete 1 [0,120) 2/1 state 0\n"
              "Complete 2 [120,120) 2/2 state 0");
}

TEST(AudioFragmenterTest, ReportsAFirstCutBehindTheFirstSampleWhenAsked) {
    EXPECT_EQ(answersTo("a50 a130", true),
              "None 0 [0,0) 1/1 state 1\n"
              "FirstCutMoved 1 [50,130) 2/1 state 0\n"
              "Complete 2 [130,130) 2/2 state 0");
    EXPECT_EQ(answersTo("a100", true),
              "None 0 [0,0) 2/2 state 2\n"
              "Complete 2 [100,100) 2/2 state 0");
}

TEST(AudioFragmenterTest, FinishesAnEmptyInputWithZeroTimes) {
    EXPECT_EQ(answersTo(""), "Complete 1 [0,0) 1/0 state 0");
}

}  // namespace
}  // namespace torvo::kzs
