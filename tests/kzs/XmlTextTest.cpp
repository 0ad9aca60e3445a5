#include <stdexcept>

#include <gtest/gtest.h>

#include "kzs/XmlText.h"

using torvo::kzs::requireXmlText;

namespace {

std::string complaintAbout(const std::string& text) {
    try {
        requireXmlText(text);
    } catch (const std::exception& failure) {
        return failure.what();
    }
    return "";
}

}  // namespace

TEST(XmlTextTest, TakesUtf8OfAnyLength) {
    for (const char* text : {"", "clip", "Tom & Jerry's \"<best>\"", "\xc3\xa9", "\xe6\x97\xa5",
                             "\xf0\x9f\x8e\xac", "\xc2\xa0", "\xef\xbf\xbd", "\xf4\x8f\xbf\xbf"}) {
        EXPECT_NO_THROW(requireXmlText(text)) << text;
    }
}

TEST(XmlTextTest, RefusesControlCharacters) {
    for (char c = 1; c < ' '; ++c) {
        EXPECT_THROW(requireXmlText(std::string("a") + c), std::invalid_argument)
            << static_cast<int>(c);
    }
    EXPECT_THROW(requireXmlText(std::string(1, '\0')), std::invalid_argument);
    EXPECT_THROW(requireXmlText("\x7f"), std::invalid_argument);
}

TEST(XmlTextTest, RefusesBytesThatAreNotUtf8) {
    for (const char* text :
         {"\xff", "\x80", "\xe9t\xe9", "\xc3", "a\xe6\x97", "\xc0\xaf", "\xe0\x80\xaf",
          "\xed\xa0\x80", "\xf4\x90\x80\x80", "\xf5\x80\x80\x80"}) {
        EXPECT_THROW(requireXmlText(text), std::invalid_argument) << text;
    }
}

TEST(XmlTextTest, RefusesCodePointsThatXmlCannotHold) {
    EXPECT_THROW(requireXmlText("\xef\xbf\xbe"), std::invalid_argument);
    EXPECT_THROW(requireXmlText("\xef\xbf\xbf"), std::invalid_argument);
}

TEST(XmlTextTest, ShowsTheTextOnOneLineWithoutWhatIsWrong) {
    EXPECT_EQ(complaintAbout("a\nb\xff\xc3\xa9"),
              "\"a?b?\xc3\xa9\" is not UTF-8 or holds control characters");
}
