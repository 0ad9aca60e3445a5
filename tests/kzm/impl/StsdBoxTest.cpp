#include <gtest/gtest.h>

#include "kzm/impl/BoxSupport.h"
#include "kzm/impl/HeaderFixtures.h"
#include "kzm/impl/StsdBox.h"
#include "kzm/impl/TrakBox.h"

namespace qlix::kzm::impl {
namespace {

using namespace kz::test;

TrackSettings roomFor(std::uint32_t handler, std::uint32_t space, std::uint32_t slots = 1) {
    TrackSettings out;
    out.handler = handler;
    out.descriptionSpace = space;
    out.descriptionSlots = slots;
    return out;
}

/// A generic description of an entry of 16 + `dataSize` bytes.
SampleDescriptor& plain(SampleDescriptor& out, std::size_t dataSize) {
    out.handler = fourCc("meta");
    out.format = fourCc("amf0");
    out.data.assign(dataSize, 0xDA);
    return out;
}

IsoBox plainEntry(std::size_t dataSize) {
    return box("amf0", fill(6, 0), u16(1), fill(dataSize, 0xDA));
}

TEST(StsdBoxTest, SetsRoomAsideByHandler) {
    const std::pair<std::uint32_t, std::uint64_t> cases[] = {
        {fourCc("soun"), 36}, {fourCc("vide"), 86}, {fourCc("hint"), 16}, {fourCc("meta"), 16}};
    for (const auto& each : cases) {
        EXPECT_EQ(StsdBox({}, roomFor(each.first, 100)).size(), 16 + 100 + each.second);
        EXPECT_EQ(StsdBox({}, roomFor(each.first, 100, 3)).size(), 16 + 3 * (100 + each.second));
        EXPECT_EQ(StsdBox({}, roomFor(each.first, 100, 0)).size(), 16U);
    }
}

TEST(StsdBoxTest, TakesEachDescriptionOffTheFrontOfItsFiller) {
    WriteFile file;
    StsdBox box(file.context(), roomFor(fourCc("meta"), 40, 2));
    box.write();
    EXPECT_EQ(file.bytes(), fullBox("stsd", 0, 0, u32(0), kz::test::box("skip", fill(104, 0))));

    SampleDescriptor first;
    EXPECT_EQ(box.addDescription(plain(first, 10)), 1U);
    box.write();
    EXPECT_EQ(file.bytes(),
              fullBox("stsd", 0, 0, u32(1), plainEntry(10), kz::test::box("skip", fill(78, 0))));

    SampleDescriptor second;
    EXPECT_EQ(box.addDescription(plain(second, 20)), 2U);
    box.write();
    EXPECT_EQ(file.bytes(), fullBox("stsd", 0, 0, u32(2), plainEntry(10), plainEntry(20),
                                    kz::test::box("skip", fill(42, 0))));
    EXPECT_EQ(box.size(), 128U);
    EXPECT_EQ(box.description(2)->data.size(), 20U);
    EXPECT_EQ(box.description(2)->index, 2U);
    EXPECT_EQ(box.largestDataSize(), 20U);
}

TEST(StsdBoxTest, LeavesTooFewBytesForAFillerZero) {
    for (std::size_t left = 0; left <= 8; ++left) {
        for (const bool isWrittenBefore : {false, true}) {
            WriteFile file;
            StsdBox box(file.context(), roomFor(fourCc("meta"), 20));
            if (isWrittenBefore) box.write();
            SampleDescriptor description;
            box.addDescription(plain(description, 20 - left));
            box.write();
            const Bytes rest = left == 8 ? Bytes(kz::test::box("skip")) : fill(left, 0);
            EXPECT_EQ(file.bytes(), fullBox("stsd", 0, 0, u32(1), plainEntry(20 - left), rest))
                << left;
            EXPECT_EQ(box.size(), 52U);
        }
    }
}

TEST(StsdBoxTest, RefusesADescriptionBeyondItsRoom) {
    StsdBox box({}, roomFor(fourCc("meta"), 20));
    SampleDescriptor description;
    EXPECT_EQ(codeThrownBy([&] { box.addDescription(plain(description, 21)); }), 15U);
    EXPECT_EQ(box.entryCount(), 0U);
    EXPECT_EQ(box.addDescription(plain(description, 20)), 1U);
    EXPECT_EQ(codeThrownBy([&] { box.addDescription(plain(description, 0)); }), 15U);
    EXPECT_EQ(box.entryCount(), 1U);
}

TEST(StsdBoxTest, StoresEverySpellingOfAvcAsAvc1) {
    const std::pair<std::uint32_t, std::uint32_t> cases[] = {
        {fourCc("H264"), fourCc("avc1")}, {fourCc("h264"), fourCc("avc1")},
        {fourCc("avc1"), fourCc("avc1")}, {fourCc("VP6F"), fourCc("VP6F")},
        {fourCc("VP6A"), fourCc("VP6A")}, {fourCc("H263"), fourCc("H263")},
        {fourCc("mp4v"), fourCc("mp4v")}};
    for (const auto& each : cases) {
        StsdBox box({}, roomFor(fourCc("vide"), 0));
        VideoSampleDescriptor description;
        description.handler = fourCc("vide");
        description.format = each.first;
        box.addDescription(description);
        EXPECT_EQ(box.entries()[0]->type(), each.second);
        EXPECT_EQ(box.description(1)->format, each.second);
    }
    StsdBox sound({}, roomFor(fourCc("soun"), 0));
    AudioSampleDescriptor audio;
    audio.handler = fourCc("soun");
    audio.format = fourCc("H264");
    sound.addDescription(audio);
    EXPECT_EQ(sound.description(1)->format, fourCc("H264"));
}

TEST(StsdBoxTest, RefusesASecondRtmpDescription) {
    StsdBox box({}, roomFor(fourCc("hint"), 100, 3));
    RtmpSampleDescriptor description;
    description.handler = fourCc("hint");
    description.format = fourCc("rtmp");
    EXPECT_EQ(box.addDescription(description), 1U);
    EXPECT_EQ(codeThrownBy([&] { box.addDescription(description); }), 1542U);
    description.format = fourCc("amf0");
    EXPECT_EQ(box.addDescription(description), 2U);
}

/// The entries of a track that is read from a whole `trak`.
struct ReadTrack {
    ReadTrack(std::string_view handler, const Bytes& stsd) : file(make(handler, stsd)) {
        trak = readAs<TrakBox>(file);
    }

