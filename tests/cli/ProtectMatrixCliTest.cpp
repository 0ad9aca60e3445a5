#include "cli/ProtectFixture.h"

namespace kz::test {
namespace {

/// What a run is told to encrypt.
struct Variant {
    bool video;
    bool audio;
    int level;
    std::uint32_t clearUntilMs;

    std::vector<std::string> arguments() const {
        return {std::string("--encrypt-video=") + (video ? "true" : "false"),
                std::string("--encrypt-audio=") + (audio ? "true" : "false"),
                "--video-encrypt-level=" + std::to_string(level),
                "--ms-unencrypted=" + std::to_string(clearUntilMs)};
    }
    std::string name() const {
        std::string joined;
        for (const std::string& argument : arguments()) joined += argument + " ";
        return joined;
    }
};

constexpr std::uint32_t kBeyondTheEnd = 4000000000;

/// Each kind alone and both, each level, each start; the level means nothing without video, and
/// nothing but the start means anything beyond the end.
constexpr Variant kVariants[] = {
    {true, true, 0, 0},     {true, true, 1, 0},
    {true, true, 2, 0},     {true, true, 0, 1500},
    {true, true, 1, 1500},  {true, true, 2, 1500},
    {true, false, 0, 0},    {true, false, 1, 0},
    {true, false, 2, 0},    {true, false, 0, 1500},
    {true, false, 1, 1500}, {true, false, 2, 1500},
    {false, true, 2, 0},    {false, true, 2, 1500},
    {false, false, 2, 0},   {true, true, 2, kBeyondTheEnd},
};

/// The NAL headers of a sample; none when lengths of 4 bytes don't lead exactly to its end.
std::vector<int> nalHeaders(const Bytes& sample) {
    std::vector<int> headers;
    std::size_t at = 0;
    while (at + 4 < sample.size()) {
        std::size_t size = 0;
        for (const std::uint8_t byte : sample.slice(at, 4)) size = size * 256 + byte;
        if (size == 0) return {};
        headers.push_back(sample[at + 4]);
        at += 4 + size;
    }
    return at == sample.size() ? headers : std::vector<int>();
}

bool isWantedAtLevel(const Bytes& sample, int level) {
    const std::vector<int> headers = nalHeaders(sample);
    if (level == 2 || headers.empty()) return true;
    for (const int header : headers) {
        const int type = header & 0x1F;
        if (type < 1 || type > 5) continue;
        if (level == 0 ? type == 5 : (header & 0x60) != 0) return true;
    }
    return false;
}

bool isWanted(const Bytes& clear, const Variant& variant) {
    if (timeOf(clear) < variant.clearUntilMs) return false;
    if (clear[0] == 9) return variant.video && isWantedAtLevel(sampleOf(clear), variant.level);
    return clear[0] != 8 || variant.audio;
}

class ProtectMatrixTest : public ProtectFixture,
                          public ::testing::WithParamInterface<const char*> {};

TEST_P(ProtectMatrixTest, DecryptsToTheSamplesOfTheClearRunWhateverIsEncrypted) {
    const std::vector<Bytes> clear = clearTags(GetParam());
    ASSERT_FALSE(clear.empty());
    for (const Variant& variant : kVariants) {
        SCOPED_TRACE(variant.name());
        const std::vector<Bytes> tags = protectedTags(GetParam(), variant.arguments());
        expectSame(tags, clear);
        expectEncrypted(tags, clear, [&](const Bytes& tag) { return isWanted(tag, variant); });
        if (HasFailure()) return;
    }
    EXPECT_FALSE(usedIvs.empty());
}

std::string clipName(const ::testing::TestParamInfo<const char*>& clip) {
    std::string name = clip.param;
    for (char& character : name) {
        if (character == '.') character = '_';
    }
    return name;
}

INSTANTIATE_TEST_SUITE_P(
    Flv, ProtectMatrixTest,
    ::testing::Values("aac_edge_12s.flv", "aac_only.flv", "audio_5min.flv", "audio_late_500ms.flv",
                      "eos_11s.flv", "eos_20s.flv", "h263_mp3.flv", "h264_aac_20s.flv",
                      "h264_aac_bframes.flv", "h264_only.flv", "long_gop_9s.flv",
                      "long_gop_9s_noaudio.flv", "mbr_120k.flv", "mbr_240k.flv", "mbr_60k.flv",
                      "mp3_only.flv", "nellymoser_22k.flv", "nellymoser_8k_h263.flv",
                      "scene_cuts.flv", "short_3s.flv", "speex_only.flv", "video_late_700ms.flv"),
    clipName);

INSTANTIATE_TEST_SUITE_P(Mp4, ProtectMatrixTest,
                         ::testing::Values("aac_only.m4a", "ac3.mp4", "eac3.mp4", "empty_edit.mp4",
                                           "frag_base_offset.mp4", "frag_base_offset_dur.mp4",
                                           "frag_dbm.mp4", "frag_many_per_gop.mp4",
                                           "frag_many_per_gop_dur.mp4", "h264_aac_bframes.mp4",
                                           "h264_aac_faststart.mp4", "long_gop_9s.mp4", "mp3.mp4",
                                           "mpeg4p2.mp4", "text_track.mp4", "ts90000.mp4"),
                         clipName);

}  // namespace
}  // namespace kz::test
