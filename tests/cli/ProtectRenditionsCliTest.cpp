#include "cli/ProtectFixture.h"
#include "support/TestLicenseServer.h"

namespace kz::test {
namespace {

const char* const kClips[] = {"mbr_60k", "mbr_120k", "mbr_240k"};

/// Renditions of one content, each merged into the manifest of the run before.
class ProtectRenditionsTest : public ProtectFixture {
protected:
    /// Packages the first `count` clips; answers the path of the last manifest.
    std::string packageRenditions(std::size_t count, const std::vector<std::string>& more = {}) {
        std::string manifest;
        for (std::size_t i = 0; i < count; ++i) {
            const std::string clip = kClips[i];
            std::vector<std::string> arguments = more;
            arguments.push_back("--bitrate=" + std::to_string(60U << i));
            if (!manifest.empty()) arguments.push_back("--manifest-file=" + manifest);
            package("protected", withProtection(clip + ".flv", arguments));
            manifest = work / ("protected/" + clip + ".kzd");
        }
        return manifest;
    }
    /// Updates a manifest into the folder `updated`, for a license server with another key.
    void update(const std::string& manifest) {
        const std::string certificate = files.folder.write("new-server.der", newServerDer);
        package("updated",
                withProtection("", {"--update-drm-info", "--manifest-file=" + manifest,
                                    "--dump-drm-metadata", "--license-server-cert=" + certificate,
                                    "--license-server-url=https://new.example/"}));
    }
    OpenedMetadata open(const Bytes& metadata) const {
        return openMetadata(metadata, ProtectionFiles::serverKey(), files.serverDer);
    }
    /// The header of an updated manifest opens for the new server, and names the old key.
    void expectNewHeader(const Bytes& header) const {
        const Bytes metadata = metadataInHeader(header);
        const OpenedMetadata opened =
            openMetadata(metadata, testKey(KeyKind::p256, 5), newServerDer);
        EXPECT_EQ(opened.serverUrl, "https://new.example/");
        EXPECT_EQ(opened.contentId, "movie7");
        EXPECT_EQ(opened.contentKey, files.contentKey);
        EXPECT_THROW(open(metadata), MetadataRefused);
    }
    std::string manifestText(const std::string& path) const { return readFile(work / path).str(); }

