#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "qlix_flv/FlvFixture.h"
#include "support/AmfBuilder.h"
#include "support/FlvBuilder.h"

namespace kz::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

Bytes twoTags() { return flvFile({mp3Frame(0, raw({1})), mp3Frame(26, raw({2, 3}))}); }

Drained forward(const Bytes& content) {
    FlvFixture file(content);
    file.open();
    return drain(file.all());
}

Drained backward(const Bytes& content) {
    FlvFixture file(content);
    file.open();
    QlixFLVTagIterator* iterator = file.all(1);
    if (iterator == nullptr) {
        Drained out;
        out.result = file.result;
        return out;
    }
    return drain(iterator);
}

FLVDocInfo docInfo(const Bytes& content) {
    FlvFixture file(content);
    file.open();
    FLVDocInfo info{};
    EXPECT_EQ(QlixFLVReaderGetDocInfo(file.reader, &info), 0U);
    return info;
}

TEST(TagsTest, ComeInTheOrderOfTheFileWithAllKnownTypes) {
    const Drained tags = forward(flvFile({scriptTag(0, amfString("x")), flvTag(15, 1, raw({0})),
                                          avcFrame(7, true, raw({1})), mp3Frame(3, raw({2}))}));
    EXPECT_EQ(tags.result, 0U);
    EXPECT_THAT(tags.types(), ElementsAre(18, 15, 9, 8));
    EXPECT_THAT(tags.times(), ElementsAre(0, 1, 7, 3));
}

TEST(TagsTest, AFileWithoutTagsHasNone) {
    for (const Bytes& content : {flvHeader(), flvHeader() + u32(0), flvHeader() + raw({0, 0})}) {
        const Drained tags = forward(content);
        EXPECT_EQ(tags.result, 0U);
        EXPECT_THAT(tags.tags, IsEmpty());
    }
}

TEST(TagsTest, TheDataOffsetOfTheHeaderIsHonoured) {
    const Bytes content =
        flvHeader(5, 12) + raw({0xaa, 0xbb, 0xcc}) + u32(0) + mp3Frame(5, raw({1})).image();
    EXPECT_THAT(forward(content).times(), ElementsAre(5));
    EXPECT_THAT(backward(content).times(), ElementsAre(5));
}

TEST(TagsTest, ADataOffsetOutsideTheFileIsDamage) {
    for (std::uint32_t offset : {0U, 8U, 14U, 0xffffffffU}) {
        FlvFixture file(flvHeader(5, offset) + u32(0));
        EXPECT_EQ(file.open(), 8U) << offset;
    }
}

TEST(TagsTest, SizeWordsAreNotCheckedGoingForward) {
    const Drained tags = forward(
        flvFile({mp3Frame(0, raw({1})).claimingTag(77777), mp3Frame(26, raw({2})).claimingTag(0)}));
    EXPECT_EQ(tags.result, 0U);
    EXPECT_THAT(tags.times(), ElementsAre(0, 26));
}

TEST(TagsTest, TheLastSizeWordMayBeShortOrMissing) {
    const Bytes content = twoTags();
    for (std::size_t missing = 1; missing <= 4; ++missing) {
        const Drained tags = forward(content.cutTo(content.size() - missing));
        EXPECT_EQ(tags.result, 0U);
        EXPECT_THAT(tags.times(), ElementsAre(0, 26));
    }
}

TEST(TagsTest, ATagThatRunsPastTheEndIsDamageBehindTheTagsBeforeIt) {
    const Bytes content = twoTags();
    for (std::size_t missing = 5; missing <= 7; ++missing) {
        const Drained tags = forward(content.cutTo(content.size() - missing));
        EXPECT_EQ(tags.result, 8U);
        EXPECT_THAT(tags.times(), ElementsAre(0));
    }
    const Drained lying =
        forward(flvFile({mp3Frame(0, raw({1})), mp3Frame(26, raw({2})).claimingBody(0xffffff)}));
    EXPECT_EQ(lying.result, 8U);
    EXPECT_THAT(lying.times(), ElementsAre(0));
}

