#include <stdexcept>

#include <gtest/gtest.h>

#include "kzs/BootstrapReader.h"
#include "kzs/ManifestFixture.h"
#include "kzs/ManifestLoader.h"

using torvo::kzs::InvalidBootstrapFormat;

class ManifestLoaderTest : public kz::test::ManifestFixture {};

TEST_F(ManifestLoaderTest, ReadsBootstrapsHeadersAndRenditions) {
    const auto manifest = loadRootOf(
        "<bootstrapInfo profile=\"named\" id=\"b1\">" + bootstrapText(4000) + "</bootstrapInfo>" +
        "<drmAdditionalHeader drmContentId=\"c\" id=\"d1\">AQID</drmAdditionalHeader>"
        "<media streamId=\"s\" url=\"u\" bitrate=\"7\" bootstrapInfoId=\"b1\" "
        "drmAdditionalHeaderId=\"d1\"><metadata>BAUG</metadata></media>");
    const auto& bootstrap = manifest->bootstraps().at("b1");
    EXPECT_EQ(bootstrap.url, "");
    EXPECT_EQ(bootstrap.info.fragmentRunTables.at(0).entries.at(0).fragmentDuration, 4000U);
    const auto& header = manifest->drmHeaders().at("d1");
    EXPECT_EQ(header.data, kz::test::hex("010203"));
    EXPECT_EQ(header.drmContentId, "c");
    EXPECT_FALSE(header.dirty);
    const auto& rendition = manifest->renditions().at("s");
    EXPECT_EQ(rendition.url, "u");
    EXPECT_EQ(rendition.bitrate, 0.0);
    EXPECT_EQ(rendition.bootstrapInfoId, "b1");
    EXPECT_EQ(rendition.drmAdditionalHeaderId, "d1");
    EXPECT_EQ(rendition.drmContentId, "");
    EXPECT_EQ(rendition.bootstrapBuilder.durationPrecision(), 100.0);
    ASSERT_NE(rendition.element, nullptr);
}

TEST_F(ManifestLoaderTest, ReadsNoContentWhereThereIsAUrl) {
    const auto manifest = loadRootOf(
        "<bootstrapInfo url=\"x.bootstrap\" id=\"b\">no base64</bootstrapInfo>"
        "<drmAdditionalHeader url=\"x.drmmeta\" id=\"d\">no base64</drmAdditionalHeader>");
    EXPECT_EQ(manifest->bootstraps().at("b").url, "x.bootstrap");
    EXPECT_TRUE(manifest->bootstraps().at("b").info.segmentRunTables.empty());
    EXPECT_EQ(manifest->drmHeaders().at("d").url, "x.drmmeta");
    EXPECT_TRUE(manifest->drmHeaders().at("d").data.empty());
    EXPECT_TRUE(manifest->hasExternalDrmHeader());
}

TEST_F(ManifestLoaderTest, KnowsNoExternalHeaderWhereAllAreInline) {
    EXPECT_FALSE(newManifest()->hasExternalDrmHeader());
    EXPECT_FALSE(loadRootOf("<drmAdditionalHeader id=\"d\">AQID</drmAdditionalHeader>")
                     ->hasExternalDrmHeader());
}

TEST_F(ManifestLoaderTest, IgnoresElementsWithoutId) {
    const auto manifest = loadRootOf(
        "<bootstrapInfo>no base64</bootstrapInfo>"
        "<drmAdditionalHeader>no base64</drmAdditionalHeader>");
    EXPECT_TRUE(manifest->bootstraps().empty());
    EXPECT_TRUE(manifest->drmHeaders().empty());
}

TEST_F(ManifestLoaderTest, KeepsAMediaElementWithoutStreamIdAsItIs) {
    const std::string media = "\t<media\n\t\t url=\"x\"\n\t>\n\t\tkept\n\t</media>\n";
    const auto manifest = loadRootOf(media);
    EXPECT_TRUE(manifest->renditions().empty());
    EXPECT_EQ(committed(*manifest), kHead + media + kTail);
}

