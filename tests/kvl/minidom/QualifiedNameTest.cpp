#include <gtest/gtest.h>

#include "kvl/minidom/QualifiedName.h"

using namespace kvl::minidom;

TEST(QualifiedNameTest, HasNoPrefixWithoutAColon) {
    EXPECT_EQ(splitName("media").prefix, "");
    EXPECT_EQ(splitName("media").localName, "media");
}

TEST(QualifiedNameTest, IsSplitAtTheLastOfTwoColons) {
    EXPECT_EQ(splitName("a:b:c").prefix, "a:b");
    EXPECT_EQ(splitName("a:b:c").localName, "c");
}

TEST(QualifiedNameTest, IsJoinedWithAColonOnlyBehindAPrefix) {
    EXPECT_EQ(joinName("p", "n"), "p:n");
    EXPECT_EQ(joinName("", "n"), "n");
}
