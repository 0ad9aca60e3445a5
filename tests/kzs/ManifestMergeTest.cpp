#include <gtest/gtest.h>

#include "kvl/minidom/Document.h"
#include "kvl/minidom/Element.h"
#include "kvl/minidom/NodeList.h"
#include "kzs/ManifestFixture.h"

using torvo::kzs::Rendition;

class ManifestMergeTest : public kz::test::ManifestFixture {
protected:
    /// What a first run leaves: one rendition with a fragment of that duration.
    static std::string firstRun(const std::string& streamId, std::uint32_t durationMs) {
        const auto manifest = newManifest();
        Rendition& rendition = manifest->addMedia(streamId, streamId, 500.0);
        addFragment(rendition, durationMs);
        rendition.metadata = {1};
        return committed(*manifest);
    }

    static std::string mergedWith(const std::string& manifestText, const std::string& streamId,
                                  std::uint32_t durationMs) {
        const auto manifest = load(manifestText);
        Rendition& rendition = manifest->addMedia(streamId, streamId, 0.0);
        addFragment(rendition, durationMs);
        rendition.metadata = {2};
        return committed(*manifest);
    }

    static kvl::minidom::DocumentPtr parsed(const std::string& xml) {
        std::istringstream stream(xml);
        return kvl::minidom::parseStream(stream, false);
    }
};

TEST_F(ManifestMergeTest, AddsTheNewRenditionBehindTheOldOne) {
    EXPECT_EQ(mergedWith(firstRun("low", 4000), "high", 5000), kHead +
                                                                   R"(	<id>
		show
	</id>
	<mimeType>
	</mimeType>
	<streamType>
		recorded
	</streamType>
	<duration>
		12.5
	</duration>
	<bootstrapInfo
		 profile="named"
		 id="bootstrap101"
	>
		)" + bootstrapText(4000) + R"(
	</bootstrapInfo>
	<media
		 streamId="low"
		 url="low"
		 bitrate="500"
		 bootstrapInfoId="bootstrap101"
	>
		<metadata>
			AQ==
		</metadata>
	</media>
	<bootstrapInfo
		 profile="named"
		 id="bootstrap102"
	>
		)" + bootstrapText(5000) + R"(
	</bootstrapInfo>
	<media
		 streamId="high"
		 url="high"
		 bootstrapInfoId="bootstrap102"
	>
		<metadata>
			Ag==
		</metadata>
	</media>
)" + kTail);
}

TEST_F(ManifestMergeTest, SharesOneElementForEqualBootstraps) {
    const std::string text = mergedWith(firstRun("low", 4000), "high", 4000);
    EXPECT_EQ(countOf("<bootstrapInfo", text), 1U);
    EXPECT_EQ(countOf("bootstrapInfoId=\"bootstrap101\"", text), 2U);
}

TEST_F(ManifestMergeTest, DoesNotShareABootstrapThatLiesInAFile) {
    const auto manifest = load(firstRun("low", 4000));
    Rendition& rendition = manifest->addMedia("high", "high", 0.0);
    addFragment(rendition, 4000);
    rendition.bootstrapUrl = "high.bootstrap";
    EXPECT_EQ(countOf("<bootstrapInfo", committed(*manifest)), 2U);
}

TEST_F(ManifestMergeTest, LeavesTwoMediaElementsOfOneStreamId) {
    const std::string twice = mergedWith(firstRun("s", 4000), "s", 5000);
    EXPECT_EQ(countOf("<media", twice), 2U);
    EXPECT_EQ(countOf("streamId=\"s\"", twice), 2U);
    const std::string thrice = mergedWith(twice, "s", 6000);
    EXPECT_EQ(countOf("streamId=\"s\"", thrice), 3U);
}

TEST_F(ManifestMergeTest, KeepsTheMetadataOfLoadedRenditions) {
    const auto manifest = load(firstRun("s", 4000));
    EXPECT_TRUE(manifest->renditions().at("s").metadata.empty());
    EXPECT_EQ(countOf("\t\t\tAQ==\n", committed(*manifest)), 1U);
}

TEST_F(ManifestMergeTest, KeepsBootstrapsThatNobodyRefersTo) {
    const auto manifest =
        loadRootOf("<bootstrapInfo id=\"old\">" + bootstrapText(4000) + "</bootstrapInfo>");
    addFragment(manifest->addMedia("s", "u", 0.0), 5000);
    const std::string text = committed(*manifest);
    EXPECT_EQ(countOf("id=\"old\"", text), 1U);
    EXPECT_EQ(countOf("<bootstrapInfo", text), 2U);
}

