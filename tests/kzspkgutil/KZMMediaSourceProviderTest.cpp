#include <gtest/gtest.h>

#include "KZMSourceFixture.h"
#include "support/IsoBuilder.h"
#include "support/ThrownCode.h"

namespace torvo::kzspkgutil {
namespace {

using kz::test::box;
using kz::test::codeThrownBy;
using kz::test::text;
using test::Bytes;
using test::kzmFile;
using test::videoTrack;

using KZMMediaSourceProviderTest = test::KZMSourceFixture;

TEST_F(KZMMediaSourceProviderTest, KnowsAFileByItsFirstBox) {
    EXPECT_TRUE(canOpen(box("ftyp", text("isom"))));
    EXPECT_TRUE(canOpen(box("mdat")));
    EXPECT_TRUE(canOpen(box("moov")));
    EXPECT_FALSE(canOpen(box("moof")));
    EXPECT_FALSE(canOpen(box("skip")));
}

TEST_F(KZMMediaSourceProviderTest, RefusesAFileThatStartsWithAFreeBox) {
    EXPECT_FALSE(canOpen(box("free") + kzmFile({videoTrack()})));
}

TEST_F(KZMMediaSourceProviderTest, RefusesFilesThatAreTooShortForABox) {
    EXPECT_FALSE(canOpen(Bytes()));
    EXPECT_FALSE(canOpen(box("ftyp").cutTo(7)));
}

TEST_F(KZMMediaSourceProviderTest, FailsOnAFileThatIsNotThere) {
    EXPECT_EQ(
        codeThrownBy([&] { KZMMediaSourceProvider(true).canOpen(folder_ / "missing", kFlags); }),
        6U);
}

}  // namespace
}  // namespace torvo::kzspkgutil