TEST(TagsTest, StrayBytesAreDamageFromFourOn) {
    for (std::size_t stray = 1; stray <= 11; ++stray) {
        const Drained tags = forward(twoTags() + fill(stray, 0xff));
        EXPECT_EQ(tags.result, stray < 4 ? 0U : 8U) << stray;
        EXPECT_THAT(tags.times(), ElementsAre(0, 26));
    }
}

TEST(TagsTest, DamageIsToldOnceByHasMoreAndEveryTimeByNext) {
    FlvFixture file(flvFile({mp3Frame(0, raw({1}))}) + fill(5, 0xff));
    file.open();
    for (QlixFLVTagIterator* tags : {file.all(), file.ordered()}) {
        QlixFLVTag* tag = nullptr;
        EXPECT_EQ(QlixFLVTagIteratorGetNextEntry(tags, &tag), 0U);
        QlixFLVReleaseTag(tag);
        std::int32_t hasMore = 0;
        EXPECT_EQ(QlixFLVTagIteratorHasMoreEntries(tags, &hasMore), 0U);
        EXPECT_EQ(hasMore, 1);
        EXPECT_EQ(QlixFLVTagIteratorGetNextEntry(tags, &tag), 8U);
        EXPECT_EQ(QlixFLVTagIteratorHasMoreEntries(tags, &hasMore), 0U);
        EXPECT_EQ(hasMore, 0);
        EXPECT_EQ(QlixFLVTagIteratorGetNextEntry(tags, &tag), 8U);
        QlixFLVReleaseTagIterator(tags);
    }
}

TEST(TagsTest, TheEndOfAnIteratorHasACodeOfItsOwn) {
    FlvFixture file(flvFile({}));
    file.open();
    for (QlixFLVTagIterator* tags : {file.all(), file.all(1), file.ordered()}) {
        QlixFLVTag* tag = nullptr;
        EXPECT_EQ(QlixFLVTagIteratorGetNextEntry(tags, &tag), 6U);
        EXPECT_EQ(tag, nullptr);
        QlixFLVReleaseTagIterator(tags);
    }
}

TEST(TagsTest, UnknownTypesAreSteppedOverBothWays) {
    const Bytes content = flvFile({flvTag(0, 0, pattern(9, 1)), mp3Frame(5, raw({1})),
                                   flvTag(200, 900, pattern(300, 2)), mp3Frame(31, raw({1})),
                                   flvTag(41, 999, Bytes())});
    EXPECT_THAT(forward(content).times(), ElementsAre(5, 31));
    EXPECT_THAT(backward(content).times(), ElementsAre(31, 5));
}

TEST(TagsTest, OnlyTagsBetweenTheTimesAreGivenOut) {
    FlvFixture file(flvFile({mp3Frame(0, raw({1})), mp3Frame(10, raw({1})), mp3Frame(20, raw({1})),
                             mp3Frame(0xffffffff, raw({1}))}));
    file.open();
    QlixFLVTagIterator* tags = nullptr;
    EXPECT_EQ(QlixFLVReaderGetTags(file.reader, -1, 10, 0, &tags), 0U);
    EXPECT_THAT(drain(tags).times(), ElementsAre(0, 10, -1));
    const std::uint8_t audio = 8;
    EXPECT_EQ(QlixFLVReaderGetTagsByTagTypes(file.reader, 10, 20, 1, &audio, 1, &tags), 0U);
    EXPECT_THAT(drain(tags).times(), ElementsAre(20, 10));
}

TEST(BackwardTagsTest, ComeFromTheLastToTheFirst) {
    const Drained tags = backward(flvFile({onMetaDataTag(1, 1), avcConfig(0), mp3Frame(3, raw({1})),
                                           avcFrame(7, true, pattern(70, 1))}));
    EXPECT_EQ(tags.result, 0U);
    EXPECT_THAT(tags.types(), ElementsAre(9, 8, 9, 18));
    EXPECT_THAT(tags.times(), ElementsAre(7, 3, 0, 0));
}

