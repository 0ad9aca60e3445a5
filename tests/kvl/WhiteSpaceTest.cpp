#include <gtest/gtest.h>

#include "kvl/WhiteSpace.h"

namespace kvl {
namespace {

TEST(WhiteSpaceTest, CountsSixCharactersAndNoOther) {
    EXPECT_TRUE(isWhiteSpace(" \t\n\v\f\r"));
    EXPECT_TRUE(isWhiteSpace(""));
    EXPECT_FALSE(isWhiteSpace(" x "));
    // A blank that doesn't break, in UTF-8, and a zero byte.
    EXPECT_FALSE(isWhiteSpace("\xC2\xA0"));
    EXPECT_FALSE(isWhiteSpace(std::string_view("\0", 1)));
}

TEST(WhiteSpaceTest, IsTrimmedAtTheEndsAlone) {
    EXPECT_EQ(trimmed("\r\n\ta b\v\f "), "a b");
    EXPECT_EQ(trimmed("ab"), "ab");
    EXPECT_EQ(trimmed("a"), "a");
}

TEST(WhiteSpaceTest, AloneIsTrimmedToNothing) {
    EXPECT_EQ(trimmed(" \n "), "");
    EXPECT_EQ(trimmed(""), "");
}

}  // namespace
}  // namespace kvl
