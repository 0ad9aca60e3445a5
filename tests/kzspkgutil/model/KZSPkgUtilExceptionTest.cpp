#include <gtest/gtest.h>

#include "kzspkgutil/model/KZSPkgUtilException.h"

namespace torvo::kzspkgutil {
namespace {

TEST(KZSPkgUtilExceptionTest, PutsItsCodeInFrontOfTheText) {
    const KZSPkgUtilException failure(4, "DRM metadata generation failed");
    EXPECT_STREQ(failure.what(), "Error (4) - DRM metadata generation failed");
    EXPECT_EQ(failure.code(), 4U);
}

TEST(KZSPkgUtilExceptionTest, ShowsTheCodeAsAnUnsignedNumber) {
    EXPECT_STREQ(KZSPkgUtilException(0xFFFFFFFF, "").what(), "Error (4294967295) - ");
}

TEST(KZSPkgUtilExceptionTest, TakesTheTextAsItIs) {
    EXPECT_STREQ(KZSPkgUtilException(1, "100%s %1% {}").what(), "Error (1) - 100%s %1% {}");
}

TEST(KZSPkgUtilFileExceptionTest, KeepsThePathBesideTheText) {
    const KZSPkgUtilFileException failure(2, "no access", "/in/clip.mp4");
    EXPECT_EQ(failure.path(), "/in/clip.mp4");
    EXPECT_EQ(failure.code(), 2U);
    EXPECT_STREQ(failure.what(), "Error (2) - no access");
}

TEST(NoSupportedTracksExceptionTest, NamesThePathInSingleQuotes) {
    const NoSupportedTracksException failure("a b.mp4");
    EXPECT_STREQ(failure.what(), "Error (3) - No supported tracks in file 'a b.mp4'");
    EXPECT_EQ(failure.code(), 3U);
    EXPECT_EQ(failure.path(), "a b.mp4");
}

TEST(NoSupportedTracksExceptionTest, IsCaughtAsEachOfItsBases) {
    const auto raise = [] { throw NoSupportedTracksException("x"); };
    EXPECT_THROW(raise(), KZSPkgUtilFileException);
    EXPECT_THROW(raise(), KZSPkgUtilException);
    EXPECT_THROW(raise(), kvl::KVLException);
}

}  // namespace
}  // namespace torvo::kzspkgutil