    static Bytes make(std::string_view handler, const Bytes& stsd) {
        TrackTables tables;
        tables.stsd = stsd;
        return track(handler, tables);
    }

    const StsdBox& stsd() const { return *trak->stsd(); }

    ReadFile file;
    BoxPtrOf<TrakBox> trak;
};

TEST(StsdBoxTest, ReadsEachEntryOnceByTheHandler) {
    const Bytes entry = box("abcd", fill(6, 0), u16(3), text("data"));
    ReadTrack read("meta", u32(2) + entry + entry);
    ASSERT_EQ(read.stsd().entries().size(), 2U);
    EXPECT_EQ(read.stsd().entryCount(), 2U);
    EXPECT_EQ(read.stsd().handler(), fourCc("meta"));
    const SampleDescriptor* second = read.stsd().description(2);
    EXPECT_EQ(second->format, fourCc("abcd"));
    EXPECT_EQ(second->handler, fourCc("meta"));
    EXPECT_EQ(second->index, 2U);
    EXPECT_EQ(std::string(second->data.begin(), second->data.end()), "data");
    EXPECT_EQ(read.stsd().entries()[1]->dataReferenceIndex(), 3);
    EXPECT_EQ(read.stsd().description(0), nullptr);
    EXPECT_EQ(read.stsd().description(3), nullptr);
    EXPECT_TRUE(read.file.warnings.empty());
}

TEST(StsdBoxTest, ReadsItsCountOnlyAsLongAsTheHandlerIsUnknown) {
    ReadFile file(fullBox("stsd", 0, 0, u32(2), fill(30, 0xFF)));
    const auto read = readAs<StsdBox>(file);
    EXPECT_EQ(read->entryCount(), 2U);
    EXPECT_EQ(read->childCount(), 0U);
    EXPECT_EQ(read->ownSize(), 16U);
    EXPECT_TRUE(file.warnings.empty());
}

TEST(StsdBoxTest, MakesTheEntryClassOfItsHandler) {
    const Bytes one = u32(1) + box("xxxx", fill(100, 0));
    ReadTrack video("vide", one);
    EXPECT_NE(dynamic_cast<const VideoSampleDescriptor*>(video.stsd().description(1)), nullptr);
    ReadTrack sound("soun", one);
    EXPECT_NE(dynamic_cast<const AudioSampleDescriptor*>(sound.stsd().description(1)), nullptr);
    ReadTrack hint("hint", one);
    EXPECT_NE(dynamic_cast<const RtmpSampleDescriptor*>(hint.stsd().description(1)), nullptr);
    ReadTrack other("text", one);
    const SampleDescriptor& plainOne = *other.stsd().description(1);
    EXPECT_EQ(typeid(plainOne).name(), typeid(SampleDescriptor).name());
}

TEST(StsdBoxTest, StepsOverFreeBoxesBetweenTheEntries) {
    const Bytes entry = box("abcd", fill(8, 0));
    ReadTrack read(
        "meta", u32(4) + entry + box("free", fill(3, 0)) + box("skip") + box("efgh", fill(8, 0)));
    ASSERT_EQ(read.stsd().entries().size(), 2U);
    EXPECT_EQ(read.stsd().description(2)->format, fourCc("efgh"));
    EXPECT_EQ(read.stsd().description(2)->index, 2U);
    // The two count in the loop, so the count is above what was found.
    EXPECT_EQ(read.file.warnings, std::vector<std::uint32_t>{3076});
    EXPECT_EQ(read.stsd().entryCount(), 2U);
}

TEST(StsdBoxTest, AFreeBoxTakesAnEntryOffTheCount) {
    ReadTrack read("meta",
                   u32(2) + box("abcd", fill(8, 0)) + box("free") + box("efgh", fill(8, 0)));
    ASSERT_EQ(read.stsd().entries().size(), 1U);
    EXPECT_EQ(read.stsd().description(1)->format, fourCc("abcd"));
    EXPECT_EQ(read.file.warnings, std::vector<std::uint32_t>{3076});
}

TEST(StsdBoxTest, CorrectsACountAboveTheEntriesFound) {
    ReadTrack read("meta", u32(9) + box("abcd", fill(8, 0)));
    EXPECT_EQ(read.stsd().entryCount(), 1U);
    EXPECT_EQ(read.file.warnings, std::vector<std::uint32_t>{3076});
}

TEST(StsdBoxTest, StopsAtAnEntryThatEndsBeyondTheBox) {
    ReadTrack read("meta", u32(2) + box("abcd", fill(8, 0)) + box("efgh", fill(8, 0)).claiming(17));
    EXPECT_EQ(read.stsd().entryCount(), 1U);
    EXPECT_EQ(read.file.warnings, std::vector<std::uint32_t>{3076});
}

TEST(StsdBoxTest, ToleratesZerosBehindTheLastEntry) {
    ReadTrack read("meta", u32(1) + box("abcd", fill(8, 0)) + fill(7, 0));
    EXPECT_EQ(read.stsd().entryCount(), 1U);
    EXPECT_TRUE(read.file.warnings.empty());
}

TEST(StsdBoxTest, RefusesACountAboveTheLimit) {
    for (const std::uint32_t count : {100000001U, 0xFFFFFFFFU}) {
        ReadFile file(fullBox("stsd", 0, 0, u32(count)));
        EXPECT_EQ(codeThrownBy([&] { file.read(); }), 31U);
    }
}

TEST(StsdBoxTest, ReadsBackWhatItWrote) {
    WriteFile file;
    StsdBox box(file.context(), roomFor(fourCc("meta"), 10));
    SampleDescriptor description;
    box.addDescription(plain(description, 5));
    box.write();
    ReadTrack read("meta", file.bytes().slice(12, file.bytes().size() - 12));
    EXPECT_EQ(read.stsd().entryCount(), 1U);
    EXPECT_EQ(read.stsd().description(1)->data, description.data);
    EXPECT_TRUE(read.file.warnings.empty());
}

}  // namespace
}  // namespace qlix::kzm::impl
