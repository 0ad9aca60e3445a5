#include <exception>
#include <type_traits>

#include <gtest/gtest.h>

#include "offline/OfflineException.h"

namespace torvo::offline {
namespace {

struct Case {
    OfflineException failure;
    std::int32_t code;
    const char* text;
};

TEST(OfflineExceptionTest, EachClassHasItsCodeAndText) {
    const Case cases[] = {
        {FileNotFoundException("a.flv"), 1, "a.flv file does not exist"},
        {FileNotFoundException(), 1, " file does not exist"},
        {PathNotFileException("dir"), 1, "Path is not a file dir"},
        {InputFileNotGivenException(), 2, "no input file given"},
        {InvalidInputFileException("x"), 3, "invalid input file x"},
        {InvalidInputFileException(), 3, "invalid input file "},
        {CantAccessFileException("p"), 4, "cannot access input file p"},
        {CantAccessFileException(), 4, "cannot access input file "},
        {NoSupportedTracksException("p"), 6, "Input file does not contain any supported tracks: p"},
        {WriterException(), 7, "KZS writer failed"},
        {XMLConfigException("Bad XML File"), 8, "XML Library failed Bad XML File"},
        {ProgramOptionsException("KZSpackager"), 9,
         "Usage: KZSpackager --input-file=<file> --[setting]=[arg]..."},
        {EncryptionInfoException("no policy specified"), 10,
         "Not enough information given for encryption: no policy specified"},
        {StdErrorException("bad"), 12, "Standard Exception: bad"},
        {InvalidBootstrapException(), 13, "Bootstrap file is corrupt"},
        {InvalidAfraException("last fragment: 3 current fragment: 5"), 15,
         "Afra Index is corrupt: last fragment: 3 current fragment: 5"},
        {ManifestFileNotGivenException(), 23, "no manifest file given"},
        {InternalException(), 999, "Offline packager has failed internally"},
    };
    for (const Case& expected : cases) {
        EXPECT_EQ(expected.failure.code(), expected.code) << expected.text;
        EXPECT_EQ(expected.failure.text(), expected.text);
    }
}

TEST(OfflineExceptionTest, TheTwoLibrariesHaveCrossedCodes) {
    EXPECT_EQ(FLVLibraryException("t").code(), 11);
    EXPECT_EQ(FLVLibraryException("t").text(), "Error when reading the FLV t");
    EXPECT_EQ(FLVLibraryException().code(), 14);
    EXPECT_EQ(FLVLibraryException().text(), "Error when reading the FLV ");
    EXPECT_EQ(EncryptionException("t").code(), 14);
    EXPECT_EQ(EncryptionException("t").text(), "Error in the Encryption Library t");
    EXPECT_EQ(EncryptionException().code(), 11);
    EXPECT_EQ(EncryptionException().text(), "Error in the Encryption Library ");
}

TEST(OfflineExceptionTest, AHandlerForStandardExceptionsDoesNotSeeIt) {
    EXPECT_FALSE((std::is_base_of_v<std::exception, OfflineException>));
    EXPECT_FALSE((std::is_base_of_v<std::exception, StdErrorException>));
    EXPECT_TRUE(std::has_virtual_destructor_v<OfflineException>);
}

TEST(OfflineExceptionTest, APathThatLooksLikeAPatternStaysAsItIs) {
    EXPECT_EQ(FileNotFoundException("100%1%.flv").text(), "100%1%.flv file does not exist");
}

}  // namespace
}  // namespace torvo::offline
