#include <gtest/gtest.h>

#include "kzm/impl/BoxSupport.h"
#include "kzm/impl/KZMAudioSampleEntry.h"
#include "kzm/impl/KZMRtmpSampleEntry.h"
#include "kzm/impl/KZMVideoSampleEntry.h"

namespace qlix::kzm::impl {
namespace {

using namespace kz::test;

VideoSampleDescriptor videoFields(std::uint32_t format) {
    VideoSampleDescriptor out;
    out.handler = fourCc("vide");
    out.format = format;
    out.width = 640;
    out.height = 360;
    out.horizontalResolution = 72.0F;
    out.verticalResolution = 36.5F;
    out.frameCount = 1;
    out.depth = 24;
    out.data = {0xC0, 0xDE};
    return out;
}

const char* const kAvcEntry = R"(
    0   00000058          size 88
    4   61766331          'avc1'
    8   000000000000      reserved
    14  0001              data reference index
    16  00000000000000000000000000000000  reserved
    32  0280              width 640
    34  0168              height 360
    36  00480000          horizontal resolution 72
    40  00248000          vertical resolution 36.5
    44  00000000          reserved
    48  0001              frame count
    50  0a                length of the name
    51  41564320436f64696e67  "AVC Coding"
    61  000000000000000000000000000000000000000000  rest of 32 bytes
    82  0018              depth 24
    84  ffff              pre-defined
    86  c0de              codec data
)";

TEST(SampleEntryTest, WritesAVideoEntry) {
    WriteFile file;
    KZMVideoSampleEntry entry(file.context(), videoFields(fourCc("avc1")));
    EXPECT_EQ(difference(written(file, entry), hexTable(kAvcEntry)), "");
}

TEST(SampleEntryTest, NamesTheCompressorByFormat) {
    const std::pair<std::uint32_t, Bytes> cases[] = {
        {fourCc("H264"), u8(10) + text("AVC Coding") + fill(21, 0)},
        {fourCc("h264"), u8(10) + text("AVC Coding") + fill(21, 0)},
        {fourCc("VP6A"), u8(10) + text("VP6 Coding") + fill(21, 0)},
        {fourCc("VP6F"), u8(10) + text("VP6 Coding") + fill(21, 0)},
        {fourCc("H263"), fill(32, 0)},
    };
    for (const auto& each : cases) {
        WriteFile file;
        KZMVideoSampleEntry entry(file.context(), videoFields(each.first));
        EXPECT_EQ(written(file, entry).slice(50, 32), each.second);
    }
}

template <class Entry>
BoxPtrOf<Entry> readEntry(ReadFile& file) {
    const auto header = readBoxHeader(file.stream, nullptr);
    auto entry = makeBox<Entry>(file.context(), header.value());
    entry->parse(nullptr, true);
    return entry;
}

TEST(SampleEntryTest, ReadsAVideoEntry) {
    ReadFile file(hexTable(kAvcEntry));
    const auto entry = readEntry<KZMVideoSampleEntry>(file);
    const auto& video = dynamic_cast<const VideoSampleDescriptor&>(entry->descriptor());
    EXPECT_EQ(entry->dataReferenceIndex(), 1);
    EXPECT_EQ(video.format, fourCc("avc1"));
    EXPECT_EQ(video.width, 640U);
    EXPECT_EQ(video.height, 360U);
    EXPECT_EQ(video.horizontalResolution, 72.0F);
    EXPECT_EQ(video.verticalResolution, 36.5F);
    EXPECT_EQ(video.frameCount, 1U);
    EXPECT_EQ(video.depth, 24U);
    EXPECT_EQ(video.data, (std::vector<std::uint8_t>{0xC0, 0xDE}));
}

TEST(SampleEntryTest, GivesZerosForWhatAShortVideoEntryLacks) {
    const Bytes whole = hexTable(kAvcEntry);
    for (std::size_t cut = 8; cut < 86; ++cut) {
        ReadFile file(whole.cutTo(cut).patched(0, u32(cut)));
        const auto entry = readEntry<KZMVideoSampleEntry>(file);
        const auto& video = dynamic_cast<const VideoSampleDescriptor&>(entry->descriptor());
        EXPECT_EQ(video.width, cut >= 34 ? 640U : cut == 33 ? 0x200U : 0U) << cut;
        EXPECT_EQ(video.height, cut >= 36 ? 360U : cut == 35 ? 0x100U : 0U) << cut;
        EXPECT_EQ(video.depth, cut >= 84 ? 24U : 0U) << cut;
        EXPECT_TRUE(video.data.empty()) << cut;
    }
}

TEST(SampleEntryTest, WritesAndReadsAnAudioEntry) {
    AudioSampleDescriptor audio;
    audio.handler = fourCc("soun");
    audio.format = fourCc("mp4a");
    audio.sampleRate = 44100.0F;
    audio.channelCount = 2;
    audio.sampleSize = 16;
    audio.data = {0xC0, 0xDE};
    WriteFile file;
    KZMAudioSampleEntry entry(file.context(), audio);
    EXPECT_EQ(written(file, entry), hexTable(R"(
        0   00000026          size 38
        4   6d703461          'mp4a'
        8   000000000000      reserved
        14  0001              data reference index
        16  0000000000000000  reserved
        24  0002              channels
        26  0010              sample size
        28  00000000          reserved
        32  ac440000          sample rate 44100
        36  c0de              codec data
    )"));

    ReadFile again(file.bytes());
    const auto read = readEntry<KZMAudioSampleEntry>(again);
    const auto& got = dynamic_cast<const AudioSampleDescriptor&>(read->descriptor());
    EXPECT_EQ(got.sampleRate, 44100.0F);
    EXPECT_EQ(got.channelCount, 2);
    EXPECT_EQ(got.sampleSize, 16);
    EXPECT_EQ(got.data, audio.data);

    for (std::size_t cut = 8; cut < 36; ++cut) {
        ReadFile shorter(file.bytes().cutTo(cut).patched(0, u32(cut)));
        const auto short1 = readEntry<KZMAudioSampleEntry>(shorter);
        const auto& fields = dynamic_cast<const AudioSampleDescriptor&>(short1->descriptor());
        EXPECT_EQ(fields.channelCount, cut >= 26 ? 2 : 0) << cut;
        EXPECT_TRUE(fields.data.empty()) << cut;
    }
}

TEST(SampleEntryTest, WritesAndReadsAnRtmpEntry) {
    RtmpSampleDescriptor rtmp;
    rtmp.handler = fourCc("hint");
    rtmp.format = fourCc("rtmp");
    rtmp.hintTrackVersion = 1;
    rtmp.highestCompatibleVersion = 2;
    rtmp.maxPacketSize = 0x1234;
    rtmp.data = {0xC0, 0xDE};
    WriteFile file;
    KZMRtmpSampleEntry entry(file.context(), rtmp);
    EXPECT_EQ(written(file, entry), hexTable(R"(
        0   00000018      size 24
        4   72746d70      'rtmp'
        8   000000000000  reserved
        14  0001          data reference index
        16  0001          hint track version
        18  0002          highest compatible version
        20  1234          largest packet
        22  c0de          codec data
    )"));

    ReadFile again(file.bytes());
    const auto read = readEntry<KZMRtmpSampleEntry>(again);
    const auto& got = dynamic_cast<const RtmpSampleDescriptor&>(read->descriptor());
    EXPECT_EQ(got.hintTrackVersion, 1);
    EXPECT_EQ(got.highestCompatibleVersion, 2);
    EXPECT_EQ(got.maxPacketSize, 0x1234U);
    EXPECT_EQ(got.data, rtmp.data);
}

TEST(SampleEntryTest, WritesAGenericEntry) {
    SampleDescriptor generic(fourCc("meta"), fourCc("amf0"));
    generic.data = {1, 2, 3};
    WriteFile file;
    KZMSampleEntry entry(file.context(), generic);
    EXPECT_EQ(written(file, entry), box("amf0", fill(6, 0), u16(1), raw({1, 2, 3})));
}

TEST(SampleDescriptorTest, IsCopiedOutByKind) {
    RtmpSampleDescriptor hint;
    hint.handler = fourCc("hint");
    hint.format = fourCc("rtmp");
    hint.maxPacketSize = 7;
    EXPECT_EQ(dynamic_cast<RtmpSampleDescriptor&>(*hint.copyOut()).maxPacketSize, 7U);

    hint.format = fourCc("amf0");
    hint.data = {1, 2};
    const auto base = hint.copyOut();
    EXPECT_EQ(dynamic_cast<RtmpSampleDescriptor*>(base.get()), nullptr);
    EXPECT_EQ(base->format, fourCc("amf0"));
    EXPECT_EQ(base->data, hint.data);
    EXPECT_EQ(base->recordSize, 16U);

    VideoSampleDescriptor video = videoFields(fourCc("avc1"));
    const auto videoCopy = video.copyOut();
    EXPECT_EQ(dynamic_cast<VideoSampleDescriptor&>(*videoCopy).height, 360U);
    EXPECT_EQ(videoCopy->recordSize, 28U);
    video.handler = fourCc("meta");
    EXPECT_EQ(dynamic_cast<VideoSampleDescriptor*>(video.copyOut().get()), nullptr);

    AudioSampleDescriptor audio;
    audio.handler = fourCc("soun");
    audio.channelCount = 6;
    const auto audioCopy = audio.copyOut();
    EXPECT_EQ(dynamic_cast<AudioSampleDescriptor&>(*audioCopy).channelCount, 6);
    EXPECT_EQ(audioCopy->recordSize, 12U);
}

}  // namespace
}  // namespace qlix::kzm::impl
