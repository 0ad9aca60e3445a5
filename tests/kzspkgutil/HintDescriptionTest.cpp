#include <gtest/gtest.h>

#include "kzspkgutil/HintDescription.h"
#include "support/Bytes.h"

namespace torvo::kzspkgutil {
namespace {

using kz::test::Bytes;

Bytes dataWith(std::optional<std::uint32_t> timeOrigin) {
    const Blob data = makeHintDescriptionData(timeOrigin);
    return kz::test::bytesOf(data.data(), data.size());
}

TEST(HintDescriptionTest, IsOneEntryOfTheValue4) {
    EXPECT_EQ(dataWith(std::nullopt), kz::test::hexTable(R"(
        0   00000010    size
        4   616d6870    'amhp'
        8   00000000    version, flags
        12  01          entries
        13  01          id
        14  00          flag bits
        15  04          value
    )"));
}

TEST(HintDescriptionTest, HasATimeOriginBehindTheEntriesWhenAsked) {
    EXPECT_EQ(dataWith(0x01020304).slice(16, 12), kz::test::hexTable(R"(
        0   0000000c    size
        4   616d746f    'amto'
        8   01020304    origin
    )"));
}

}  // namespace
}  // namespace torvo::kzspkgutil
