#include <cmath>

#include <gtest/gtest.h>

#include "kzs/base/Clock.h"
#include "kzspkgutil/WriterFields.h"

namespace torvo::kzspkgutil {
namespace {

TEST(CurrentDateTest, IsThatOfTheClockInUtc) {
    kzs::setClockForTests(1077936061);  // 2004-02-28 02:41:01
    const qlix::kzm::DateRecord date = currentDate();
    kzs::setClockForTests(std::nullopt);
    EXPECT_EQ(date.year, 2004);
    EXPECT_EQ(date.month, 2);
    EXPECT_EQ(date.day, 28);
    EXPECT_EQ(date.hour, 2);
    EXPECT_EQ(date.minute, 41);
    EXPECT_EQ(date.second, 1);
}

TEST(TruncatedLow32Test, CutsTheFractionAndTheHighBits) {
    EXPECT_EQ(truncatedLow32(0.999), 0U);
    EXPECT_EQ(truncatedLow32(41.5), 41U);
    EXPECT_EQ(truncatedLow32(4294967295.5), 0xFFFFFFFFU);
    EXPECT_EQ(truncatedLow32(4294967297.0), 1U);
}

TEST(TruncatedLow32Test, IsZeroForWhatNoIntegerHolds) {
    EXPECT_EQ(truncatedLow32(18446744073709551616.0), 0U);
    EXPECT_EQ(truncatedLow32(-1.0), 0U);
    EXPECT_EQ(truncatedLow32(std::nan("")), 0U);
    EXPECT_EQ(truncatedLow32(HUGE_VAL), 0U);
}

TEST(SetLanguageTest, CopiesThreeLettersAtMost) {
    const auto languageOf = [](const std::string& language) {
        qlix::kzm::KZMTrackInfo info;
        setLanguage(info, language);
        return std::string(info.language, sizeof info.language);
    };
    EXPECT_EQ(languageOf("deu"), std::string("deu\0", 4));
    EXPECT_EQ(languageOf("engl"), std::string("eng\0", 4));
    EXPECT_EQ(languageOf("e"), std::string("e\0\0\0", 4));
    EXPECT_EQ(languageOf(""), std::string("\0\0\0\0", 4));
}

}  // namespace
}  // namespace torvo::kzspkgutil
