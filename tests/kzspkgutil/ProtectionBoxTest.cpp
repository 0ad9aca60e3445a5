#include <typeinfo>

#include <gtest/gtest.h>

#include "kzspkgutil/ProtectionBox.h"
#include "support/Bytes.h"

namespace torvo::kzspkgutil {
namespace {

using kz::test::Bytes;
using kz::test::difference;
using kz::test::fill;
using kz::test::hex;
using kz::test::hexTable;
using kz::test::text;
using kz::test::u32;

Bytes boxOf(const ProtectionBoxContent& content) {
    const Blob box = makeProtectionBox(content);
    return kz::test::bytesOf(box.data(), box.size());
}

ProtectionBoxContent avcContent() {
    ProtectionBoxContent content;
    content.clearFormat = kzs::fourCc("avc1");
    content.metadataText = "TQ==";
    return content;
}

TEST(ProtectionBoxTest, IsTheWholeTree) {
    EXPECT_EQ(difference(boxOf(avcContent()), hexTable(R"(
        0    0000009173696e66  sinf, 145 bytes
        8    0000000c66726d61  frma
        16   61766331          avc1
        20   000000147363686d  schm
        28   01000000          version 1, flags 0
        32   61646b6d          adkm
        36   00000001          scheme version
        40   0000006973636869  schi
        48   0000006161646b6d  adkm
        56   01000000          version 1
        60   0000004661686472  ahdr
        68   02000000          version 2
        72   0000003a6170726d  aprm
        80   01000000          version 1
        84   0000001561656962  aeib
        92   01000000          version 1
        96   4145532d43424300  AES-CBC with its zero
        104  10                key length
        105  00000019616b6579  akey
        113  01000000          version 1
        117  0000000d666c7873  flxs
        125  54513d3d00        metadata text with its zero
        130  0000000f61646166  adaf
        138  00000000          version 0
        142  800010            selective encryption, no key indicator, IV length
    )")),
              "");
}

TEST(ProtectionBoxTest, OnlyTheHeaderVersionTellsTheTwoKindsApart) {
    ProtectionBoxContent content = avcContent();
    content.ahdrVersion = 3;
    content.secondText = "second";
    EXPECT_EQ(difference(boxOf(content), boxOf(avcContent()).patched(68, hex("03"))), "");
}

TEST(ProtectionBoxTest, SecondTextIsWrittenFromRecordVersionThree) {
    ProtectionBoxContent content = avcContent();
    content.secondText = "2";
    content.recordVersion = 2;
    EXPECT_EQ(boxOf(content).size(), 145U);
    content.recordVersion = 3;
    const Bytes box = boxOf(content);
    EXPECT_EQ(box.cutTo(4), hex("00000093"));
    EXPECT_EQ(box.slice(117, 15), hex("0000000f666c7873 54513d3d00 3200"));
}

TEST(ProtectionBoxTest, RecordVersionOfARunIsOne) {
    EXPECT_EQ(ProtectionBoxContent().recordVersion, 1);
}

TEST(ProtectionBoxTest, FormatFollowsTheHandler) {
    EXPECT_EQ(protectedFormatOf(kzs::fourCc("vide")), kzs::fourCc("encv"));
    EXPECT_EQ(protectedFormatOf(kzs::fourCc("soun")), kzs::fourCc("enca"));
    EXPECT_EQ(protectedFormatOf(kzs::fourCc("meta")), kzs::fourCc("encr"));
    EXPECT_EQ(protectedFormatOf(0), kzs::fourCc("encr"));
}

Bytes box(const char* type, const Bytes& content) {
    return u32(8 + content.size()) + text(type) + content;
}

const Bytes kFrma = box("frma", text("avc1"));
const Bytes kSchm = box("schm", u32(0x01000000) + text("adkm") + u32(1));
const Bytes kSchi = box("schi", {});

bool isPlainlyRefused(const Bytes& data) {
    try {
        splitProtectedDescription(data);
    } catch (const std::exception& failure) {
        return typeid(failure) == typeid(std::exception);
    }
    return false;
}

TEST(SplitProtectedDescriptionTest, SplitsAtTheProtectionBox) {
    const Bytes avcC = box("avcC", fill(5, 1));
    const Bytes sinf = box("sinf", kFrma + kSchm + kSchi);
    const SplitDescription split = splitProtectedDescription(avcC + sinf);
    EXPECT_EQ(split.clearFormat, kzs::fourCc("avc1"));
    EXPECT_EQ(split.extraData, Blob(avcC));
    EXPECT_EQ(split.protectionData, Blob(sinf));
}

TEST(SplitProtectedDescriptionTest, ReadsWhatIsWritten) {
    const SplitDescription split = splitProtectedDescription(makeProtectionBox(avcContent()));
    EXPECT_EQ(split.clearFormat, kzs::fourCc("avc1"));
    EXPECT_TRUE(split.extraData.empty());
    EXPECT_EQ(split.protectionData, makeProtectionBox(avcContent()));
}

TEST(SplitProtectedDescriptionTest, RefusesAnyDeviation) {
    const Bytes good = box("sinf", kFrma + kSchm + kSchi);
    const Bytes cases[] = {
        Bytes{},
        box("avcC", {}),
        box("sinf", {}),
        box("sinf", kFrma),
        box("sinf", kFrma + kSchm),
        box("sinf", kSchm + kFrma + kSchi),
        box("sinf", kFrma + kSchi + kSchm),
        box("sinf", box("frma", text("avc")) + kSchm + kSchi),
        box("sinf", kFrma + box("schm", u32(0) + text("cenc") + u32(1)) + kSchi),
        box("sinf", kFrma + box("schm", u32(0) + text("adkm") + u32(2)) + kSchi),
        box("sinf", kFrma + box("schm", u32(0) + text("adkm")) + kSchi),
        u32(7) + text("avcC") + good,
    };
    for (const Bytes& data : cases) EXPECT_TRUE(isPlainlyRefused(data)) << data.str();
    for (std::size_t size = 0; size < good.size(); ++size) {
        EXPECT_TRUE(isPlainlyRefused(good.cutTo(size))) << size;
    }
    EXPECT_FALSE(isPlainlyRefused(good));
}

}  // namespace
}  // namespace torvo::kzspkgutil
