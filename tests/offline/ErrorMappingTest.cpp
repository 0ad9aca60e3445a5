#include <new>
#include <stdexcept>

#include <boost/filesystem/exception.hpp>
#include <gtest/gtest.h>

#include "flv/Exception.h"
#include "hlx/HLXException.h"
#include "kzm/Exception.h"
#include "kzspkgutil/model/KZSPkgUtilException.h"
#include "offline/ErrorMapping.h"
#include "offline/OfflineException.h"

namespace torvo::offline {
namespace {

struct Failure {
    std::int32_t code;
    std::string text;
};

bool operator==(const Failure& left, const Failure& right) {
    return left.code == right.code && left.text == right.text;
}

std::ostream& operator<<(std::ostream& out, const Failure& failure) {
    return out << failure.code << " \"" << failure.text << '"';
}

Failure failureOf(const std::function<void()>& step) {
    try {
        step();
    } catch (const OfflineException& failure) {
        return {failure.code(), failure.text()};
    }
    return {0, "nothing thrown"};
}

Failure translated(const std::function<void()>& step) {
    return failureOf([&] { translateFailures(step); });
}

const Failure kNotFound{1, " file does not exist"};
const Failure kInvalidInput{3, "invalid input file "};
const Failure kNoAccess{4, "cannot access input file "};
const Failure kWriter{7, "KZS writer failed"};
const Failure kInternal{999, "Offline packager has failed internally"};

TEST(ErrorMappingTest, EveryNumberOfTheBoxLibraryHasItsClass) {
    const auto expected = [](std::uint32_t code) -> Failure {
        switch (code) {
            case 2:
            case 3:
                return kNotFound;
            case 4:
            case 5:
                return kNoAccess;
            case 6:
            case 7:
            case 8:
            case 9:
            case 10:
            case 11:
            case 12:
            case 13:
            case 14:
            case 15:
            case 16:
            case 17:
            case 20:
            case 22:
            case 23:
            case 24:
            case 25:
            case 26:
            case 27:
            case 28:
            case 30:
            case 31:
            case 37:
            case 47:
            case 48:
                return kInvalidInput;
            case 32:
            case 33:
            case 34:
            case 35:
            case 36:
                return kWriter;
            case 38:
            case 39:
                return {3, "invalid input file Invlaid ESDS Box"};
            case 40:
            case 41:
            case 42:
            case 43:
            case 44:
            case 45:
            case 46:
                return {3, "invalid input file Invalid AVCC box"};
            default:
                return kInternal;
        }
    };
    for (std::uint32_t code = 0; code < 60; ++code) {
        EXPECT_EQ(failureOf([&] { throwBoxLibraryFailure(code); }), expected(code)) << code;
    }
}

TEST(ErrorMappingTest, TheLargeNumbersOfTheBoxLibraryHaveTheirClasses) {
    for (std::uint32_t code = 1024; code <= 1030; ++code) {
        EXPECT_EQ(failureOf([&] { throwBoxLibraryFailure(code); }), kWriter) << code;
    }
    EXPECT_EQ(failureOf([] { throwBoxLibraryFailure(3077); }), kInvalidInput);
    for (const std::uint32_t code :
         {1023U, 1031U, 1033U, 1280U, 1289U, 1536U, 2052U, 3076U, 3078U, 0xFFFFFFFFU}) {
        EXPECT_EQ(failureOf([&] { throwBoxLibraryFailure(code); }), kInternal) << code;
    }
}

TEST(ErrorMappingTest, TheEncryptionLibraryHasOneNumberOfItsOwn) {
    EXPECT_EQ(failureOf([] { throwEncryptionLibraryFailure(0); }),
              (Failure{14, "Error in the Encryption Library Certificate not Identified"}));
    EXPECT_EQ(failureOf([] { throwEncryptionLibraryFailure(7); }),
              (Failure{11, "Error in the Encryption Library "}));
}

TEST(ErrorMappingTest, TheFlvLibraryHasOneNumberOfItsOwn) {
    EXPECT_EQ(failureOf([] { throwFlvLibraryFailure(8); }),
              (Failure{11, "Error when reading the FLV A TCMessage has corrupt data."}));
    for (const std::uint32_t code : {0U, 7U, 9U}) {
        EXPECT_EQ(failureOf([&] { throwFlvLibraryFailure(code); }),
                  (Failure{14, "Error when reading the FLV "}));
    }
}

TEST(ErrorMappingTest, FileFailuresOfThePipelineKeepTheirPath) {
    const auto thrown = [](std::uint32_t kind) {
        return translated(
            [&] { throw kzspkgutil::KZSPkgUtilFileException(kind, "message", "a.mp4"); });
    };
    EXPECT_EQ(thrown(1), (Failure{1, "a.mp4 file does not exist"}));
    EXPECT_EQ(thrown(2), (Failure{4, "cannot access input file a.mp4"}));
    EXPECT_EQ(thrown(3), (Failure{6, "Input file does not contain any supported tracks: a.mp4"}));
    EXPECT_EQ(thrown(4), kInternal);
}

TEST(ErrorMappingTest, OtherStandardExceptionsKeepTheirText) {
    EXPECT_EQ(translated([] { throw std::runtime_error("a reason"); }),
              (Failure{12, "Standard Exception: a reason"}));
    EXPECT_EQ(translated([] { throw std::bad_alloc(); }),
              (Failure{12, "Standard Exception: std::bad_alloc"}));
    EXPECT_EQ(translated([] { throw kzspkgutil::KZSPkgUtilException(5, "m"); }),
              (Failure{12, "Standard Exception: Error (5) - m"}));
}

TEST(ErrorMappingTest, AFailureOfTheBoxLibraryGoesByItsNumber) {
    EXPECT_EQ(translated([] { throw qlix::kzm::Exception(27); }), kInvalidInput);
    EXPECT_EQ(translated([] { throw qlix::kzm::Exception(1024); }), kWriter);
}

TEST(ErrorMappingTest, AFailureOfTheFlvLibraryGoesByItsNumber) {
    EXPECT_EQ(translated([] { throw flv::Exception(8); }),
              (Failure{11, "Error when reading the FLV A TCMessage has corrupt data."}));
    EXPECT_EQ(translated([] { throw flv::Exception(5); }),
              (Failure{14, "Error when reading the FLV "}));
}

TEST(ErrorMappingTest, AFailureOfTheEncryptionLibraryGoesByItsNumber) {
    EXPECT_EQ(translated([] { throw hlx::HLXException(0); }),
              (Failure{14, "Error in the Encryption Library Certificate not Identified"}));
    EXPECT_EQ(translated([] { throw hlx::HLXInvalidCertException(3, 1); }),
              (Failure{11, "Error in the Encryption Library "}));
}

TEST(ErrorMappingTest, AFailedFileSystemCallIsALackOfAccess) {
    EXPECT_EQ(translated([] {
                  throw boost::filesystem::filesystem_error(
                      "create",
                      boost::system::errc::make_error_code(boost::system::errc::permission_denied));
              }),
              kNoAccess);
}

TEST(ErrorMappingTest, OwnFailuresPassUntouched) {
    EXPECT_EQ(translated([] { throw PathNotFileException("d"); }),
              (Failure{1, "Path is not a file d"}));
}

}  // namespace
}  // namespace torvo::offline
