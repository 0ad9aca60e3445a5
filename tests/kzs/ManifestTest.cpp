#include <locale>

#include <gtest/gtest.h>

#include "kzs/Manifest.h"
#include "kzs/ManifestFixture.h"
#include "kzs/base/Clock.h"

using torvo::kzs::Manifest;
using torvo::kzs::Rendition;

class ManifestTest : public kz::test::ManifestFixture {};

namespace {

/// Writes 1234.5 as "1.234,5".
struct CommaPoint : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

}  // namespace

TEST_F(ManifestTest, BeginsWithIdMimeTypeStreamTypeAndDuration) {
    EXPECT_EQ(written(*newManifest()), kHead + kFirstChildren + kTail);
}

TEST_F(ManifestTest, WritesTheDurationInSeventeenDigits) {
    const std::pair<double, const char*> cases[] = {
        {4.026, "4.0259999999999998"}, {0.1, "0.10000000000000001"}, {0.0, "0"}, {12.0, "12"}};
    for (const auto& [duration, text] : cases) {
        EXPECT_NE(written(*newManifest("a", duration))
                      .find("<duration>\n\t\t" + std::string(text) + "\n"),
                  std::string::npos)
            << text;
    }
}

TEST_F(ManifestTest, PutsBootstrapHeaderAndMediaBehindThem) {
    const auto manifest = newManifest();
    Rendition& rendition = manifest->addMedia("s", "u", 1500.0);
    addFragment(rendition, 4000);
    rendition.drmContentId = "c";
    rendition.drmMetadata = {1, 2, 3};
    rendition.metadata = {4, 5, 6};
    EXPECT_EQ(committed(*manifest), kHead + kFirstChildren + R"(	<bootstrapInfo
		 profile="named"
		 id="bootstrap101"
	>
		)" + bootstrapText(4000) +
                                        R"(
	</bootstrapInfo>
	<drmAdditionalHeader
		 drmContentId="c"
		 id="drmMetadata102"
	>
		AQID
	</drmAdditionalHeader>
	<media
		 streamId="s"
		 url="u"
		 bitrate="1500"
		 bootstrapInfoId="bootstrap101"
		 drmAdditionalHeaderId="drmMetadata102"
	>
		<metadata>
			BAUG
		</metadata>
	</media>
)" + kTail);
}

TEST_F(ManifestTest, RefersToFilesByUrl) {
    const auto manifest = newManifest();
    Rendition& rendition = manifest->addMedia("s", "u", 0.0);
    addFragment(rendition, 4000);
    rendition.bootstrapUrl = "s.bootstrap";
    rendition.drmContentId = "c";
    rendition.drmMetadata = {1, 2, 3};
    rendition.drmUrl = "s.drmmeta";
    EXPECT_EQ(committed(*manifest), kHead + kFirstChildren + R"(	<bootstrapInfo
		 profile="named"
		 url="s.bootstrap"
		 id="bootstrap101"
	>
	</bootstrapInfo>
	<drmAdditionalHeader
		 url="s.drmmeta"
		 drmContentId="c"
		 id="drmMetadata102"
	>
	</drmAdditionalHeader>
	<media
		 streamId="s"
		 url="u"
		 bootstrapInfoId="bootstrap101"
		 drmAdditionalHeaderId="drmMetadata102"
	>
		<metadata>
			
		</metadata>
	</media>
)" + kTail);
}

TEST_F(ManifestTest, LeavesOutWhatARenditionDoesNotHave) {
    const auto manifest = newManifest();
    manifest->addMedia("s", "", 0.0);
    EXPECT_EQ(committed(*manifest), kHead + kFirstChildren + R"(	<media
		 streamId="s"
	>
		<metadata>
			
		</metadata>
	</media>
)" + kTail);
}

TEST_F(ManifestTest, GivesABootstrapFileItsElementEvenWithoutFragments) {
    const auto manifest = newManifest();
    manifest->addMedia("s", "u", 0.0).bootstrapUrl = "s.bootstrap";
    const std::string text = committed(*manifest);
    EXPECT_EQ(countOf("<bootstrapInfo", text), 1U);
    EXPECT_EQ(countOf("url=\"s.bootstrap\"", text), 1U);
    EXPECT_EQ(countOf("bootstrapInfoId=\"bootstrap101\"", text), 1U);
}

TEST_F(ManifestTest, GivesARenditionWithoutProtectionNoHeader) {
    const auto manifest = newManifest();
    manifest->addMedia("s", "u", 0.0).drmMetadata = {1, 2, 3};
    EXPECT_EQ(countOf("drm", committed(*manifest)), 0U);
}

TEST_F(ManifestTest, GivesAContentIdAloneAHeaderWithoutContent) {
    const auto manifest = newManifest();
    manifest->addMedia("s", "u", 0.0).drmContentId = "x";
    EXPECT_NE(committed(*manifest).find("\t\t drmContentId=\"x\"\n\t\t id=\"drmMetadata101\"\n"
                                        "\t>\n\t\t\n\t</drmAdditionalHeader>\n"),
              std::string::npos);
}

