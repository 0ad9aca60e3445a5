#include <algorithm>
#include <array>
#include <fstream>
#include <sstream>

#include <gtest/gtest.h>

#include "kzs/DrmAdditionalHeader.h"
#include "support/Bytes.h"

namespace torvo::kzs {
namespace {

using kz::test::Bytes;
using kz::test::difference;
using kz::test::hex;
using kz::test::hexTable;
using kz::test::text;

Bytes written(const DrmAdditionalHeader& header) {
    const std::vector<std::uint8_t> bytes = bytesOf(header);
    return kz::test::bytesOf(bytes.data(), bytes.size());
}

// The items of a header with the defaults, in front of the three ends that close it.
TEST(DrmAdditionalHeaderTest, HasItsItemsInOrder) {
    DrmAdditionalHeader header;
    header.metadata = "TQ==";
    EXPECT_EQ(difference(written(header), hexTable(R"(
        0    0200117c4164646974696f6e616c486561646572             |AdditionalHeader
        20   03                                                   object
        21   000a456e6372797074696f6e03                           Encryption, object
        34   000756657273696f6e                                   Version
        43   004000000000000000                                   2.0
        52   00064d6574686f64                                     Method
        60   0200085374616e64617264                               Standard
        71   0005466c616773                                       Flags
        78   000000000000000000                                   0.0
        87   0006506172616d7303                                   Params, object
        96   000756657273696f6e                                   Version
        105  003ff0000000000000                                   1.0
        114  0013456e6372797074696f6e416c676f726974686d           EncryptionAlgorithm
        135  0200074145532d434243                                 AES-CBC
        145  0010456e6372797074696f6e506172616d7303               EncryptionParams, object
        164  00094b65794c656e677468                               KeyLength
        175  004030000000000000                                   16.0
        184  000009                                               end of EncryptionParams
        187  00074b6579496e666f03                                 KeyInfo, object
        197  000773756254797065                                   subType
        206  02000b456d626572476174657632                         EmberGatev2
        220  000e4547524c535f4d4554414441544103                   EGRLS_METADATA, object
        237  00084d65746164617461                                 Metadata
        247  02000454513d3d                                       TQ==
        254  000009                                               end of EGRLS_METADATA
        257  000009                                               end of KeyInfo
        260  000009                                               end of Params
        263  000009                                               end of Encryption
        266  000009                                               end of the header
    )")),
              "");
}

TEST(DrmAdditionalHeaderTest, FilterInfoIsWrittenForVersionThreeOnly) {
    DrmAdditionalHeader header;
    header.metadata = "TQ==";
    header.version = 3;
    header.keyIndicatorLength = 5;
    const Bytes bytes = written(header);
    EXPECT_EQ(bytes.slice(43, 9), hex("004008000000000000"));
    // It stands where the ends of the parameters, the encryption and the header stood.
    EXPECT_EQ(difference(bytes.slice(260, bytes.size() - 260), hexTable(R"(
        0    000a46696c746572496e666f03                           FilterInfo, object
        13   000a46696c7465724e616d65                             FilterName
        25   020003534532                                         SE2
        31   000c46696c746572506172616d7303                       FilterParams, object
        46   00124b6579496e64696361746f724c656e677468             KeyIndicatorLength
        66   004014000000000000                                   5.0
        75   000009                                               end of FilterParams
        78   000009                                               end of FilterInfo
        81   000009                                               end of Params
        84   000009                                               end of Encryption
        87   000009                                               end of the header
    )")),
              "");
    const std::uint8_t otherVersions[] = {0, 1, 2, 4};
    for (const std::uint8_t version : otherVersions) {
        header.version = version;
        EXPECT_EQ(written(header).size(), 269U);
    }
}

TEST(DrmAdditionalHeaderTest, EmptyMetadataIsWrittenAsAStringOfNoBytes) {
    const Bytes bytes = written(DrmAdditionalHeader());
    const std::string name = "Metadata";
    const auto at = std::search(bytes.begin(), bytes.end(), name.begin(), name.end());
    ASSERT_NE(at, bytes.end());
    EXPECT_EQ(Bytes(at + 8, at + 14), hex("020000 000009"));
}

TEST(DrmAdditionalHeaderTest, LongMetadataTakesTheLongForm) {
    DrmAdditionalHeader header;
    header.metadata = std::string(65536, 'x');
    const Bytes bytes = written(header);
    const Bytes start = text("Metadata") + hex("0c00010000") + text("xx");
    EXPECT_NE(std::search(bytes.begin(), bytes.end(), start.begin(), start.end()), bytes.end());
}

TEST(DrmAdditionalHeaderTest, UnusedWordsAreOneZeroOne) {
    const DrmAdditionalHeader header;
    const std::array<std::uint32_t, 3> expected = {1, 0, 1};
    EXPECT_EQ(header.wordsBeforeAlgorithm, expected);
    EXPECT_EQ(header.wordsBehindKeyLength, expected);
}

TEST(DrmAdditionalHeaderTest, AFailedStreamThrowsAndGetsItsSettingBack) {
    std::ostringstream stream;
    writeDrmAdditionalHeader(DrmAdditionalHeader(), stream);
    EXPECT_EQ(stream.exceptions(), std::ios::goodbit);
    std::ostream broken(nullptr);
    EXPECT_THROW(writeDrmAdditionalHeader(DrmAdditionalHeader(), broken), std::ios::failure);
    EXPECT_EQ(broken.exceptions(), std::ios::goodbit);
}

TEST(DrmAdditionalHeaderTest, AStreamThatThrowsByItselfKeepsItsSettingToo) {
    std::filebuf unopened;
    std::ostream stream(&unopened);
    stream.exceptions(std::ios::badbit);
    EXPECT_THROW(writeDrmAdditionalHeader(DrmAdditionalHeader(), stream), std::ios::failure);
    EXPECT_EQ(stream.exceptions(), std::ios::badbit);
}

}  // namespace
}  // namespace torvo::kzs
