#include <functional>

#include <gtest/gtest.h>

#include "kzm/WriterHarness.h"

namespace qlix::kzm {
namespace {

using namespace kz::test;

/// What follows a failure: the writer goes on, or all further writing gives 48.
void expectUsable(SegmentDriver& test) {
    EXPECT_EQ(codeThrownBy([&] { test.video(5000, text("on"), 1); }), 0U);
    EXPECT_EQ(codeThrownBy([&] { test.writer.close(); }), 0U);
}

void expectBroken(SegmentDriver& test) {
    EXPECT_EQ(codeThrownBy([&] { test.video(5000, text("on"), 1); }), 48U);
    EXPECT_EQ(codeThrownBy([&] { test.writer.startFragment(); }), 48U);
    EXPECT_EQ(codeThrownBy([&] { test.writer.flush(); }), 48U);
    EXPECT_EQ(codeThrownBy([&] { test.describe(test.videoTrack, "vide"); }), 48U);
}

TEST(SegmentFailureTest, AMovieTimescaleOfZeroIsRefusedBeforeTheStreamIsTouched) {
    MemoryStream stream;
    WriterConfiguration configuration;
    configuration.timescale = 0;
    EXPECT_EQ(codeThrownBy([&] { KZSWriter writer(stream, configuration, nullptr); }), 10U);
    EXPECT_EQ(stream.calls, 0U);
    EXPECT_EQ(stream.references, 0);
}

TEST(SegmentFailureTest, AStreamThatCantBeOpenedGivesItsOwnNumber) {
    MemoryStream stream;
    stream.failAtCall = 0;
    stream.failure = 3;
    EXPECT_EQ(codeThrownBy([&] { KZSWriter writer(stream, WriterConfiguration(), nullptr); }), 3U);
    EXPECT_EQ(stream.references, 0);
}

TEST(SegmentFailureTest, AFullDiskAtTheStartGives1024) {
    MemoryStream stream;
    stream.capacity = 10;
    EXPECT_EQ(codeThrownBy([&] { KZSWriter writer(stream, WriterConfiguration(), nullptr); }),
              1024U);
    EXPECT_EQ(stream.references, 0);
}

TEST(SegmentFailureTest, ATrackTimescaleOfZeroIsRefusedAndTheWriterGoesOn) {
    SegmentDriver test;
    EXPECT_EQ(codeThrownBy(
                  [&] { test.writer.addTrack(trackInfo("vide", 0), trackParams(1), "name", 5); }),
              10U);
    test.writer.startFragment();
    expectUsable(test);
}

TEST(SegmentFailureTest, AHandlerNameWithALengthNeedsItsBytes) {
    SegmentDriver test;
    KZMTrackInfo info = trackInfo("vide", 1000);
    info.handlerName = nullptr;
    const auto add = [&] { test.writer.addTrack(info, trackParams(1), nullptr, 0); };
    EXPECT_EQ(codeThrownBy(add), 20U);
    info.handlerNameLength = 0;
    EXPECT_EQ(codeThrownBy(add), 0U);
}

TEST(SegmentFailureTest, ATrackAfterTheFirstFragmentIsTooLate) {
    SegmentDriver test;
    test.writer.startFragment();
    EXPECT_EQ(codeThrownBy([&] {
                  test.writer.addTrack(trackInfo("vide", 1000), trackParams(1), "name", 5);
              }),
              1281U);
    expectUsable(test);
}

TEST(SegmentFailureTest, ThereIsOneHintTrack) {
    SegmentDriver test;
    EXPECT_EQ(codeThrownBy([&] {
                  test.writer.addHintTrack(trackInfo("hint", 1000), trackParams(1), "name", 5,
                                           nullptr, 0);
              }),
              1539U);
    test.writer.startFragment();
    expectUsable(test);
}

TEST(SegmentFailureTest, AFragmentNeedsAHintTrack) {
    MemoryStream stream;
    KZSWriter writer(stream, WriterConfiguration(), nullptr);
    EXPECT_EQ(codeThrownBy([&] { writer.startFragment(); }), 1540U);
    EXPECT_EQ(codeThrownBy([&] {
                  writer.addHintTrack(trackInfo("hint", 1000), trackParams(1), "name", 5, nullptr,
                                      0);
                  writer.startFragment();
              }),
              0U);
}

TEST(SegmentFailureTest, AHintTrackRefersToTracksThatExist) {
    MemoryStream stream;
    KZSWriter writer(stream, WriterConfiguration(), nullptr);
    const TrackHandle none;
    const TrackHandle unknown(1);
    const auto add = [&](const char* handler, const TrackHandle* tracks) {
        return codeThrownBy([&] {
            writer.addHintTrack(trackInfo(handler, 1000), trackParams(1), "name", 5, tracks, 1);
        });
    };
    EXPECT_EQ(add("hint", &none), 20U);
    EXPECT_EQ(add("hint", nullptr), 20U);
    EXPECT_EQ(add("hint", &unknown), 1283U);
    EXPECT_EQ(codeThrownBy([&] {
                  writer.addHintTrack(trackInfo("vide", 1000), trackParams(1), "name", 5, nullptr,
                                      0);
              }),
              20U);
}

TEST(SegmentFailureTest, ANullTrackGivesTwenty) {
    SegmentDriver test;
    const TrackHandle none;
    EXPECT_FALSE(none);
    test.writer.startFragment();
    const KZMSample sample = sampleOf("hint", 0, 1000, 1);
    EXPECT_EQ(codeThrownBy(
                  [&] { test.writer.writeSample(none, sample, test.pool.data(text("a")), false); }),
              20U);
    EXPECT_EQ(codeThrownBy([&] {
                  test.writer.writeHintedSample(none, test.videoTrack, sample, {0, 1},
                                                test.pool.data(text("a")), false);
              }),
              20U);
    EXPECT_EQ(codeThrownBy([&] {
                  test.writer.writeHintedSample(test.hintTrack, none, sample, {0, 1},
                                                test.pool.data(text("a")), false);
              }),
              20U);
    EXPECT_EQ(codeThrownBy([&] { test.describe(none, "vide"); }), 20U);
    EXPECT_EQ(test.pool.released, (std::vector<std::size_t>{0, 1, 2}));
    expectUsable(test);
}

TEST(SegmentFailureTest, AnUnknownTrackGives1283) {
    SegmentDriver test;
    EXPECT_EQ(codeThrownBy([&] { test.describe(TrackHandle(4), "vide"); }), 1283U);
}

struct SampleCase {
    const char* what;
    std::uint32_t expected;
    std::function<void(SegmentDriver&)> act;
};

TEST(SegmentFailureTest, ChecksOfASampleConcernTheCallAlone) {
    const std::vector<SampleCase> cases = {
        {"another handler", 8,
         [](SegmentDriver& test) {
             test.writer.writeSample(test.hintTrack, sampleOf("vide", 0, 1000, 1),
                                     test.pool.data(text("a")), false);
         }},
        {"no size", 11,
         [](SegmentDriver& test) {
             test.writer.writeSample(test.hintTrack, sampleOf("hint", 0, 1000, 0),
                                     test.pool.data(text("a")), false);
         }},
        {"no timescale", 10,
         [](SegmentDriver& test) {
             test.writer.writeSample(test.hintTrack, sampleOf("hint", 0, 0, 1),
                                     test.pool.data(text("a")), false);
         }},
        {"no bytes", 20,
         [](SegmentDriver& test) {
             test.writer.writeSample(test.hintTrack, sampleOf("hint", 0, 1000, 1), {}, false);
         }},
        {"a negative time", 1280,
         [](SegmentDriver& test) { test.hintOnly(0xFFFFFFFFFFFFFFFF, text("a")); }},
        {"not referred to", 1537,
         [](SegmentDriver& test) {
             test.writer.writeHintedSample(test.hintTrack, test.hintTrack,
                                           sampleOf("hint", 0, 1000, 1), {0, 1},
                                           test.pool.data(text("a")), false);
         }},
        {"not a hint track", 1537,
         [](SegmentDriver& test) {
             test.writer.writeHintedSample(test.videoTrack, test.videoTrack,
                                           sampleOf("vide", 0, 1000, 1), {0, 1},
                                           test.pool.data(text("a")), false);
         }},
        {"a description of another handler", 8,
         [](SegmentDriver& test) { test.describe(test.videoTrack, "soun"); }},
        {"a description that has no room", 15,
         [](SegmentDriver& test) { test.describe(test.videoTrack, "vide"); }},
    };
    for (const SampleCase& each : cases) {
        SCOPED_TRACE(each.what);
        SegmentDriver test;
        test.writer.startFragment();
        EXPECT_EQ(codeThrownBy([&] { each.act(test); }), each.expected);
        EXPECT_EQ(test.pool.released.size(), test.pool.given()) << "given back at once";
        expectUsable(test);
    }
}

TEST(SegmentFailureTest, TimesMayStandStillAndNotGoBack) {
    SegmentDriver test;
    test.writer.startFragment();
    test.video(100, text("a"), 1);
    EXPECT_EQ(codeThrownBy([&] { test.video(100, text("b")); }), 0U);
    EXPECT_EQ(codeThrownBy([&] { test.video(99, text("c")); }), 1280U);
    expectUsable(test);
}

TEST(SegmentFailureTest, AGapHasThirtyTwoBits) {
    SegmentDriver test;
    test.writer.startFragment();
    test.video(0, text("a"), 1);
    EXPECT_EQ(codeThrownBy([&] { test.video(0x100000000, text("b")); }), 1288U);
    EXPECT_EQ(codeThrownBy([&] { test.video(0xFFFFFFFF, text("b")); }), 0U);
    EXPECT_EQ(codeThrownBy([&] { test.marker(test.hintTrack, "hint", 0x200000000); }), 0U)
        << "a marker may come later still";
    test.writer.close();
}

TEST(SegmentFailureTest, AFirstSampleMayComeAtAnyTime) {
    SegmentDriver test;
    test.writer.startFragment();
    EXPECT_EQ(codeThrownBy([&] { test.video(0x200000000, text("a"), 1); }), 0U);
}

TEST(SegmentFailureTest, ASampleNeedsADescription) {
    SegmentDriver::Options options;
    options.describe = false;
    SegmentDriver test(options);
    test.writer.startFragment();
    EXPECT_EQ(codeThrownBy([&] { test.hintOnly(0, text("a")); }), 1290U) << "no time origin yet";
    test.describe(test.hintTrack, "hint");
    EXPECT_EQ(codeThrownBy([&] { test.video(0, text("a"), 1); }), 1289U);
    test.describe(test.videoTrack, "vide");
    expectUsable(test);
}

TEST(SegmentFailureTest, ASampleNeedsAnOpenFragment) {
    SegmentDriver test;
    EXPECT_EQ(codeThrownBy([&] { test.video(0, text("a"), 1); }), 1536U);
    test.writer.startFragment();
    expectUsable(test);
}

TEST(SegmentFailureTest, ASecondRtmpDescriptionIsRefused) {
    SegmentDriver::Options options;
    options.descriptionSlots = 2;
    SegmentDriver test(options);
    EXPECT_EQ(codeThrownBy([&] { test.describe(test.hintTrack, "hint"); }), 1542U);
    test.writer.startFragment();
    expectUsable(test);
}

TEST(SegmentFailureTest, ABootstrapNeedsABuffer) {
    SegmentDriver test;
    test.writer.startFragment();
    int released = 0;
    const auto release = [](void* context) { ++*static_cast<int*>(context); };
    EXPECT_EQ(codeThrownBy([&] { test.writer.setBootstrap(nullptr, 3, &released, release); }), 20U);
    EXPECT_EQ(codeThrownBy([&] { test.writer.setBootstrap(nullptr, 0, &released, release); }), 20U);
    EXPECT_EQ(released, 2);
    expectUsable(test);
    const Bytes bytes = text("BST");
    EXPECT_EQ(codeThrownBy([&] {
                  test.writer.setBootstrap(bytes.data(), bytes.size(), &released, release);
              }),
              20U)
        << "the writer is closed";
    EXPECT_EQ(released, 3);
}

TEST(SegmentFailureTest, AFragmentHasOneBootstrap) {
    SegmentDriver test;
    test.writer.startFragment();
    test.bootstrap(text("first"));
    EXPECT_EQ(codeThrownBy([&] { test.bootstrap(text("second")); }), 1541U);
    EXPECT_EQ(test.pool.released, (std::vector<std::size_t>{1}));
    expectUsable(test);
    EXPECT_EQ(test.file().slice(boxAt(test.file(), "abst").offset + 12, 5), text("first"));
}

TEST(SegmentFailureTest, ABootstrapWithoutSamplesThrows1033AndEndsTheWriting) {
    SegmentDriver test;
    test.writer.startFragment();
    test.bootstrap(text("BST"));
    EXPECT_EQ(codeThrownBy([&] { test.writer.startFragment(); }), 1033U);
    expectBroken(test);
}

TEST(SegmentFailureTest, ABootstrapWithoutSamplesThrows1033AtTheClose) {
    SegmentDriver test;
    test.writer.startFragment();
    test.bootstrap(text("BST"));
    EXPECT_EQ(codeThrownBy([&] { test.writer.close(); }), 1033U);
    EXPECT_FALSE(test.stream.isOpen);
    EXPECT_EQ(test.stream.references, 0);
    EXPECT_EQ(codeThrownBy([&] { test.writer.close(); }), 0U);
}

TEST(SegmentFailureTest, AFullDiskGives1024AndEndsTheWriting) {
    SegmentDriver test;
    const std::uint64_t start = test.writer.startFragment();
    test.stream.capacity = start + 100;
    test.video(0, pattern(1000, 1), 1);
    EXPECT_EQ(codeThrownBy([&] { test.writer.startFragment(); }), 1024U);
    expectBroken(test);
    EXPECT_EQ(codeThrownBy([&] { test.writer.close(); }), 0U) << "there is nothing left to write";
    EXPECT_EQ(test.pool.released.size(), test.pool.given());
}

TEST(SegmentFailureTest, AFullDiskAtTheCloseIsThrownAndTheStreamIsClosed) {
    SegmentDriver test;
    const std::uint64_t start = test.writer.startFragment();
    test.stream.capacity = start + 100;
    test.video(0, pattern(1000, 1), 1);
    EXPECT_EQ(codeThrownBy([&] { test.writer.close(); }), 1024U);
    EXPECT_FALSE(test.stream.isOpen);
    EXPECT_EQ(test.stream.references, 0);
    EXPECT_EQ(test.pool.released.size(), test.pool.given());
}

TEST(SegmentFailureTest, OfAFullDiskAndAFailedCloseTheFirstIsThrown) {
    SegmentDriver test;
    const std::uint64_t start = test.writer.startFragment();
    test.stream.capacity = start + 100;
    test.stream.closeFails = true;
    test.video(0, pattern(1000, 1), 1);
    EXPECT_EQ(codeThrownBy([&] { test.writer.close(); }), 1024U);
    EXPECT_FALSE(test.stream.isOpen);
    EXPECT_EQ(test.stream.references, 0);
    EXPECT_EQ(test.pool.released.size(), test.pool.given());
}

TEST(SegmentFailureTest, AFullDiskIsSwallowedWhenTheWriterGoes) {
    SegmentDriver other;
    SegmentDriver test;
    test.stream.capacity = test.writer.startFragment();
    test.video(0, pattern(1000, 1), 1);
    // With this the last handle on the writer goes.
    EXPECT_NO_THROW(test.writer = other.writer);
    EXPECT_EQ(test.pool.given(), 1U);
    EXPECT_EQ(test.pool.released.size(), 1U);
}

TEST(SegmentFailureTest, AFailureAtAnyCallOfTheStreamEndsInACodeAndGivesAllBack) {
    const auto run = [](std::uint64_t failAtCall, std::uint64_t& calls) {
        std::uint32_t code = 0;
        SegmentDriver test;
        test.stream.calls = 0;
        test.stream.failAtCall = failAtCall;
        test.stream.failure = 77;
        code = codeThrownBy([&] {
            test.writer.startFragment();
            test.video(0, pattern(300, 1), 1, true);
            test.bootstrap(text("BST"));
            test.writer.startFragment();
            test.audio(40, pattern(70000, 2));
            test.writer.flush();
            test.video(80, pattern(10, 2));
            test.writer.close();
        });
        test.writer.close();
        calls = test.stream.calls;
        EXPECT_EQ(test.pool.released.size(), test.pool.given()) << "call " << failAtCall;
        EXPECT_EQ(test.stream.references, 0) << "call " << failAtCall;
        return code;
    };
    std::uint64_t calls = 0;
    ASSERT_EQ(run(MemoryStream::kNever, calls), 0U);
    ASSERT_GT(calls, 10U);
    const std::uint64_t all = calls;
    for (std::uint64_t each = 0; each < all; ++each) {
        const std::uint32_t code = run(each, calls);
        EXPECT_TRUE(code == 1024U || code == 77U) << "call " << each << " gave " << code;
    }
}

}  // namespace
}  // namespace qlix::kzm
