#include <stdexcept>

#include <gtest/gtest.h>

#include "kzs/ManifestFixture.h"

using torvo::kzs::Manifest;
using torvo::kzs::Rendition;

class ManifestDrmTest : public kz::test::ManifestFixture {
protected:
    static std::string header(const std::string& id, const std::string& attributes,
                              const std::string& content) {
        return "<drmAdditionalHeader " + attributes + " id=\"" + id + "\">" + content +
               "</drmAdditionalHeader>";
    }

    static std::string media(const std::string& streamId, const std::string& headerId) {
        return "<media streamId=\"" + streamId + "\" drmAdditionalHeaderId=\"" + headerId + "\"/>";
    }

    template <typename Action>
    static std::string logicErrorOf(Action action) {
        try {
            action();
        } catch (const std::logic_error& failure) {
            return failure.what();
        }
        return "nothing thrown";
    }
};

TEST_F(ManifestDrmTest, NeverSharesAProtectionHeader) {
    const auto manifest = newManifest();
    for (const char* id : {"a", "b"}) {
        Rendition& rendition = manifest->addMedia(id, "", 0.0);
        rendition.drmContentId = "c";
        rendition.drmMetadata = {1, 2, 3};
    }
    const std::string text = committed(*manifest);
    EXPECT_EQ(countOf("<drmAdditionalHeader", text), 2U);
    EXPECT_EQ(countOf("drmAdditionalHeaderId=\"drmMetadata101\"", text), 1U);
    EXPECT_EQ(countOf("drmAdditionalHeaderId=\"drmMetadata102\"", text), 1U);
}

TEST_F(ManifestDrmTest, KeepsTheHeadersOfLoadedRenditions) {
    const auto manifest = loadRootOf(header("d1", "drmContentId=\"c\"", "AQID") + media("s", "d1"));
    const std::string text = committed(*manifest);
    EXPECT_EQ(countOf("\t\tAQID\n", text), 1U);
    EXPECT_EQ(countOf("drmAdditionalHeaderId=\"d1\"", text), 1U);
}

TEST_F(ManifestDrmTest, RefusesToCommitAHeaderIdThatIsNotThere) {
    const auto manifest = loadRootOf(media("s", "gone"));
    EXPECT_EQ(logicErrorOf([&] { manifest->commit(); }), "Invalid drmAdditionalHeaderId : gone");
}

TEST_F(ManifestDrmTest, RemovesHeadersWithoutIdWhereverTheyStand) {
    const auto manifest = loadRootOf(
        "<drmAdditionalHeader drmContentId=\"c\">AQID</drmAdditionalHeader>"
        "<group><drmAdditionalHeader>AQID</drmAdditionalHeader></group>");
    EXPECT_EQ(committed(*manifest), kHead + "\t<group>\n\t</group>\n" + kTail);
}

TEST_F(ManifestDrmTest, UpdatesTheFirstHeaderAndDropsTheOthers) {
    const auto manifest = loadRootOf(header("d1", "drmContentId=\"c\"", "AQID") +
                                     header("d2", "drmContentId=\"e\"", "BAUG") + media("a", "d2") +
                                     media("b", "d1") + media("c", "d1"));
    manifest->updateDRMMetadata({7, 8, 9}, "");
    const std::string text = committed(*manifest);
    EXPECT_EQ(countOf("<drmAdditionalHeader", text), 1U);
    EXPECT_EQ(countOf(" drmContentId=\"e\"\n\t\t id=\"d2\"\n\t>\n\t\tBwgJ\n", text), 1U);
    EXPECT_EQ(countOf("drmAdditionalHeaderId=\"d2\"", text), 3U);
    EXPECT_FALSE(manifest->drmHeaders().at("d2").dirty);
}

TEST_F(ManifestDrmTest, AddsATextWhereTheUpdatedHeaderHasNone) {
    const auto manifest = loadRootOf(header("d", "", "") + media("s", "d"));
    manifest->updateDRMMetadata({7, 8, 9}, "");
    EXPECT_EQ(countOf("\t>\n\t\tBwgJ\n\t</drmAdditionalHeader>", committed(*manifest)), 1U);
}