TEST(BackwardTagsTest, AFileWithoutTagsHasNone) {
    for (const Bytes& content : {flvHeader(), flvHeader() + u32(0)}) {
        const Drained tags = backward(content);
        EXPECT_EQ(tags.result, 0U);
        EXPECT_THAT(tags.tags, IsEmpty());
    }
}

TEST(BackwardTagsTest, ALastSizeWordThatDoesNotFitFailsAtOnce) {
    const Bytes whole = twoTags();
    for (const Bytes& content :
         {whole.cutTo(whole.size() - 1), whole.cutTo(whole.size() - 4), whole + raw({0}),
          whole.patched(whole.size() - 4, u32(0)), whole.patched(whole.size() - 4, u32(10)),
          whole.patched(whole.size() - 4, u32(15)), whole.patched(whole.size() - 4, u32(13)),
          whole.patched(whole.size() - 4, u32(0xffffffff)),
          whole.patched(whole.size() - 4, u32(36)), flvHeader() + u32(0) + fill(3, 0)}) {
        FlvFixture file(content);
        file.open();
        EXPECT_EQ(file.all(1), nullptr);
        EXPECT_EQ(file.result, 9U);
    }
}

TEST(BackwardTagsTest, AnEarlierSizeWordThatDoesNotFitFailsWhereItIsReached) {
    const Drained tags =
        backward(flvFile({mp3Frame(0, raw({1})).claimingTag(12), mp3Frame(26, raw({2}))}));
    EXPECT_EQ(tags.result, 9U);
    EXPECT_THAT(tags.times(), ElementsAre(26));
}

TEST(DocInfoTest, IsTakenFromTheTagsAndNotFromTheFlags) {
    struct Case {
        Bytes content;
        std::uint32_t hasAudio;
        std::uint32_t hasVideo;
    };
    const FlvTag audio = mp3Frame(0, raw({1}));
    const FlvTag video = avcConfig(0);
    for (const Case& c : {Case{flvFile({audio}, 5), 1, 0}, Case{flvFile({video}, 4), 0, 1},
                          Case{flvFile({video, audio}, 0), 1, 1}, Case{flvFile({}, 5), 0, 0},
                          Case{flvFile({flvTag(9, 0, Bytes()), flvTag(8, 0, Bytes())}, 0), 1, 1},
                          Case{flvFile({onMetaDataTag(1, 1), flvTag(40, 0, raw({1}))}, 5), 0, 0}}) {
        const FLVDocInfo info = docInfo(c.content);
        EXPECT_EQ(info.hasAudio, c.hasAudio);
        EXPECT_EQ(info.hasVideo, c.hasVideo);
    }
}

TEST(DocInfoTest, DamageEndsTheWalkWithWhatWasSeen) {
    const FLVDocInfo info =
        docInfo(flvFile({mp3Frame(0, raw({1})), avcConfig(0).claimingBody(0xffffff)}));
    EXPECT_EQ(info.hasAudio, 1U);
    EXPECT_EQ(info.hasVideo, 0U);
}

TEST(DocInfoTest, AStreamThatFailsOnTheWalkIsNoDamage) {
    FlvFixture file(flvFile({mp3Frame(0, pattern(300000, 1)), mp3Frame(26, raw({1}))}));
    file.stream.failingRead = 1;  // the first read brings the first 256 KiB
    ASSERT_EQ(file.open(), 0U);
    FLVDocInfo info{};
    EXPECT_EQ(QlixFLVReaderGetDocInfo(file.reader, &info), 5U);
    EXPECT_EQ(info.hasAudio, 0U);
}

TEST(DocInfoTest, TheWalkStopsOnceBothKindsWereSeen) {
    std::vector<FlvTag> tags{avcConfig(0), aacConfig(0)};
    for (int i = 0; i < 20; ++i) tags.push_back(avcFrame(1, false, pattern(100000, 1)));
    FlvFixture file(flvFile(tags));
    file.open();
    FLVDocInfo info{};
    QlixFLVReaderGetDocInfo(file.reader, &info);
    EXPECT_LE(file.stream.reads, 2);
}

}  // namespace
}  // namespace kz::test
