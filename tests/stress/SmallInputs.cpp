#include "stress/SmallInputs.h"

#include <sstream>
#include <vector>

#include "kzs/AfraIndex.h"
#include "kzs/AfraWriter.h"
#include "kzs/BootstrapBuilder.h"
#include "kzs/BootstrapWriter.h"
#include "kzs/Manifest.h"
#include "kzs/base/Clock.h"
#include "support/AmfBuilder.h"
#include "support/FlvBuilder.h"
#include "support/IsoBuilder.h"

namespace kz::stress {
namespace {

using test::box;
using test::Bytes;
using test::fill;
using test::fullBox;
using test::IsoBox;
using test::raw;
using test::text;
using test::u16;
using test::u24;
using test::u32;
using test::u8;

constexpr std::uint32_t kSampleCount = 4;
constexpr std::uint32_t kSampleMs = 500;
constexpr std::uint32_t kLengthMs = kSampleCount * kSampleMs;
constexpr std::uint32_t kVideoSize = 12;
constexpr std::uint32_t kAudioSize = 6;
constexpr std::int64_t kEpoch = 1'700'000'000;

Bytes picture(unsigned number) {
    const Bytes unit = raw({number % 2 == 0 ? 0x65 : 0x41}) + test::pattern(kVideoSize - 5, number);
    return u32(unit.size()) + unit;
}

Bytes sound(unsigned number) { return test::pattern(kAudioSize, number + 50); }

Bytes matrix() { return u32(0x10000) + fill(12, 0) + u32(0x10000) + fill(12, 0) + u32(0x40000000); }

Bytes movieHeader(std::uint32_t durationMs) {
    return fullBox("mvhd", 0, 0, u32(1), u32(2), u32(1000), u32(durationMs), u32(0x10000),
                   u16(0x100), fill(10, 0), matrix(), fill(24, 0), u32(3));
}

struct TrackKind {
    std::uint32_t id;
    bool isVideo;
};
constexpr TrackKind kVideo = {1, true};
constexpr TrackKind kAudio = {2, false};

Bytes trackHeader(const TrackKind& kind, std::uint32_t durationMs) {
    return fullBox("tkhd", 0, 7, u32(1), u32(2), u32(kind.id), u32(0), u32(durationMs), fill(12, 0),
                   u16(kind.isVideo ? 0 : 0x100), u16(0), matrix(),
                   u32(kind.isVideo ? 320u << 16 : 0), u32(kind.isVideo ? 240u << 16 : 0));
}

Bytes handler(const TrackKind& kind) {
    return fullBox("hdlr", 0, 0, u32(0), text(kind.isVideo ? "vide" : "soun"), fill(12, 0),
                   text("h"), u8(0));
}

Bytes videoEntry() {
    return box("avc1", fill(6, 0), u16(1), fill(16, 0), u16(320), u16(240), u32(0x480000),
               u32(0x480000), u32(0), u16(1), fill(32, 0), u16(24), u16(0xFFFF),
               box("avcC", test::avcRecord()));
}

Bytes audioEntry() {
    const Bytes config = raw({5, 2, 0x12, 0x10});
    const Bytes decoder = raw({4, 17, 0x40, 0x15}) + u24(0) + u32(0) + u32(0) + config;
    const Bytes stream = raw({3, 25}) + u16(2) + u8(0) + decoder + raw({6, 1, 2});
    return box("mp4a", fill(6, 0), u16(1), fill(8, 0), u16(2), u16(16), fill(4, 0),
               u32(44100u << 16), fullBox("esds", 0, 0, stream));
}

Bytes description(const TrackKind& kind) {
    return fullBox("stsd", 0, 0, u32(1), kind.isVideo ? videoEntry() : audioEntry());
}

/// Tables of four samples in two chunks of two; the second chunk stands behind the other track's.
Bytes sampleTables(const TrackKind& kind, std::uint32_t firstChunk, std::uint32_t secondChunk) {
    Bytes tables = description(kind) + fullBox("stts", 0, 0, u32(1), u32(4), u32(kSampleMs)) +
                   fullBox("stsc", 0, 0, u32(1), u32(1), u32(2), u32(1)) +
                   fullBox("stco", 0, 0, u32(2), u32(firstChunk), u32(secondChunk));
    if (!kind.isVideo) return tables + fullBox("stsz", 0, 0, u32(kAudioSize), u32(kSampleCount));
    tables += fullBox("stsz", 0, 0, u32(0), u32(kSampleCount), u32(kVideoSize), u32(kVideoSize),
                      u32(kVideoSize), u32(kVideoSize));
    tables += fullBox("stss", 0, 0, u32(2), u32(1), u32(3));
    return tables + fullBox("ctts", 0, 0, u32(2), u32(2), u32(40), u32(2), u32(0));
}

Bytes emptyTables(const TrackKind& kind) {
    return description(kind) + fullBox("stts", 0, 0, u32(0)) + fullBox("stsc", 0, 0, u32(0)) +
           fullBox("stsz", 0, 0, u32(0), u32(0)) + fullBox("stco", 0, 0, u32(0));
}

Bytes track(const TrackKind& kind, std::uint32_t durationMs, const Bytes& tables,
            const Bytes& edits) {
    const Bytes header =
        fullBox("mdhd", 0, 0, u32(1), u32(2), u32(1000), u32(durationMs), u16(0x55C4), u16(0));
    const Bytes kindHeader =
        kind.isVideo ? fullBox("vmhd", 0, 1, fill(8, 0)) : fullBox("smhd", 0, 0, fill(4, 0));
    const Bytes data = box("dinf", fullBox("dref", 0, 0, u32(1), fullBox("url ", 0, 1)));
    return box(
        "trak", trackHeader(kind, durationMs), edits,
        box("mdia", header, handler(kind), box("minf", kindHeader, data, box("stbl", tables))));
}

Bytes fileType() { return box("ftyp", text("isom"), u32(0x200), text("isom"), text("avc1")); }

Bytes movieBox(std::uint32_t mediaStart, const Bytes& soundEdits) {
    const std::uint32_t chunk = 2 * (kVideoSize + kAudioSize);
    const Bytes video = sampleTables(kVideo, mediaStart, mediaStart + chunk);
    const Bytes audio =
        sampleTables(kAudio, mediaStart + 2 * kVideoSize, mediaStart + chunk + 2 * kVideoSize);
    return box("moov", movieHeader(kLengthMs), track(kVideo, kLengthMs, video, {}),
               track(kAudio, kLengthMs, audio, soundEdits));
}

Bytes movieWith(const Bytes& soundEdits) {
    Bytes media;
    for (const unsigned first : {0u, 2u}) {
        media += picture(first) + picture(first + 1) + sound(first) + sound(first + 1);
    }
    const std::size_t before = fileType().size() + movieBox(0, soundEdits).size() + 8;
    return fileType() + movieBox(static_cast<std::uint32_t>(before), soundEdits) +
           box("mdat", media);
}

/// A fragment of two samples a track; offsets count from its own start.
Bytes movieFragment(std::uint32_t number) {
    constexpr std::uint32_t kDefaultBaseIsMoof = 0x20000;
    const std::uint32_t first = (number - 1) * 2;
    const auto part = [&](const TrackKind& kind, std::uint32_t offset) {
        const Bytes start = fullBox("tfdt", 0, 0, u32(first * kSampleMs));
        const Bytes run =
            kind.isVideo
                ? fullBox("trun", 0, 0x305, u32(2), u32(offset), u32(0x02000000), u32(kSampleMs),
                          u32(kVideoSize), u32(kSampleMs), u32(kVideoSize))
                : fullBox("trun", 0, 0x201, u32(2), u32(offset), u32(kAudioSize), u32(kAudioSize));
        return box("traf", fullBox("tfhd", 0, kDefaultBaseIsMoof, u32(kind.id)), start, run);
    };
    const auto header = [&](std::uint32_t size) {
        return box("moof", fullBox("mfhd", 0, 0, u32(number)), part(kVideo, size + 8),
                   part(kAudio, size + 8 + 2 * kVideoSize));
    };
    const Bytes media = picture(first) + picture(first + 1) + sound(first) + sound(first + 1);
    return header(static_cast<std::uint32_t>(header(0).size())) + box("mdat", media);
}

torvo::kzs::AfraEntry indexEntry(std::uint32_t number) {
    torvo::kzs::AfraEntry entry;
    entry.time = {(number - 1) * 1000ull, 1000};
    entry.segment = number;
    entry.fragment = number;
    entry.afraOffset = 900;
    return entry;
}

void addFragments(torvo::kzs::BootstrapBuilder& builder) {
    builder.addFragment(1, 1, {0, 1000}, 1000);
    builder.addDiscontinuity(1, 2, {1000, 1000});
    builder.addFragment(2, 3, {2000, 1000}, 800);
    builder.markEnd();
}

}  // namespace

Bytes smallFlv() {
    std::vector<test::FlvTag> tags = {test::onMetaDataTag(320, 240), test::avcConfig(0),
                                      test::aacConfig(0)};
    for (unsigned number = 0; number < kSampleCount; ++number) {
        const std::uint32_t time = number * kSampleMs;
        tags.push_back(test::avcFrame(time, number % 2 == 0, picture(number)));
        tags.push_back(test::aacFrame(time, sound(number)));
    }
    tags.push_back(test::avcEnd(kLengthMs));
    return test::flvFile(tags);
}

Bytes smallMovie() { return movieWith({}); }

Bytes smallMovieWithEdits() {
    return movieWith(box("edts", fullBox("elst", 0, 0, u32(2), u32(250), u32(0xFFFFFFFF),
                                         u32(0x10000), u32(kLengthMs), u32(0), u32(0x10000))));
}

Bytes smallFragmentedMovie(bool withDuration) {
    const auto defaults = [](const TrackKind& kind) {
        const std::uint32_t notSync = kind.isVideo ? 0x01010000 : 0;
        return fullBox("trex", 0, 0, u32(kind.id), u32(1), u32(kSampleMs), u32(0), u32(notSync));
    };
    const Bytes length = withDuration ? Bytes(fullBox("mehd", 0, 0, u32(kLengthMs))) : Bytes();
    return fileType() +
           box("moov", movieHeader(0), track(kVideo, 0, emptyTables(kVideo), {}),
               track(kAudio, 0, emptyTables(kAudio), {}),
               box("mvex", length, defaults(kVideo), defaults(kAudio))) +
           movieFragment(1) + movieFragment(2);
}

Bytes smallBootstrap() {
    torvo::kzs::BootstrapBuilder builder(100, 40, 1000);
    addFragments(builder);
    builder.bootstrap().movieIdentifier = "small";
    builder.bootstrap().servers = {"a"};
    builder.bootstrap().qualities = {"q"};
    const std::vector<std::uint8_t> bytes =
        torvo::kzs::serialiseBootstrap(builder.bootstrap(), false);
    return Bytes(bytes.begin(), bytes.end());
}

Bytes smallIndex() {
    torvo::kzs::AfraIndex index;
    index.localEntries.push_back(indexEntry(1));
    index.globalEntries = {indexEntry(1), indexEntry(2)};
    std::vector<std::uint8_t> bytes;
    torvo::kzs::serialiseAfra(index, bytes);
    return Bytes(bytes.begin(), bytes.end());
}

std::string smallManifest() {
    torvo::kzs::setClockForTests(kEpoch);
    torvo::kzs::Manifest manifest(1000, 100, 40, 1000, "small", "", "recorded", 2.0);
    torvo::kzs::Rendition& rendition = manifest.addMedia("small", "small", 300);
    addFragments(rendition.bootstrapBuilder);
    rendition.drmMetadata = {1, 2, 3};
    rendition.drmContentId = "film";
    const Bytes record = test::amfString("onMetaData") + test::amfEcmaArray({});
    rendition.metadata.assign(record.begin(), record.end());
    manifest.commit();
    std::ostringstream out;
    manifest.write(out);
    return out.str();
}

std::string smallSettings() {
    return "<?xml version=\"1.0\"?>\n<settings>\n"
           "  <fragment-duration>1</fragment-duration>\n"
           "  <external-bootstrap>true</external-bootstrap>\n"
           "  <encrypt-audio>false</encrypt-audio>\n"
           "  <content-id>a&amp;b</content-id>\n</settings>\n";
}

}  // namespace kz::stress
