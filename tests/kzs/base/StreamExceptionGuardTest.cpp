#include <sstream>

#include <gtest/gtest.h>

#include "kzs/base/BoxFunctions.h"
#include "kzs/base/StreamExceptionGuard.h"

namespace torvo::kzs {
namespace {

TEST(StreamExceptionGuardTest, RestoresTheSettingAfterAFailure) {
    std::istringstream stream("ab");
    EXPECT_THROW(
        {
            const StreamExceptionGuard guard(stream, std::ios::eofbit | std::ios::failbit);
            readU32(stream);
        },
        std::ios_base::failure);
    EXPECT_EQ(stream.exceptions(), std::ios::goodbit);
}

TEST(StreamExceptionGuardTest, ClearsWhatWouldMakeTheOldSettingThrow) {
    std::istringstream stream("ab");
    stream.exceptions(std::ios::failbit);
    {
        const StreamExceptionGuard guard(stream, std::ios::goodbit);
        readU32(stream);
        EXPECT_TRUE(stream.fail());
    }
    EXPECT_EQ(stream.exceptions(), std::ios::failbit);
    EXPECT_FALSE(stream.fail());
}

TEST(StreamExceptionGuardTest, RestoresTheSettingOfAStreamThatHasFailedBefore) {
    std::ostringstream stream;
    stream.setstate(std::ios::badbit);
    EXPECT_THROW(StreamExceptionGuard(stream, std::ios::badbit), std::ios_base::failure);
    EXPECT_EQ(stream.exceptions(), std::ios::goodbit);
}

}  // namespace
}  // namespace torvo::kzs
