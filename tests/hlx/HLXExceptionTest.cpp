#include <type_traits>

#include <gtest/gtest.h>

#include "hlx/HLXException.h"
#include "hlx/Sizes.h"
#include "hlx/Tables.h"

namespace hlx {
namespace {

TEST(HLXExceptionTest, TellsItsNumber) {
    EXPECT_STREQ(HLXException(7).what(), "encryption library error 7");
}

TEST(SizeOfTest, RefusesWhatDoesntFitIntoTheNumbersOfTheLibrary) {
    struct Claim {
        std::uint64_t size() const { return bytes; }
        std::uint64_t bytes;
    };
    EXPECT_EQ(sizeOf(Claim{0xFFFFFFFF}), 0xFFFFFFFFU);
    EXPECT_THROW(sizeOf(Claim{0x100000000}), HLXException);
}

TEST(HLXExceptionTest, ZeroIsSuccess) { EXPECT_NO_THROW(checkResult(0)); }

TEST(HLXExceptionTest, LowHalf256IsARefusedCertificateWithItsDetail) {
    try {
        checkResult(0x00050100);
        FAIL();
    } catch (const HLXInvalidCertException& refused) {
        EXPECT_EQ(refused.code(), 256U);
        EXPECT_EQ(refused.detail(), 5U);
    }
}

TEST(HLXExceptionTest, OtherResultsKeepTheirWholeValue) {
    for (const HLXResult result : {1U, 255U, 257U, 0x00050101U, 0x01000000U}) {
        try {
            checkResult(result);
            FAIL();
        } catch (const HLXInvalidCertException&) {
            FAIL() << result;
        } catch (const HLXException& failure) {
            EXPECT_EQ(failure.code(), result);
        }
    }
}

TEST(HLXExceptionTest, DerivesFromTheStandardException) {
    EXPECT_TRUE((std::is_base_of_v<std::exception, HLXException>));
    EXPECT_TRUE((std::is_base_of_v<HLXException, HLXInvalidCertException>));
}

std::uintptr_t offeredVersion = 0;

HLXResult offerTable(const HLXEncryptorTable** table) {
    static HLXEncryptorTable offered{};
    offered.version = offeredVersion;
    *table = &offered;
    return 0;
}
HLXResult offerNothing(const HLXEncryptorTable** table) {
    *table = nullptr;
    return 0;
}
HLXResult refuse(const HLXEncryptorTable** table) {
    offerTable(table);
    return 7;
}

std::uint32_t codeOfFetch(HLXResult (*getInterface)(const HLXEncryptorTable**)) {
    try {
        fetchTable(getInterface, kEncryptorVersion);
    } catch (const HLXException& failure) {
        return failure.code();
    }
    return 1000;
}

TEST(TablesTest, AVersionBelowTheNeededOneIsRefusedWithCodeOne) {
    offeredVersion = 10;
    EXPECT_EQ(codeOfFetch(offerTable), 1U);
    offeredVersion = 11;
    EXPECT_EQ(codeOfFetch(offerTable), 1000U);
    offeredVersion = 12;
    EXPECT_EQ(codeOfFetch(offerTable), 1000U);
}

TEST(TablesTest, ANullTableOrAFailedCallIsRefusedWithCodeOne) {
    offeredVersion = 11;
    EXPECT_EQ(codeOfFetch(offerNothing), 1U);
    EXPECT_EQ(codeOfFetch(refuse), 1U);
}

TEST(TablesTest, NeedsVersionsElevenFiveAndSix) {
    EXPECT_EQ(kEncryptorVersion, 11U);
    EXPECT_EQ(kMetadataVersion, 5U);
    EXPECT_EQ(kRegistrationVersion, 6U);
    EXPECT_EQ(&encryptorTable(), &encryptorTable());
    EXPECT_GE(metadataTable().version, 5U);
    EXPECT_GE(registrationTable().version, 6U);
}

}  // namespace
}  // namespace hlx