TEST_F(ManifestDrmTest, UpdatesTheFirstTextBehindOtherContent) {
    const auto manifest = loadRootOf(header("d", "", "<note/>AQID") + media("s", "d"));
    manifest->updateDRMMetadata({7, 8, 9}, "");
    const std::string text = committed(*manifest);
    EXPECT_EQ(countOf("<note", text), 1U);
    EXPECT_EQ(countOf("BwgJ", text), 1U);
    EXPECT_EQ(countOf("AQID", text), 0U);
}

TEST_F(ManifestDrmTest, UpdatesTheUrlOfAHeaderThatLiesInAFile) {
    const auto manifest = loadRootOf(header("d", "url=\"old.drmmeta\"", "") + media("s", "d"));
    manifest->updateDRMMetadata({7, 8, 9}, "new.drmmeta");
    EXPECT_EQ(manifest->drmHeaders().at("d").data, kz::test::hex("070809"));
    const std::string text = committed(*manifest);
    EXPECT_EQ(countOf("url=\"new.drmmeta\"", text), 1U);
    EXPECT_EQ(countOf("old.drmmeta", text), 0U);
    EXPECT_EQ(countOf("BwgJ", text), 0U);
}

TEST_F(ManifestDrmTest, KeepsAHeaderWhereItLiesWhenOnlyOneSideHasAUrl) {
    const auto inFile = loadRootOf(header("d", "url=\"old.drmmeta\"", "") + media("s", "d"));
    inFile->updateDRMMetadata({7, 8, 9}, "");
    EXPECT_EQ(countOf("url=\"old.drmmeta\"", committed(*inFile)), 1U);
    const auto inManifest = loadRootOf(header("d", "", "AQID") + media("s", "d"));
    inManifest->updateDRMMetadata({7, 8, 9}, "new.drmmeta");
    const std::string text = committed(*inManifest);
    EXPECT_EQ(countOf("new.drmmeta", text), 0U);
    EXPECT_EQ(countOf("BwgJ", text), 1U);
}

TEST_F(ManifestDrmTest, GivesNoHeaderToAManifestWithoutOne) {
    const auto manifest = loadRootOf("<media streamId=\"a\"/><media streamId=\"b\"/>");
    const std::string before = [&] {
        const auto untouched = loadRootOf("<media streamId=\"a\"/><media streamId=\"b\"/>");
        return committed(*untouched);
    }();
    manifest->updateDRMMetadata({7, 8, 9}, "new.drmmeta");
    for (const char* id : {"a", "b"}) {
        EXPECT_EQ(manifest->renditions().at(id).drmMetadata, kz::test::hex("070809")) << id;
        EXPECT_EQ(manifest->renditions().at(id).drmUrl, "") << id;
    }
    EXPECT_EQ(committed(*manifest), before);
}

TEST_F(ManifestDrmTest, ChangesTheUrlOfANewRenditionOnlyIfItHasOne) {
    const auto manifest = newManifest();
    manifest->addMedia("a", "", 0.0).drmUrl = "old";
    manifest->addMedia("b", "", 0.0);
    manifest->updateDRMMetadata({7}, "");
    EXPECT_EQ(manifest->renditions().at("a").drmUrl, "old");
    manifest->updateDRMMetadata({7}, "new");
    EXPECT_EQ(manifest->renditions().at("a").drmUrl, "new");
    EXPECT_EQ(manifest->renditions().at("b").drmUrl, "");
}

TEST_F(ManifestDrmTest, RefusesAnUpdateWhenTheHeaderIsMissing) {
    const auto manifest = loadRootOf(header("other", "", "AQID") + media("s", "gone"));
    EXPECT_EQ(logicErrorOf([&] { manifest->updateDRMMetadata({7}, ""); }),
              "updateDRMMetadata error: DRM data not found: Id - : gone");
}
