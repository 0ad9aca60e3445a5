#include <algorithm>

#include <gtest/gtest.h>

#include "ProtectionFixture.h"
#include "kzs/Base64.h"
#include "kzspkgutil/DRMMetadataGenerationFailed.h"
#include "kzspkgutil/EGXS2EncryptedKZSMediaWriterPolicy.h"
#include "kzspkgutil/EncryptedPolicyFactory.h"
#include "kzspkgutil/QSTREncryptedKZSMediaWriterPolicy.h"

namespace torvo::kzspkgutil {
namespace {

using kz::test::Bytes;
using kz::test::hex;
using kz::test::OpenedMetadata;
using test::FixedEncryptorContext;

class EncryptedPolicyFactoryTest : public testing::Test {
protected:
    std::shared_ptr<EncryptedKZSMediaWriterPolicy> make(std::uint32_t kind) {
        encryption.contextKind = kind;
        return makeEncryptedPolicy(context, encryption);
    }

    RefCountedMemoryArena arena;
    PackagerContext context{arena};
    FixedEncryptorContext encryption;
};

/// The version byte of `ahdr` in a `sinf` box.
int ahdrVersion(const EncryptedKZSMediaWriterPolicy& policy) {
    return policy.makeProtectionBox(kzs::fourCc("avc1"))[68];
}

TEST_F(EncryptedPolicyFactoryTest, KindZeroMakesMetadataThatStandsAlone) {
    const auto policy = make(0);
    ASSERT_NE(dynamic_cast<EGXS2EncryptedKZSMediaWriterPolicy*>(policy.get()), nullptr);
    EXPECT_EQ(ahdrVersion(*policy), 2);
    EXPECT_EQ(policy->metadataText(), kzs::base64Encode(policy->metadata()));
    const OpenedMetadata opened = encryption.open(policy->metadata());
    EXPECT_EQ(opened.contentId, "movie7");
    EXPECT_EQ(opened.serverUrl, "https://license.example/");
    EXPECT_EQ(opened.contentKey, test::contentKey());
    EXPECT_EQ(opened.policies, std::vector<Bytes>{hex("70")});
    EXPECT_TRUE(opened.extras.empty());
}

TEST_F(EncryptedPolicyFactoryTest, KindOneCarriesAStreamingRecord) {
    encryption.digestList() = {{0xAB, 0xCD}};
    encryption.textList() = {{"a", "", "c", ""}};
    const auto policy = make(1);
    const auto* qstr = dynamic_cast<QSTREncryptedKZSMediaWriterPolicy*>(policy.get());
    ASSERT_NE(qstr, nullptr);
    EXPECT_EQ(ahdrVersion(*policy), 3);
    const OpenedMetadata opened = encryption.open(policy->metadata());
    ASSERT_EQ(opened.extras.size(), 1U);
    EXPECT_EQ(qstr->secondText(), kzs::base64Encode(opened.extras[0]));
    // Version, URL, policy, no certificate, the digest with the context's word, the texts that
    // aren't empty.
    EXPECT_EQ(opened.extras[0], hex(R"(3053 020101
        0418 68747470733a2f2f6c6963656e73652e6578616d706c652f 040170 3000
        3021 301f 020109 0416 322e31362e3834302e312e3130312e332e342e322e31 0402abcd
        300c 300a a003040161 a203040163)"));
}

TEST_F(EncryptedPolicyFactoryTest, TheSecondCredentialSignsTheStreamingRecord) {
    encryption.second = encryption.packagerCredential();
    const Bytes record = encryption.open(make(1)->metadata()).extras.at(0);
    // A CMS message of signed data, with the record inside: its one extra certificate, then no
    // digest and no text.
    EXPECT_EQ(record.slice(4, 11), hex("0609 2a864886f70d010702"));
    const Bytes end = hex("3022 0420") + encryption.transportFingerprint() + hex("3000 3000");
    EXPECT_NE(std::search(record.begin(), record.end(), end.begin(), end.end()), record.end());
}

TEST_F(EncryptedPolicyFactoryTest, FlagsOfTheContextReachTheMetadata) {
    encryption.flags = {1, 0, 1, 1, 1500};
    EXPECT_EQ(encryption.open(make(0)->metadata()).flags,
              (std::vector<unsigned long>{1, 0, 1, 1, 1500}));
}

TEST_F(EncryptedPolicyFactoryTest, OtherKindsHaveNoPolicy) { EXPECT_EQ(make(2), nullptr); }

TEST_F(EncryptedPolicyFactoryTest, NoMetadataIsAFailureOfItsOwn) {
    try {
        requireMetadata(hlx::DRMMetadata());
        FAIL();
    } catch (const DRMMetadataGenerationFailed& failure) {
        EXPECT_EQ(failure.code(), 4U);
        EXPECT_STREQ(failure.what(), "Error (4) - DRM metadata generation failed");
    }
}

}  // namespace
}  // namespace torvo::kzspkgutil
