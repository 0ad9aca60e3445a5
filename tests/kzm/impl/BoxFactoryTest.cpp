#include <typeinfo>

#include <gtest/gtest.h>

#include "kzm/impl/AfraBox.h"
#include "kzm/impl/BoxFactory.h"
#include "kzm/impl/BoxSupport.h"
#include "kzm/impl/FtypBox.h"
#include "kzm/impl/MdatBox.h"
#include "kzm/impl/MehdBox.h"
#include "kzm/impl/MfhdBox.h"
#include "kzm/impl/MoofBox.h"
#include "kzm/impl/MoovBox.h"
#include "kzm/impl/MvexBox.h"
#include "kzm/impl/NmhdBox.h"
#include "kzm/impl/SmhdBox.h"
#include "kzm/impl/TfhdBox.h"
#include "kzm/impl/TrafBox.h"
#include "kzm/impl/TrexBox.h"
#include "kzm/impl/TrunBox.h"
#include "kzm/impl/UrlBox.h"
#include "kzm/impl/UuidBox.h"
#include "kzm/impl/VmhdBox.h"

namespace qlix::kzm::impl {
namespace {

using namespace kz::test;

constexpr std::uint64_t kAsRead = 212;  // of the boxes below

struct Case {
    const char* code;
    const std::type_info& type;
    std::uint64_t ownSize;   // version 0
    std::uint64_t wideSize;  // version 1
};

TEST(BoxFactoryTest, MakesTheClassOfEachCodeWithItsFixedSize) {
    const Case cases[] = {
        {"afra", typeid(AfraBox), kAsRead, kAsRead},
        {"co64", typeid(Co64Box), kAsRead, kAsRead},
        {"ctts", typeid(CttsBox), kAsRead, kAsRead},
        {"dinf", typeid(DinfBox), 8, 8},
        {"dref", typeid(DrefBox), 16, 16},
        {"edts", typeid(EdtsBox), 8, 8},
        {"elst", typeid(ElstBox), kAsRead, kAsRead},
        {"ftyp", typeid(FtypBox), kAsRead, kAsRead},
        {"hdlr", typeid(HdlrBox), kAsRead, kAsRead},
        {"hint", typeid(HintBox), kAsRead, kAsRead},
        {"mdat", typeid(MdatBox), kAsRead, kAsRead},
        {"mdhd", typeid(MdhdBox), 32, 44},
        {"mdia", typeid(MdiaBox), 8, 8},
        {"mehd", typeid(MehdBox), 16, 20},
        {"mfhd", typeid(MfhdBox), 16, 16},
        {"minf", typeid(MinfBox), 8, 8},
        {"moof", typeid(MoofBox), 8, 8},
        {"moov", typeid(MoovBox), 8, 8},
        {"mvex", typeid(MvexBox), 8, 8},
        {"mvhd", typeid(MvhdBox), 108, 120},
        {"nmhd", typeid(NmhdBox), kAsRead, kAsRead},
        {"sdtp", typeid(SdtpBox), kAsRead, kAsRead},
        {"skip", typeid(SkipBox), kAsRead, kAsRead},
        {"smhd", typeid(SmhdBox), 16, 16},
        {"stbl", typeid(StblBox), 8, 8},
        {"stco", typeid(StcoBox), kAsRead, kAsRead},
        {"stsc", typeid(StscBox), kAsRead, kAsRead},
        {"stsd", typeid(StsdBox), kAsRead, kAsRead},
        {"stss", typeid(StssBox), kAsRead, kAsRead},
        {"stsz", typeid(StszBox), kAsRead, kAsRead},
        {"stts", typeid(SttsBox), kAsRead, kAsRead},
        {"tfhd", typeid(TfhdBox), kAsRead, kAsRead},
        {"tkhd", typeid(TkhdBox), 92, 104},
        {"traf", typeid(TrafBox), 8, 8},
        {"trak", typeid(TrakBox), 8, 8},
        {"tref", typeid(TrefBox), 8, 8},
        {"trex", typeid(TrexBox), 32, 32},
        {"trun", typeid(TrunBox), kAsRead, kAsRead},
        {"url ", typeid(UrlBox), kAsRead, kAsRead},
        {"vmhd", typeid(VmhdBox), 20, 20},
    };
    for (const Case& each : cases) {
        for (const std::uint8_t version : {std::uint8_t{0}, std::uint8_t{1}}) {
            ReadFile file(fullBox(each.code, version, 0, fill(200, 0)));
            const BoxPtr made = file.make();
            const Box& box = *made;
            EXPECT_EQ(typeid(box).name(), each.type.name()) << each.code;
            EXPECT_EQ(made->ownSize(), version == 0 ? each.ownSize : each.wideSize) << each.code;
            EXPECT_EQ(made->size(), made->ownSize()) << each.code;
        }
    }
}

TEST(BoxFactoryTest, MakesPlainBoxesOfOtherCodes) {
    for (const char* code : {"free", "hmhd", "mfra", "mfro", "tfra", "meta", "abst", "????"}) {
        ReadFile file(fullBox(code, 0, 0, fill(200, 0)));
        const BoxPtr made = file.make();
        const Box& box = *made;
        EXPECT_EQ(typeid(box).name(), typeid(Box).name()) << code;
        EXPECT_EQ(made->ownSize(), kAsRead) << code;
    }
}

TEST(BoxFactoryTest, TellsTheXmpBoxByAllSixteenBytes) {
    const Bytes xmp = hex("BE7ACFCB97A942E89C71999491E3AFAC");
    ReadFile file(uuidBox(xmp, fill(4, 0)));
    EXPECT_NE(dynamic_cast<XMPDataBox*>(file.make().get()), nullptr);
    for (std::size_t i = 0; i < 16; ++i) {
        ReadFile other(uuidBox(xmp.patched(i, u8(1)), fill(4, 0)));
        const BoxPtr made = other.make();
        EXPECT_EQ(dynamic_cast<XMPDataBox*>(made.get()), nullptr) << i;
        EXPECT_NE(dynamic_cast<UuidBox*>(made.get()), nullptr) << i;
    }
}

TEST(BoxFactoryTest, AddsALongerHeaderToTheFixedSize) {
    ReadFile large(largeBox("moov", fill(100, 0)));
    EXPECT_EQ(large.make()->ownSize(), 16U);
    ReadFile extended(uuidBox(text("trak") + hex("00110010800000AA00389B71"), fill(100, 0)));
    EXPECT_EQ(extended.make()->ownSize(), 24U);
    ReadFile fields(largeBox("dref", fill(100, 0)));
    EXPECT_EQ(fields.make()->ownSize(), 24U);
}

TEST(BoxFactoryTest, IsOneForTheProcess) {
    EXPECT_EQ(&BoxFactory::standard(), &BoxFactory::standard());
}

}  // namespace
}  // namespace qlix::kzm::impl