TEST_F(ManifestTest, WritesTheBitrateInSixDigits) {
    const std::pair<double, const char*> cases[] = {
        {1500000.0, "1.5e+06"}, {1500.0, "1500"}, {123456.7, "123457"}, {0.5, "0.5"}, {-2, "-2"}};
    for (const auto& [bitrate, text] : cases) {
        const auto manifest = newManifest();
        manifest->addMedia("s", "u", bitrate);
        EXPECT_EQ(countOf("bitrate=\"" + std::string(text) + "\"", committed(*manifest)), 1U)
            << text;
    }
}

TEST_F(ManifestTest, WritesNumbersAlikeInAnyLocale) {
    const std::locale former =
        std::locale::global(std::locale(std::locale::classic(), new CommaPoint));
    const auto manifest = newManifest("a", 1234.5);
    manifest->addMedia("s", "u", 2345.5);
    const std::string text = committed(*manifest);
    std::locale::global(former);
    EXPECT_EQ(countOf("\t\t1234.5\n", text), 1U);
    EXPECT_EQ(countOf("bitrate=\"2345.5\"", text), 1U);
}

TEST_F(ManifestTest, OrdersRenditionsByTheBytesOfTheirStreamIds) {
    const auto manifest = newManifest();
    for (const char* id : {"b", "a", "\xc3\xa9", "B"}) manifest->addMedia(id, "", 0.0);
    const std::string text = committed(*manifest);
    EXPECT_LT(text.find("streamId=\"B\""), text.find("streamId=\"a\""));
    EXPECT_LT(text.find("streamId=\"a\""), text.find("streamId=\"b\""));
    EXPECT_LT(text.find("streamId=\"b\""), text.find("streamId=\"\xc3\xa9\""));
}

TEST_F(ManifestTest, TakesIdsFrom1To9999) {
    for (const auto& [number, id] : {std::pair(0, "bootstrap1"), std::pair(9998, "bootstrap9999"),
                                     std::pair(9999, "bootstrap1")}) {
        torvo::kzs::setRandomForTests([n = number] { return n; });
        const auto manifest = newManifest();
        addFragment(manifest->addMedia("s", "u", 0.0), 4000);
        manifest->commit();
        EXPECT_EQ(manifest->bootstraps().begin()->first, id) << number;
    }
}

TEST_F(ManifestTest, DrawsTheSameIdsInTheSameSecond) {
    torvo::kzs::setRandomForTests({});
    const auto idsMadeAt = [](std::int64_t seconds) {
        torvo::kzs::setClockForTests(seconds);
        const auto fresh = newManifest();
        torvo::kzs::setClockForTests(std::nullopt);
        std::string ids;
        for (int i = 0; i < 8; ++i) {
            addFragment(fresh->addMedia(std::to_string(i), "", 0.0), 1000 + 100 * i);
        }
        fresh->commit();
        for (const auto& [id, entry] : fresh->bootstraps()) ids += id + " ";
        return ids;
    };
    const std::string ids = idsMadeAt(1000000);
    EXPECT_EQ(idsMadeAt(1000000), ids);
    EXPECT_NE(idsMadeAt(1000001), ids);
}

TEST_F(ManifestTest, PassesTheEndOfTheRangeWhenAnIdIsTaken) {
    torvo::kzs::setRandomForTests([] { return 9998; });
    const auto manifest = newManifest();
    addFragment(manifest->addMedia("a", "", 0.0), 4000);
    addFragment(manifest->addMedia("b", "", 0.0), 5000);
    const std::string text = committed(*manifest);
    EXPECT_EQ(countOf("id=\"bootstrap9999\"", text), 1U);
    EXPECT_EQ(countOf("id=\"bootstrap10000\"", text), 1U);
    EXPECT_EQ(countOf("bootstrapInfoId=\"bootstrap10000\"", text), 1U);
}

TEST_F(ManifestTest, GivesItsTimingToTheBootstrapsOfRenditions) {
    const auto manifest = newManifest();
    const auto& builder = manifest->addMedia("s", "u", 0.0).bootstrapBuilder;
    EXPECT_EQ(builder.durationPrecision(), 100.0);
    EXPECT_EQ(builder.frameDuration(), 40.0);
    EXPECT_EQ(builder.allowedDrift(), 1000U);
}

TEST_F(ManifestTest, ReplacesARenditionOfTheSameRun) {
    const auto manifest = newManifest();
    manifest->addMedia("s", "old", 100.0);
    Rendition& rendition = manifest->addMedia("s", "new", 0.0);
    EXPECT_EQ(&rendition, &manifest->renditions().at("s"));
    const std::string text = committed(*manifest);
    EXPECT_EQ(countOf("<media", text), 1U);
    EXPECT_EQ(countOf("url=\"new\"", text), 1U);
    EXPECT_EQ(countOf("bitrate", text), 0U);
}

TEST_F(ManifestTest, EscapesNamesOnWriting) {
    const auto manifest = newManifest("R&D <1>");
    manifest->addMedia("a \"b\" & c", "<u>", 0.0);
    const std::string text = committed(*manifest);
    EXPECT_EQ(countOf("\t\tR&amp;D &lt;1&gt;\n", text), 1U);
    EXPECT_EQ(countOf("streamId=\"a &quot;b&quot; &amp; c\"", text), 1U);
    EXPECT_EQ(countOf("url=\"&lt;u&gt;\"", text), 1U);
}
