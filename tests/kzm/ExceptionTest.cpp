#include <new>
#include <stdexcept>

#include <gtest/gtest.h>

#include "kzm/Exception.h"
#include "kzm/WarningHandler.h"

namespace qlix::kzm {
namespace {

template <class Failure>
std::uint32_t numberWhenThrown(const Failure& failure) {
    try {
        throw failure;
    } catch (...) {
        return numberOfCurrentException();
    }
}

TEST(ExceptionTest, CarriesTheNumberAndNoTextOfItsOwn) {
    try {
        raise(ErrorCode::boxTooShort);
        FAIL();
    } catch (const Exception& failure) {
        EXPECT_EQ(failure.code(), 27U);
        EXPECT_TRUE(failure.is(ErrorCode::boxTooShort));
        EXPECT_STREQ(failure.what(), std::exception().what());
    }
}

TEST(ExceptionTest, TurnsEveryKindOfFailureIntoANumber) {
    EXPECT_EQ(numberWhenThrown(Exception(1280)), 1280U);
    EXPECT_EQ(numberWhenThrown(std::bad_alloc()), 18U);
    EXPECT_EQ(numberWhenThrown(std::runtime_error("x")), 19U);
    EXPECT_EQ(numberWhenThrown(7), 1U);
}

TEST(ErrorCodeTest, KnowsWhichCodesConcernOneCallOnly) {
    for (std::uint32_t number : {0U, 8U, 10U, 11U, 15U, 20U, 32U, 33U, 1030U, 1280U, 1285U, 1290U,
                                 1536U, 1542U, 2048U, 2053U, 3072U}) {
        EXPECT_TRUE(leavesWriterUsable(number)) << number;
    }
    for (std::uint32_t number :
         {1U,    5U,    7U,    9U,    12U,   16U,   18U,   21U,   27U,   48U,  1024U,
          1029U, 1031U, 1033U, 1279U, 1291U, 1535U, 1543U, 2047U, 2054U, 3073U}) {
        EXPECT_FALSE(leavesWriterUsable(number)) << number;
    }
}

TEST(ErrorCodeTest, HasAMeaningForEachCode) {
    EXPECT_EQ(meaningOf(ErrorCode::secondMovie), "second moov");
    EXPECT_EQ(meaningOf(ErrorCode::warnTruncated), "truncated or misaligned structure");
    EXPECT_EQ(meaningOf(static_cast<ErrorCode>(4711)), "unknown");
}

TEST(WarningHandlerTest, LetsEveryWarningPass) {
    WarningHandler handler;
    EXPECT_TRUE(handler.warn(3073));
    EXPECT_TRUE(handler.warn(0));
}

}  // namespace
}  // namespace qlix::kzm
