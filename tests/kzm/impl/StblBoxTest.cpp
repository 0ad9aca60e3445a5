#include <gtest/gtest.h>

#include "kzm/impl/BoxSupport.h"
#include "kzm/impl/HeaderFixtures.h"
#include "kzm/impl/MoovBox.h"
#include "kzm/impl/StblBox.h"

namespace qlix::kzm::impl {
namespace {

using namespace kz::test;

TrackSettings settingsOf(std::uint32_t handler) {
    TrackSettings out;
    out.handler = handler;
    out.trackId = 1;
    out.trackFlags = 7;
    out.timescale = 1000;
    out.movieTimescale = 600;
    out.duration = 10000;
    out.language = {'u', 'n', 'd', 0};
    return out;
}

TEST(StblBoxTest, WritesItsTablesInOneOrder) {
    for (const bool hasDependencies : {false, true}) {
        WriteFile file;
        TrackSettings settings = settingsOf(fourCc("vide"));
        settings.hasDependencyTable = hasDependencies;
        StblBox box(file.context(), settings);
        const Bytes tables = fullBox("stsd", 0, 0, u32(0)) + fullBox("stts", 0, 0, u32(0)) +
                             fullBox("stsc", 0, 0, u32(0)) + fullBox("stsz", 0, 0, u64(0)) +
                             fullBox("co64", 0, 0, u32(0)) + fullBox("ctts", 0, 0, u32(0)) +
                             fullBox("stss", 0, 0, u32(0));
        const Bytes last = hasDependencies ? Bytes(fullBox("sdtp", 0, 0)) : Bytes();
        EXPECT_EQ(difference(written(file, box), kz::test::box("stbl", tables, last)), "");
    }
}

TEST(StblBoxTest, KnowsItsTablesWhenRead) {
    ReadFile file(track("vide", {}));
    const auto trak = readAs<TrakBox>(file);
    const StblBox* stbl = trak->stbl();
    ASSERT_NE(stbl, nullptr);
    EXPECT_NE(stbl->stsd(), nullptr);
    EXPECT_NE(stbl->stts(), nullptr);
    EXPECT_NE(stbl->stsc(), nullptr);
    EXPECT_NE(stbl->stsz(), nullptr);
    EXPECT_NE(stbl->stco(), nullptr);
    EXPECT_EQ(stbl->co64(), nullptr);
    EXPECT_EQ(stbl->ctts(), nullptr);
    EXPECT_EQ(stbl->stss(), nullptr);
    EXPECT_EQ(stbl->sdtp(), nullptr);
}

TableSample sample(std::uint64_t time, std::uint64_t offset, std::uint32_t size, std::uint32_t kind,
                   std::uint32_t description = 1) {
    TableSample out;
    out.decodeTime = time;
    out.offset = offset;
    out.size = size;
    out.kind = kind;
    out.compositionOffset = static_cast<std::uint32_t>(time / 100);
    out.descriptionIndex = description;
    return out;
}

TEST(StblBoxTest, FillsItsTablesSampleBySample) {
    WriteFile file;
    TrackSettings settings = settingsOf(fourCc("vide"));
    settings.sampleTableCapacity = 6;
    settings.hasDependencyTable = true;
    settings.lastSampleDelta = 2;
    StblBox box(file.context(), settings);
    box.write();
    const std::uint64_t size = box.size();

    box.addSample(sample(0, 1000, 10, 0x2001));
    box.addSample(sample(40, 1010, 20, 0x1000));  // goes on with the chunk
    box.addSample(sample(80, 1030, 30, 0, 2));    // another description
    box.addSample(sample(120, 2000, 40, 1, 2));   // elsewhere
    box.write();
    box.addSample(sample(170, 2040, 50, 0, 2));  // the chunk was closed by writing
    box.write();
    EXPECT_EQ(box.size(), size);
    EXPECT_EQ(file.bytes().size(), size);

    ReadFile again(file.bytes());
    const auto read = readAs<StblBox>(again);
    const auto rowsOf = [&file](std::uint64_t offset, std::size_t count) {
        return file.bytes().slice(static_cast<std::size_t>(offset), count);
    };
    EXPECT_EQ(rowsOf(read->stts()->position(), 40), u32(72) + text("stts") + u32(0) + u32(3) +
                                                        u32(3) + u32(40) + u32(1) + u32(50) +
                                                        u32(1) + u32(2));
    EXPECT_EQ(rowsOf(read->stsc()->position(), 64),
              u32(88) + text("stsc") + u32(0) + u32(4) + u32(1) + u32(2) + u32(1) + u32(2) +
                  u32(1) + u32(2) + u32(3) + u32(1) + u32(2) + u32(4) + u32(1) + u32(2));
    EXPECT_EQ(rowsOf(read->stsz()->position(), 40), u32(44) + text("stsz") + u32(0) + u32(0) +
                                                        u32(5) + u32(10) + u32(20) + u32(30) +
                                                        u32(40) + u32(50));
    EXPECT_EQ(
        rowsOf(read->co64()->position(), 48),
        u32(64) + text("co64") + u32(0) + u32(4) + u64(1000) + u64(1030) + u64(2000) + u64(2040));
    EXPECT_EQ(rowsOf(read->ctts()->position(), 32),
              u32(64) + text("ctts") + u32(0) + u32(2) + u32(3) + u32(0) + u32(2) + u32(1));
    EXPECT_EQ(rowsOf(read->stss()->position(), 24),
              u32(40) + text("stss") + u32(0) + u32(2) + u32(1) + u32(4));
    EXPECT_EQ(rowsOf(read->sdtp()->position(), 18),
              u32(18) + text("sdtp") + u32(0) + raw({0x20, 0x10, 0, 0, 0, 0}));
}

TEST(StblBoxTest, RefusesMoreSamplesThanItHasRoomFor) {
    WriteFile file;
    TrackSettings settings = settingsOf(fourCc("soun"));
    settings.sampleTableCapacity = 1;
    StblBox box(file.context(), settings);
    box.write();
    box.addSample(sample(0, 0, 1, 0));
    EXPECT_EQ(codeThrownBy([&] { box.addSample(sample(1, 1, 1, 0)); }), 17U);

    StblBox none(file.context(), settingsOf(fourCc("soun")));
    EXPECT_EQ(codeThrownBy([&] { none.addSample(sample(0, 0, 1, 0)); }), 17U);
}

TEST(StblBoxTest, KeepsToItsRoomWhenEverySampleIsAChunkAndARun) {
    constexpr std::uint32_t kCount = 40;
    WriteFile file;
    TrackSettings settings = settingsOf(fourCc("vide"));
    settings.sampleTableCapacity = kCount;
    settings.hasDependencyTable = true;
    StblBox box(file.context(), settings);
    box.write();
    std::uint64_t time = 0;
    for (std::uint32_t i = 0; i < kCount; ++i) {
        TableSample next = sample(time, 100 * (kCount - i), 7, 0x0101);
        next.compositionOffset = i;
        box.addSample(next);
        time += i + 1;
    }
    box.write();
    EXPECT_EQ(file.bytes().size(), box.size());

    ReadFile again(file.bytes());
    const auto read = readAs<StblBox>(again);
    ASSERT_EQ(read->stts()->rows().size(), kCount);
    for (std::uint32_t i = 0; i + 1 < kCount; ++i) {
        EXPECT_EQ(read->stts()->rows()[i].delta, i + 1);
    }
    EXPECT_EQ(read->stts()->rows()[kCount - 1].delta, 1U);
    EXPECT_EQ(read->stsc()->rows().size(), kCount);
    EXPECT_EQ(read->co64()->offsets().size(), kCount);
    EXPECT_EQ(read->co64()->offsets()[kCount - 1], 100U);
    EXPECT_EQ(read->ctts()->rows().size(), kCount);
    EXPECT_EQ(read->stss()->sampleNumbers().size(), kCount);
    EXPECT_EQ(read->stsz()->sizes().size(), kCount);
    EXPECT_EQ(read->sdtp()->bytes()[kCount - 1], 1);
}

TEST(TrakBoxTest, BuildsTheWholeTreeOfAHintTrack) {
    WriteFile file;
    TrackSettings settings = settingsOf(fourCc("hint"));
    settings.hintedTrackIds = {1, 2};
    settings.trackId = 3;
    settings.handlerName = std::string("Hints\0", 6);
    settings.descriptionSlots = 1;
    settings.descriptionSpace = 4;
    TrakBox box(file.context(), settings);

    // 10000 ticks of 1000 a second are 6000 of 600 a second.
    const Bytes matrix = u32(0x10000) + fill(12, 0) + u32(0x10000) + fill(12, 0) + u32(0x40000000);
    const Bytes tkhd = fullBox("tkhd", 1, 7, u64(0), u64(0), u32(3), u32(0), u64(6000), fill(16, 0),
                               matrix, u64(0));
    const Bytes tref = kz::test::box("tref", kz::test::box("hint", u32(1), u32(2)));
    const Bytes mdhd =
        fullBox("mdhd", 1, 0, u64(0), u64(0), u32(1000), u64(10000), u16(0x55C4), u16(0));
    const Bytes hdlr =
        fullBox("hdlr", 0, 0, u32(0), text("hint"), fill(12, 0), text("Hints"), u8(0));
    const Bytes dinf = kz::test::box("dinf", fullBox("dref", 0, 0, u32(1), fullBox("url ", 0, 1)));
    const Bytes stbl =
        kz::test::box("stbl", fullBox("stsd", 0, 0, u32(0), kz::test::box("skip", fill(12, 0))),
                      fullBox("stts", 0, 0, u32(0)), fullBox("stsc", 0, 0, u32(0)),
                      fullBox("stsz", 0, 0, u64(0)), fullBox("co64", 0, 0, u32(0)),
                      fullBox("ctts", 0, 0, u32(0)), fullBox("stss", 0, 0, u32(0)));
    const Bytes minf = kz::test::box("minf", fullBox("hmhd", 0, 0, fill(16, 0)), dinf, stbl);
    const Bytes edts = kz::test::box("edts", fullBox("elst", 1, 0, fill(24, 0)));
    EXPECT_EQ(difference(
                  written(file, box),
                  kz::test::box("trak", tkhd, tref, kz::test::box("mdia", mdhd, hdlr, minf), edts)),
              "");
    EXPECT_EQ(file.memory.writes, 1U);
    EXPECT_EQ(box.handler(), fourCc("hint"));
    EXPECT_EQ(box.trackId(), 3U);
}

TEST(TrakBoxTest, TakesTheMediaHeaderOfItsHandler) {
    const std::pair<const char*, std::uint32_t> cases[] = {{"vide", fourCc("vmhd")},
                                                           {"soun", fourCc("smhd")},
                                                           {"hint", fourCc("hmhd")},
                                                           {"meta", fourCc("nmhd")},
                                                           {"text", fourCc("nmhd")}};
    for (const auto& each : cases) {
        const std::uint32_t handler =
            torvo::kzs::loadU32(reinterpret_cast<const std::uint8_t*>(each.first));
        TrakBox box({}, settingsOf(handler));
        EXPECT_EQ(box.mdia()->minf()->child(0)->type(), each.second) << each.first;
        EXPECT_EQ(box.tref() != nullptr, handler == fourCc("hint"));
    }
}

TEST(TrakBoxTest, RefusesATimescaleOfZero) {
    TrackSettings settings = settingsOf(fourCc("vide"));
    settings.timescale = 0;
    EXPECT_EQ(codeThrownBy([&] { TrakBox box({}, settings); }), 10U);
}

TEST(TrakBoxTest, KnowsItsHandlerOnceItsFieldsAreRead) {
    ReadFile file(track("soun", {}, box("edts", fullBox("elst", 0, 0, u32(0)))));
    const BoxPtr made = file.make();
    made->loadTree(BoxFactory::standard());
    const auto& trak = dynamic_cast<TrakBox&>(*made);
    EXPECT_EQ(trak.handler(), 0U);
    made->parse(nullptr, true);
    EXPECT_EQ(trak.handler(), fourCc("soun"));
    EXPECT_EQ(trak.trackId(), 1U);
    EXPECT_EQ(trak.mdhd()->media().timescale, 1000U);
    EXPECT_NE(trak.elst(), nullptr);
}

TEST(MoovBoxTest, ListsItsTracksInFileOrder) {
    ReadFile file(movie(track("vide", {}) + track("soun", {})));
    const auto moov = readAs<MoovBox>(file);
    ASSERT_EQ(moov->tracks().size(), 2U);
    EXPECT_EQ(moov->tracks()[0]->handler(), fourCc("vide"));
    EXPECT_EQ(moov->tracks()[1]->handler(), fourCc("soun"));
    EXPECT_NE(moov->mvhd(), nullptr);
    EXPECT_FALSE(moov->isFragmented());

    ReadFile fragmented(movie(track("vide", {}) + box("mvex")));
    EXPECT_TRUE(readAs<MoovBox>(fragmented)->isFragmented());
}

TEST(MoovBoxTest, KeepsItsSizeWhenDurationsEditsAndDescriptionsCome) {
    WriteFile file;
    MovieHeader header;
    header.timescale = 600;
    MoovBox moov(file.context());
    moov.addChild(makeBox<MvhdBox>(file.context(), header));
    TrackSettings settings = settingsOf(fourCc("vide"));
    settings.maxEdits = 3;
    settings.descriptionSlots = 1;
    settings.descriptionSpace = 50;
    moov.addChild(makeBox<TrakBox>(file.context(), settings));
    moov.setPosition(32);
    moov.write();
    const Bytes first = file.bytes();
    EXPECT_EQ(first.size(), 32 + moov.size());

    TrakBox& trak = *moov.tracks()[0];
    VideoSampleDescriptor description;
    description.handler = fourCc("vide");
    description.format = fourCc("avc1");
    description.data.assign(20, 7);
    trak.stsd()->addDescription(description);
    trak.tkhd()->setDuration(99);
    trak.mdhd()->setDuration(98);
    trak.elst()->addEdit(97, 0);
    moov.mvhd()->setDuration(96);
    moov.write();
    EXPECT_EQ(file.bytes().size(), first.size());

    ReadFile again(file.bytes().slice(32, first.size() - 32));
    const auto read = readAs<MoovBox>(again);
    EXPECT_EQ(read->mvhd()->movie().duration, 96U);
    EXPECT_EQ(read->tracks()[0]->tkhd()->track().duration, 99U);
    EXPECT_EQ(read->tracks()[0]->mdhd()->media().duration, 98U);
    EXPECT_EQ(read->tracks()[0]->elst()->edits().at(0).duration, 97U);
    EXPECT_EQ(read->tracks()[0]->stsd()->entries().size(), 1U);
    EXPECT_TRUE(again.warnings.empty());
}

}  // namespace
}  // namespace qlix::kzm::impl