    const Bytes newServerDer = makeCertificate(ProtectionFiles::spec(5));
};

TEST_F(ProtectRenditionsTest, AllPlayWithOneKey) {
    packageRenditions(3);
    for (const std::string clip : kClips) {
        expectSame(tagImages(read("protected", clip)), clearTags(clip + ".flv"));
        const OpenedMetadata opened =
            open(metadataInSegment(readFile(work / ("protected/" + clip + "Seg1.kzs"))));
        EXPECT_EQ(opened.contentKey, files.contentKey);
        // By openssl kdf.
        EXPECT_EQ(opened.keyId, hex("03321175c8ecabb5330e7d0b328ed3be"));
    }
}

TEST_F(ProtectRenditionsTest, EachHasAHeaderOfItsOwn) {
    const std::string manifest = readFile(packageRenditions(3)).str();
    const auto headers = elementsOf(manifest, "drmAdditionalHeader");
    const auto renditions = elementsOf(manifest, "media");
    ASSERT_EQ(headers.size(), 3U);
    ASSERT_EQ(renditions.size(), 3U);
    for (std::size_t i = 0; i < headers.size(); ++i) {
        // Elements are appended: the oldest run comes first.
        const std::string clip = kClips[i];
        EXPECT_EQ(renditions[i].attribute("streamId"), clip);
        EXPECT_EQ(headers[i].attribute("id").rfind("drmMetadata", 0), 0U);
        EXPECT_EQ(renditions[i].attribute("drmAdditionalHeaderId"), headers[i].attribute("id"));
        EXPECT_EQ(headers[i].attribute("drmContentId"), "movie7");
        EXPECT_EQ(headers[i].attribute("url"), "");
        // The metadata of a run is the same in its header and in its segments.
        EXPECT_EQ(metadataInHeader(fromBase64(headers[i].text)),
                  metadataInSegment(readFile(work / ("protected/" + clip + "Seg1.kzs"))));
    }
}

TEST_F(ProtectRenditionsTest, ExternalHeadersLieInAFileForEach) {
    const std::string manifest = readFile(packageRenditions(2, {"--external-bootstrap"})).str();
    const auto headers = elementsOf(manifest, "drmAdditionalHeader");
    ASSERT_EQ(headers.size(), 2U);
    for (std::size_t i = 0; i < headers.size(); ++i) {
        const std::string clip = kClips[i];
        EXPECT_EQ(headers[i].attribute("url"), clip + ".drmmeta");
        EXPECT_EQ(headers[i].text, "");
        const Bytes header = readFile(work / ("protected/" + clip + ".drmmeta"));
        EXPECT_EQ(header.cutTo(20), hex("020011") + text("|AdditionalHeader"));
        EXPECT_EQ(metadataInHeader(header),
                  metadataInSegment(readFile(work / ("protected/" + clip + "Seg1.kzs"))));
    }
}

TEST_F(ProtectRenditionsTest, AnUpdateLeavesOneInlineHeaderForAll) {
    for (std::size_t count = 1; count <= 3; ++count) {
        SCOPED_TRACE(count);
        const std::string manifest = packageRenditions(count);
        const Bytes before = readFile(manifest);
        update(manifest);
        EXPECT_EQ(readFile(manifest), before);
        const std::string clip = kClips[count - 1];
        const std::string updated = manifestText("updated/" + clip + "_1.kzd");
        const auto headers = elementsOf(updated, "drmAdditionalHeader");
        ASSERT_EQ(headers.size(), 1U);
        expectNewHeader(fromBase64(headers[0].text));
        EXPECT_EQ(headers[0].attribute("drmContentId"), "movie7");
        const auto renditions = elementsOf(updated, "media");
        EXPECT_EQ(renditions.size(), count);
        for (const ManifestElement& rendition : renditions) {
            EXPECT_EQ(rendition.attribute("drmAdditionalHeaderId"), headers[0].attribute("id"));
        }
        EXPECT_FALSE(fileExists(work / ("updated/" + clip + "_1.drmmeta")));
        EXPECT_FALSE(fileExists(work / "updated/drmmetadata.bin"));
    }
}

TEST_F(ProtectRenditionsTest, AnUpdateLeavesOneExternalHeaderForAll) {
    for (std::size_t count = 1; count <= 2; ++count) {
        SCOPED_TRACE(count);
        update(packageRenditions(count, {"--external-bootstrap"}));
        const std::string base = std::string(kClips[count - 1]) + "_1";
        const std::string updated = manifestText("updated/" + base + ".kzd");
        const auto headers = elementsOf(updated, "drmAdditionalHeader");
        ASSERT_EQ(headers.size(), 1U);
        EXPECT_EQ(headers[0].attribute("url"), base + ".drmmeta");
        EXPECT_EQ(headers[0].text, "");
        expectNewHeader(readFile(work / ("updated/" + base + ".drmmeta")));
        for (const ManifestElement& rendition : elementsOf(updated, "media")) {
            EXPECT_EQ(rendition.attribute("drmAdditionalHeaderId"), headers[0].attribute("id"));
        }
    }
}

TEST_F(ProtectRenditionsTest, UpdatesAreCountedUp) {
    const std::string manifest = packageRenditions(1, {"--external-bootstrap"});
    update(manifest);
    update(manifest);
    EXPECT_EQ(outputs("updated"), (std::vector<std::string>{"mbr_60k_1.drmmeta", "mbr_60k_1.kzd",
                                                            "mbr_60k_2.drmmeta", "mbr_60k_2.kzd"}));
}

TEST_F(ProtectRenditionsTest, AnUpdateWarnsOfAnExpiringTransportCertificateToo) {
    const std::string manifest = packageRenditions(1);
    CertificateSpec expiring = ProtectionFiles::spec(1);
    expiring.validUntilSeconds = 29L * 24 * 3600;
    const std::string transport = files.folder.write("expiring.der", makeCertificate(expiring));
    const ProcessResult result = packager(
        withProtection("", {"--update-drm-info", "--manifest-file=" + manifest,
                            "--transport-cert=" + transport, "--output-path=" + (work / "new")}));
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err.rfind("Orvane Media Server content protection certificates", 0), 0U);
    EXPECT_EQ(outputs("new"), std::vector<std::string>{"mbr_60k_1.kzd"});
}

// A refused input leaves the manifest and the output folder as they are.
TEST_F(ProtectRenditionsTest, ARefusedUpdateWritesNothing) {
    const std::string manifest = packageRenditions(1);
    const ProcessResult result = packager(
        withProtection("", {"--update-drm-info", "--manifest-file=" + manifest,
                            "--credential-pwd=wrong", "--output-path=" + (work / "updated")}));
    EXPECT_EQ(result.status, 11);
    EXPECT_FALSE(fileExists(work / "updated"));
}

}  // namespace
}  // namespace kz::test
