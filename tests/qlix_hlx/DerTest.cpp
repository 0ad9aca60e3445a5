#include <gtest/gtest.h>

#include "qlix_hlx/Der.h"
#include "qlix_hlx/Failure.h"
#include "qlix_hlx/ProtectionRecord.h"
#include "support/Bytes.h"

namespace qlix::hlx {
namespace {

using kz::test::Bytes;
using kz::test::fill;
using kz::test::hex;
using kz::test::hexTable;

Bytes bytesOf(const SecretBytes& bytes) { return kz::test::bytesOf(bytes.data(), bytes.size()); }

Bytes octets(std::size_t size) {
    const Bytes content = fill(size, 7);
    return bytesOf(Der().octets({content.data(), content.size()}).bytes());
}

TEST(DerTest, IntegersTakeAsFewBytesAsTheyCan) {
    EXPECT_EQ(bytesOf(Der().integer(0).bytes()), hex("02 01 00"));
    EXPECT_EQ(bytesOf(Der().integer(127).bytes()), hex("02 01 7f"));
    EXPECT_EQ(bytesOf(Der().integer(128).bytes()), hex("02 02 0080"));
    EXPECT_EQ(bytesOf(Der().integer(1500).bytes()), hex("02 02 05dc"));
    EXPECT_EQ(bytesOf(Der().integer(0xFFFFFFFF).bytes()), hex("02 05 00ffffffff"));
}

TEST(DerTest, LengthsAboveOneHundredTwentySevenAreCounted) {
    EXPECT_EQ(octets(0), hex("04 00"));
    EXPECT_EQ(octets(127).cutTo(2), hex("04 7f"));
    EXPECT_EQ(octets(128).cutTo(3), hex("04 81 80"));
    EXPECT_EQ(octets(256).cutTo(4), hex("04 82 0100"));
    EXPECT_EQ(octets(65536).cutTo(5), hex("04 83 010000"));
}

TEST(ProtectionRecordTest, HasItsFieldsInOrder) {
    const Bytes keyId = fill(2, 0x11);
    const Bytes fingerprint = fill(3, 0x22);
    const Bytes policy = fill(1, 0x33);
    const Bytes key = fill(2, 0x44);
    const Bytes extra = fill(1, 0x55);
    ProtectionRecord record;
    record.contentId = "id";
    record.keyId = {keyId.data(), keyId.size()};
    record.serverUrl = "u";
    record.transportFingerprint = {fingerprint.data(), fingerprint.size()};
    record.policies = {{policy.data(), policy.size()}};
    record.flags = {1, 0, 1, 2, 1500};
    record.contentKey = {key.data(), key.size()};
    EXPECT_EQ(bytesOf(encodeRecord(record)), hexTable(R"(
        0   302e              record of 46 bytes
        2   020101            version
        5   04026964          content id
        9   04021111          key id
        13  040175            server url
        16  0403222222        fingerprint
        21  3003040133        policies
        26  3010              the five words
        28  020101            video
        31  020100            audio
        34  020101            data
        37  020102            level
        40  020205dc          milliseconds
        44  04024444          content key
    )"));
    record.extras = {{extra.data(), extra.size()}};
    const Bytes withExtra = bytesOf(encodeRecord(record));
    EXPECT_EQ(withExtra.slice(withExtra.size() - 5, 5), hex("a003 040155"));
}

TEST(ProtectionRecordTest, RefusesPoliciesThatAreEmptyOrTooLarge) {
    const Bytes policy = fill(65537, 1);
    const auto resultOf = [&](std::size_t size) -> std::uint32_t {
        ProtectionRecord record;
        record.serverUrl = "u";
        record.policies = {{policy.data(), size}};
        try {
            checkRecord(record);
        } catch (const Failure& failure) {
            return failure.result;
        }
        return HLX_OK;
    };
    EXPECT_EQ(resultOf(0), HLX_ERROR_POLICY_EMPTY);
    EXPECT_EQ(resultOf(1), HLX_OK);
    EXPECT_EQ(resultOf(65536), HLX_OK);
    EXPECT_EQ(resultOf(65537), HLX_ERROR_POLICY_TOO_LARGE);
}

}  // namespace
}  // namespace qlix::hlx