TEST_F(ManifestLoaderTest, TakesTheFirstOfTwoMediaElementsOfOneStreamId) {
    const auto manifest =
        loadRootOf("<media streamId=\"s\" url=\"first\"/><media streamId=\"s\" url=\"second\"/>");
    EXPECT_EQ(manifest->renditions().size(), 1U);
    EXPECT_EQ(manifest->renditions().at("s").url, "first");
    const std::string text = committed(*manifest);
    EXPECT_EQ(countOf("<media", text), 2U);
    EXPECT_EQ(countOf("<metadata>", text), 1U);
}

TEST_F(ManifestLoaderTest, MakesNoRenditionsUnlessAsked) {
    const auto manifest = load(kHead + "<media streamId=\"s\">text</media>" + kTail, false);
    EXPECT_TRUE(manifest->renditions().empty());
    EXPECT_EQ(committed(*manifest),
              kHead + "\t<media\n\t\t streamId=\"s\"\n\t>\n\t\ttext\n\t</media>\n" + kTail);
}

TEST_F(ManifestLoaderTest, FindsElementsOfAnyNamespaceAtAnyDepth) {
    const auto manifest = load(
        "<x:list xmlns:x=\"urn:x\"><x:media streamId=\"a\"/><group><media streamId=\"b\"/></group>"
        "</x:list>");
    EXPECT_EQ(manifest->renditions().size(), 2U);
}

TEST_F(ManifestLoaderTest, LooksDeeperOnlyForElementsThatStandRightUnderTheRootToo) {
    const auto manifest = loadRootOf(
        "<group><media streamId=\"a\"/><bootstrapInfo id=\"b\">no base64</bootstrapInfo>"
        "<drmAdditionalHeader id=\"d\">no base64</drmAdditionalHeader></group>");
    EXPECT_TRUE(manifest->renditions().empty());
    EXPECT_TRUE(manifest->bootstraps().empty());
    EXPECT_TRUE(manifest->drmHeaders().empty());
}

TEST_F(ManifestLoaderTest, DropsTextAndCommentsRightUnderTheRoot) {
    const auto manifest =
        load(kHead + "\n\n  text <!-- comment -->\n <id>\n\n show </id> more " + kTail);
    EXPECT_EQ(written(*manifest), kHead + "\t<id>\n\t\tshow\n\t</id>\n" + kTail);
}

TEST_F(ManifestLoaderTest, StripsLoadedMediaOfAllButTheirMetadata) {
    const auto manifest =
        loadRootOf("<media streamId=\"s\">text<metadata>BAUG</metadata><!-- c --><other/></media>");
    EXPECT_EQ(committed(*manifest), kHead +
                                        "\t<media\n\t\t streamId=\"s\"\n\t>\n\t\t<metadata>\n"
                                        "\t\t\tBAUG\n\t\t</metadata>\n\t</media>\n" +
                                        kTail);
}

TEST_F(ManifestLoaderTest, ReadsWrappedBase64) {
    std::string wrapped = bootstrapText(4000);
    wrapped.insert(76, "\n\t\t");
    const auto manifest = loadRootOf("<bootstrapInfo id=\"b\">\n" + wrapped + "\n</bootstrapInfo>");
    EXPECT_EQ(manifest->bootstraps().at("b").info.version, 1U);
}

TEST_F(ManifestLoaderTest, RefusesABootstrapThatIsNone) {
    for (const std::string& content :
         {std::string(), std::string("<!-- comment -->"), std::string("<![CDATA[QUJD]]>"),
          std::string("QUJD"), bootstrapText(4000).substr(0, 80)}) {
        EXPECT_THROW(loadRootOf("<bootstrapInfo id=\"b\">" + content + "</bootstrapInfo>"),
                     InvalidBootstrapFormat)
            << content;
    }
}

TEST_F(ManifestLoaderTest, RefusesContentThatIsNotBase64) {
    EXPECT_THROW(loadRootOf("<bootstrapInfo id=\"b\">a b c</bootstrapInfo>"), std::runtime_error);
    EXPECT_THROW(loadRootOf("<drmAdditionalHeader id=\"d\">QUJ</drmAdditionalHeader>"),
                 std::runtime_error);
}
