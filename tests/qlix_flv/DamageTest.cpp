#include <random>

#include <gtest/gtest.h>

#include "qlix_flv/FlvFixture.h"
#include "support/AmfBuilder.h"
#include "support/FlvBuilder.h"

namespace kz::test {
namespace {

constexpr std::uint64_t kMostMemory = 2 * 1024 * 1024;

void walkScript(QlixFLVScriptData* data, int depth) {
    QlixFLVScriptDataString* name = nullptr;
    if (QlixFLVScriptDataGetName(data, &name) == 0) QlixFLVReleaseScriptDataString(name);
    double number = 0;
    QlixFLVScriptDataGetNumber(data, &number);
    QlixFLVScriptDataIterator* members = nullptr;
    if (depth > 3 || QlixFLVScriptDataGetIterator(data, &members) != 0) return;
    std::int32_t hasMore = 0;
    while (QlixFLVScriptDataIteratorHasMoreEntries(members, &hasMore) == 0 && hasMore == 1) {
        QlixFLVScriptData* member = nullptr;
        if (QlixFLVScriptDataIteratorGetNextEntry(members, &member) != 0) break;
        walkScript(member, depth + 1);
        QlixFLVReleaseScriptData(member);
    }
    QlixFLVReleaseScriptDataIterator(members);
}

/// All that the library can be asked about a file. Returns the tags in the order of the file.
std::size_t walkAll(QlixFLVTagIterator* tags) {
    std::size_t count = 0;
    std::int32_t hasMore = 0;
    while (QlixFLVTagIteratorHasMoreEntries(tags, &hasMore) == 0 && hasMore == 1) {
        QlixFLVTag* tag = nullptr;
        if (QlixFLVTagIteratorGetNextEntry(tags, &tag) != 0) break;
        ++count;
        EXPECT_EQ(copied(tag).size(), seen(tag).dataSize + 11U);
        FLVVideoInfo video{};
        FLVAudioInfo audio{};
        QlixFLVTagGetVideoInfo(tag, &video);
        QlixFLVTagGetAudioInfo(tag, &audio);
        QlixFLVScriptData* script = nullptr;
        if (QlixFLVTagGetScriptData(tag, &script) == 0) {
            walkScript(script, 0);
            QlixFLVReleaseScriptData(script);
        }
        QlixFLVReleaseTag(tag);
    }
    QlixFLVReleaseTagIterator(tags);
    return count;
}

void survives(const Bytes& content) {
    FlvFixture file(content);
    if (file.open() != 0) return;
    FLVDocInfo info{};
    EXPECT_EQ(QlixFLVReaderGetDocInfo(file.reader, &info), 0U);
    const std::size_t mostTags = content.size() / 11;
    EXPECT_LE(walkAll(file.all()), mostTags);
    if (QlixFLVTagIterator* backward = file.all(1)) {
        EXPECT_LE(walkAll(backward), mostTags);
    }
    EXPECT_LE(walkAll(file.ordered()), mostTags);
    QlixFLVCloseReader(file.reader);
    file.reader = nullptr;
    EXPECT_EQ(file.allocator.liveBytes, 0U);
    EXPECT_EQ(file.stream.references, 0);
    EXPECT_LE(file.allocator.peakBytes, kMostMemory);
}

Bytes sound() {
    const Bytes metadata =
        amfString("onMetaData") +
        amfEcmaArray({{"width", amfNumber(320)},
                      {"keyframes", amfObject({{"times", amfStrictArray({amfNumber(0)})}})},
                      {"who", amfLongString("nobody")},
                      {"when", amfDate(0)}});
    return flvFile({scriptTag(0, metadata), avcConfig(0), aacConfig(0),
                    avcFrame(0, true, pattern(40, 1)), aacFrame(0, pattern(9, 2)),
                    avcFrame(40, false, pattern(20, 3)), aacFrame(23, pattern(9, 4)), avcEnd(40)});
}

TEST(DamageTest, AFileCutAtAnyByteIsReadSafely) {
    const Bytes content = sound();
    for (std::size_t size = 0; size <= content.size(); ++size) {
        SCOPED_TRACE("cut to " + std::to_string(size));
        survives(content.cutTo(size));
    }
}

TEST(DamageTest, AnyByteMayLie) {
    const Bytes content = sound();
    for (std::size_t at = 0; at < content.size(); ++at) {
        SCOPED_TRACE("at " + std::to_string(at));
        for (int value : {0, 1, 0x7f, 0x80, 0xff}) survives(content.patched(at, raw({value})));
    }
}

TEST(DamageTest, RandomChangesAreReadSafely) {
    const Bytes content = sound();
    for (unsigned seed = 1; seed <= 1500; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        std::mt19937 random(seed);
        Bytes changed = content;
        for (unsigned i = 0; i <= random() % 12; ++i) {
            changed[random() % changed.size()] = static_cast<std::uint8_t>(random());
        }
        survives(changed);
    }
}

TEST(DamageTest, ASizeBeyondTheFileTakesNoMemory) {
    FlvFixture file(flvFile({scriptTag(0, amfString("x")).claimingBody(0xffffff)}));
    file.open();
    EXPECT_EQ(drain(file.all()).result, 8U);
    EXPECT_LE(file.allocator.peakBytes, 10000U);
}

}  // namespace
}  // namespace kz::test
