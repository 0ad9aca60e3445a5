#include <ctime>

#include <gtest/gtest.h>

#include "hlx/HLXException.h"
#include "hlx/HLXLibrary.h"
#include "kzs/EncryptorContext.h"
#include "kzs/base/Clock.h"
#include "support/Child.h"
#include "support/TestPki.h"

namespace torvo::kzs {
namespace {

using kz::test::CertificateSpec;
using kz::test::KeyKind;
using kz::test::passesInChild;
using kz::test::testKey;
using Bytes = IEncryptorContext::Bytes;

constexpr KeyKind kKind = KeyKind::p256;
constexpr long kDay = 24L * 3600;

Bytes certificate(int number, long validUntilSeconds = 400 * kDay) {
    CertificateSpec spec;
    spec.key = kKind;
    spec.keyNumber = number;
    spec.validUntilSeconds = validUntilSeconds;
    return kz::test::makeCertificate(spec);
}

hlx::SecretBytes credential(int number) {
    const auto pfx = kz::test::makePfx(testKey(kKind, number), [&] {
        const Bytes der = certificate(number);
        return kz::test::bytesOf(der.data(), der.size());
    }());
    return hlx::SecretBytes(pfx.begin(), pfx.end());
}

struct Inputs {
    std::string contentId = "movie7";
    Bytes transport = certificate(1);
    Bytes server = certificate(2);
    hlx::SecretBytes packager = credential(3);
    std::string password = "secret";
    hlx::SecretBytes second;
    std::string secondPassword;
    std::vector<Bytes> extras;
};

EncryptorContext make(const Inputs& inputs) {
    return EncryptorContext(0, inputs.contentId, hlx::SecretBytes(16, 7), "https://l/",
                            inputs.transport, inputs.server, inputs.packager, inputs.password,
                            {'p'}, {1, 0, 1, 2, 1500}, inputs.second, inputs.secondPassword,
                            static_cast<std::int32_t>(inputs.extras.size()), inputs.extras.data());
}

TEST(EncryptorContextTest, KeepsItsValuesAndMakesItsHandles) {
    EXPECT_TRUE(passesInChild([] {
        hlx::startLibrary();
        EncryptorContext context = make({});
        EXPECT_EQ(context.kind(), 0U);
        EXPECT_EQ(context.contentId(), "movie7");
        EXPECT_EQ(context.commonKey(), hlx::SecretBytes(16, 7));
        EXPECT_EQ(context.licenseServerUrl(), "https://l/");
        EXPECT_EQ(context.policy(), Bytes{'p'});
        EXPECT_EQ(context.encryptionFlags(), (hlx::EncryptionFlags{1, 0, 1, 2, 1500}));
        EXPECT_NE(context.transportCertificate(), nullptr);
        EXPECT_NE(context.licenseServerCertificate(), nullptr);
        EXPECT_NE(context.licenseServerCertificate(), context.transportCertificate());
        EXPECT_NE(context.packagerCredential(), nullptr);
        EXPECT_EQ(context.extraCertificateCount(), 0);
        EXPECT_EQ(context.extraCertificates(), nullptr);
        EXPECT_TRUE(context.digestList().empty());
        EXPECT_TRUE(context.textList().empty());
        EXPECT_EQ(context.digestWord(), 0U);
    }));
}

TEST(EncryptorContextTest, WithoutASecondCredentialItsHandleIsNull) {
    EXPECT_TRUE(passesInChild([] {
        hlx::startLibrary();
        EXPECT_EQ(make({}).secondCredential(), nullptr);
    }));
}

TEST(EncryptorContextTest, BytesOrAPasswordMakeASecondCredential) {
    EXPECT_TRUE(passesInChild([] {
        hlx::startLibrary();
        Inputs inputs;
        inputs.second = credential(4);
        inputs.secondPassword = "secret";
        EXPECT_NE(make(inputs).secondCredential(), nullptr);
    }));
    EXPECT_TRUE(passesInChild([] {
        hlx::startLibrary();
        Inputs inputs;
        inputs.secondPassword = "secret";
        EXPECT_THROW(make(inputs), hlx::HLXException);
    }));
}

TEST(EncryptorContextTest, ExtraCertificatesBecomeHandlesInTheirOrder) {
    EXPECT_TRUE(passesInChild([] {
        hlx::startLibrary();
        Inputs inputs;
        inputs.extras = {certificate(5, 10 * kDay), certificate(6, 100 * kDay)};
        const EncryptorContext context = make(inputs);
        ASSERT_EQ(context.extraCertificateCount(), 2);
        std::string dateText;
        EXPECT_FALSE(context.certificateStaysValid(context.extraCertificates()[0], dateText));
        EXPECT_TRUE(context.certificateStaysValid(context.extraCertificates()[1], dateText));
    }));
}

TEST(EncryptorContextTest, ASecondContextGetsTheHandlesOfTheFirst) {
    EXPECT_TRUE(passesInChild([] {
        hlx::startLibrary();
        const EncryptorContext first = make({});
        Inputs broken;
        broken.contentId = "other";
        broken.transport = {'x'};
        broken.server = {};
        broken.packager = {};
        const EncryptorContext second = make(broken);
        EXPECT_EQ(second.contentId(), "other");
        EXPECT_EQ(second.transportCertificate(), first.transportCertificate());
        EXPECT_EQ(second.licenseServerCertificate(), first.licenseServerCertificate());
        EXPECT_EQ(second.packagerCredential(), first.packagerCredential());
    }));
}

TEST(EncryptorContextTest, AFailureIsTheLibrarysAndIsNotMadeUpForLater) {
    EXPECT_TRUE(passesInChild([] {
        hlx::startLibrary();
        Inputs wrong;
        wrong.password = "wrong";
        EXPECT_THROW(make(wrong), hlx::HLXException);
        // The lock was given back, and the flag stays: no second attempt.
        const EncryptorContext second = make({});
        EXPECT_NE(second.transportCertificate(), nullptr);
        EXPECT_EQ(second.packagerCredential(), nullptr);
    }));
}

TEST(EncryptorContextTest, ThirtyDaysBeforeItExpiresACertificateStillCounts) {
    EXPECT_TRUE(passesInChild([] {
        hlx::startLibrary();
        const EncryptorContext context = make({});
        const HLXCalendarTime end =
            hlx::HLXEncryptor::certificateDates(context.transportCertificate()).notAfter;
        std::tm parts{};
        parts.tm_year = static_cast<int>(end.year) - 1900;
        parts.tm_mon = static_cast<int>(end.month) - 1;
        parts.tm_mday = static_cast<int>(end.day);
        parts.tm_hour = static_cast<int>(end.hour);
        parts.tm_min = static_cast<int>(end.minute);
        parts.tm_sec = static_cast<int>(end.second);
        const std::int64_t expiry = timegm(&parts);
        const auto staysValidAt = [&](std::int64_t now) {
            setClockForTests(now);
            std::string dateText;
            return context.certificateStaysValid(context.transportCertificate(), dateText);
        };
        EXPECT_TRUE(staysValidAt(expiry - 30 * kDay - 1));
        EXPECT_TRUE(staysValidAt(expiry - 30 * kDay));
        EXPECT_FALSE(staysValidAt(expiry - 30 * kDay + 1));
        EXPECT_FALSE(staysValidAt(expiry + 1));
    }));
}

// 2031-03-05 14:07:09 UTC is 1930486029 seconds after 1970.
TEST(EncryptorContextTest, DateTextIsDayMonthYearAndTime) {
    EXPECT_TRUE(passesInChild([] {
        hlx::startLibrary();
        Inputs inputs;
        inputs.transport = certificate(1, 1930486029L - std::time(nullptr));
        const EncryptorContext context = make(inputs);
        std::string dateText;
        context.certificateStaysValid(context.transportCertificate(), dateText);
        EXPECT_TRUE(dateText == "05-Mar-2031 14:07:09 GMT" ||
                    dateText == "05-Mar-2031 14:07:10 GMT")
            << dateText;
    }));
}

TEST(EncryptorContextTest, ANullCertificateIsTheLibrarysFailure) {
    EXPECT_TRUE(passesInChild([] {
        hlx::startLibrary();
        const EncryptorContext context = make({});
        std::string dateText;
        EXPECT_THROW(context.certificateStaysValid(nullptr, dateText), hlx::HLXException);
    }));
}

}  // namespace
}  // namespace torvo::kzs