TEST_F(ManifestMergeTest, KeepsIdAndDurationOfTheLoadedFile) {
    const std::string text = mergedWith(firstRun("low", 4000), "high", 5000);
    EXPECT_EQ(countOf("<id>\n\t\tshow\n", text), 1U);
    EXPECT_EQ(countOf("<duration>\n\t\t12.5\n", text), 1U);
}

TEST_F(ManifestMergeTest, DropsTheEmptyLineOfTheMimeTypeAfterALoad) {
    const std::string first = written(*newManifest());
    EXPECT_EQ(countOf("<mimeType>\n\t\t\n\t</mimeType>", first), 1U);
    EXPECT_EQ(countOf("<mimeType>\n\t</mimeType>", written(*load(first))), 1U);
}

TEST_F(ManifestMergeTest, StepsOverAnIdThatTheLoadedFileHas) {
    torvo::kzs::setRandomForTests([] { return 41; });
    const std::string first = firstRun("low", 4000);
    EXPECT_EQ(countOf(" id=\"bootstrap42\"", first), 1U);
    const std::string text = mergedWith(first, "high", 5000);
    EXPECT_EQ(countOf(" id=\"bootstrap42\"", text), 1U);
    EXPECT_EQ(countOf(" id=\"bootstrap43\"", text), 1U);
}

TEST_F(ManifestMergeTest, IsTheSameTextWhenLoadedAndWrittenAgain) {
    const std::string once = mergedWith(firstRun("low", 4000), "high", 5000);
    EXPECT_EQ(committed(*load(once)), once);
}

TEST_F(ManifestMergeTest, KeepsNamesWithBlanksQuotesAndAmpersands) {
    const std::string name = "Tom & \"Jerry\" <1> it's 5 > 4; caf\xc3\xa9  &amp;";
    const auto first = newManifest(name);
    Rendition& rendition = first->addMedia(name, name + ".kzs", 0.0);
    rendition.bootstrapUrl = name + ".bootstrap";
    rendition.drmContentId = name;
    rendition.drmUrl = name + ".drmmeta";
    std::string text = committed(*first);
    for (int merges = 0; merges < 3; ++merges) {
        text = mergedWith(text, "other" + std::to_string(merges), 4000);
    }
    const auto last = load(text);
    ASSERT_EQ(last->renditions().count(name), 1U);
    EXPECT_EQ(last->renditions().at(name).url, name + ".kzs");
    const std::string bootstrapId = last->renditions().at(name).bootstrapInfoId;
    EXPECT_EQ(last->bootstraps().at(bootstrapId).url, name + ".bootstrap");
    const std::string headerId = last->renditions().at(name).drmAdditionalHeaderId;
    EXPECT_EQ(last->drmHeaders().at(headerId).url, name + ".drmmeta");
    EXPECT_EQ(last->drmHeaders().at(headerId).drmContentId, name);
    const auto ids = parsed(text)->getDocumentElement()->getElementsByTagNameNS("*", "id");
    EXPECT_EQ(ids->item(0)->getFirstChild()->getNodeValue(), name);
}

TEST_F(ManifestMergeTest, KeepsForeignElementsAndTheirNamespaces) {
    const auto manifest = load(
        "<?xml version=\"1.0\"?><manifest xmlns=\"urn:own\" xmlns:x=\"urn:x\"><x:note "
        "x:by=\"A&amp;B\">"
        "1 &lt; 2<!-- kept --></x:note></manifest>");
    manifest->addMedia("s", "u", 0.0);
    const auto root = parsed(committed(*manifest))->getDocumentElement();
    const auto note = root->getFirstChild();
    EXPECT_EQ(note->getNamespaceURI(), "urn:x");
    EXPECT_EQ(note->getAttributes()->item(0)->getNamespaceURI(), "urn:x");
    EXPECT_EQ(note->getAttributes()->item(0)->getNodeValue(), "A&B");
    EXPECT_EQ(note->getFirstChild()->getNodeValue(), "1 < 2");
    EXPECT_EQ(note->getLastChild()->getNodeValue(), "<!-- kept -->");
    EXPECT_EQ(root->getLastChild()->getLocalName(), "media");
}
