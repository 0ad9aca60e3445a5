#include <sstream>

#include <gtest/gtest.h>

#include "kvl/config/ConfigNode.h"
#include "kvl/config/ConfigReader.h"
#include "support/FailingInput.h"
#include "support/TempDir.h"

using namespace kvl::config;
using kz::test::TempDir;

namespace {

void parse(ConfigNode& root, const std::string& xml) {
    std::istringstream stream(xml);
    readStream(root, stream);
}

std::string failureOf(const std::string& path) {
    ConfigNode root;
    try {
        readFile(root, path);
    } catch (const ConfigException& failure) {
        return failure.what();
    }
    return "nothing thrown";
}

std::string nested(std::size_t depth) {
    std::string xml;
    for (std::size_t i = 0; i < depth; ++i) xml += "<a>";
    for (std::size_t i = 0; i < depth; ++i) xml += "</a>";
    return xml;
}

}  // namespace

TEST(ConfigReaderTest, PutsTheDocumentElementUnderTheRoot) {
    ConfigNode root;
    parse(root,
          "<?xml version=\"1.0\"?><settings><fragment-duration>4</fragment-duration>"
          "<output-path>out</output-path></settings>");
    ASSERT_EQ(root.children.size(), 1U);
    const ConfigNode& settings = *root.children[0];
    EXPECT_EQ(settings.name, "settings");
    EXPECT_EQ(settings.parent, &root);
    ASSERT_EQ(settings.children.size(), 2U);
    EXPECT_EQ(settings.children[0]->name, "fragment-duration");
    EXPECT_EQ(settings.children[0]->text(), "4");
    EXPECT_EQ(settings.child("output-path")->text(), "out");
    EXPECT_EQ(settings.child("output-path")->parent, &settings);
}

TEST(ConfigReaderTest, KeepsAttributesAsNodesWithText) {
    ConfigNode root;
    parse(root, "<a x=\"1\" y=\"\">t</a>");
    const ConfigNode& a = *root.child("a");
    ASSERT_EQ(a.attributes.size(), 2U);
    EXPECT_EQ(a.attributes[0]->name, "x");
    EXPECT_EQ(a.attributes[0]->text(), "1");
    EXPECT_EQ(a.attributes[1]->text(), "");
    EXPECT_EQ(a.attributes[1]->parent, &a);
    EXPECT_TRUE(a.children.empty());
}

TEST(ConfigReaderTest, KnowsNoNamespaces) {
    ConfigNode root;
    parse(root, "<s:a xmlns:s=\"urn:s\"/>");
    EXPECT_EQ(root.children[0]->name, "s:a");
    EXPECT_EQ(root.children[0]->attributes[0]->name, "xmlns:s");
}

TEST(ConfigReaderTest, GivesNoTextToAnElementOfOnlyWhiteSpace) {
    ConfigNode root;
    parse(root, "<a><b> \t\n  </b><c></c></a>");
    for (const char* name : {"b", "c"}) {
        const ConfigNode* node = root.child("a")->child(name);
        EXPECT_FALSE(node->hasData) << name;
        EXPECT_THROW(node->text(), NoDataException) << name;
    }
}

TEST(ConfigReaderTest, KeepsAPieceUntrimmed) {
    ConfigNode root;
    parse(root, "<a>\n    4  \n</a>");
    EXPECT_EQ(root.child("a")->text(), "    4  ");
}

TEST(ConfigReaderTest, JoinsThePiecesAroundAChild) {
    ConfigNode root;
    parse(root, "<a>one <b>inner</b> two</a>");
    EXPECT_EQ(root.child("a")->text(), "one  two");
    EXPECT_EQ(root.child("a")->child("b")->text(), "inner");
    EXPECT_EQ(root.child("a")->child("b")->parent, root.child("a"));
}

TEST(ConfigReaderTest, DropsAPieceOfOnlyWhiteSpaceBetweenTwoOthers) {
    ConfigNode root;
    parse(root, "<s><a>a&#32;b</a><b>a\nb</b><c>a b</c></s>");
    EXPECT_EQ(root.child("s")->child("a")->text(), "ab");
    EXPECT_EQ(root.child("s")->child("b")->text(), "ab");
    EXPECT_EQ(root.child("s")->child("c")->text(), "a b");
}

// Expat's buffers for all of these begin small and are moved as they grow.
TEST(ConfigReaderTest, KeepsLongNamesAndManyAttributes) {
    const std::string name(5000, 'n');
    const std::string value(5000, 'v');
    std::string xml = "<" + name;
    for (int i = 0; i < 100; ++i) {
        const std::string number = std::to_string(i);
        xml += " a" + number + "=\"" + number + value + "\"";
    }
    xml += "><" + name + "2>text</" + name + "2></" + name + ">";
    ConfigNode root;
    parse(root, xml);
    ASSERT_NE(root.child(name), nullptr);
    const ConfigNode& node = *root.child(name);
    ASSERT_EQ(node.attributes.size(), 100U);
    for (int i = 0; i < 100; ++i) {
        const ConfigNode& attribute = *node.attributes[static_cast<std::size_t>(i)];
        EXPECT_EQ(attribute.name, "a" + std::to_string(i));
        EXPECT_EQ(attribute.text(), std::to_string(i) + value);
    }
    ASSERT_EQ(node.children.size(), 1U);
    EXPECT_EQ(node.children[0]->name, name + "2");
    EXPECT_EQ(node.children[0]->text(), "text");
}

TEST(ConfigReaderTest, ResolvesEntities) {
    ConfigNode root;
    parse(root, "<a>R&amp;D &lt;x&gt; &#xe9;</a>");
    EXPECT_EQ(root.child("a")->text(), "R&D <x>\xc3\xa9");
}

TEST(ConfigReaderTest, ReadsLatin1AndUtf16AsUtf8) {
    ConfigNode latin;
    parse(latin, "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><a>\xe9</a>");
    EXPECT_EQ(latin.child("a")->text(), "\xc3\xa9");
    ConfigNode utf16;
    parse(utf16, std::string("\xfe\xff\0<\0a\0>\0\xe9\0<\0/\0a\0>", 18));
    EXPECT_EQ(utf16.child("a")->text(), "\xc3\xa9");
}

TEST(ConfigReaderTest, RefusesAnUnknownEncoding) {
    ConfigNode root;
    EXPECT_THROW(parse(root, "<?xml version=\"1.0\" encoding=\"windows-1252\"?><a>x</a>"),
                 BadFileException);
}

TEST(ConfigReaderTest, ReadsFilesOfExactlyOneBlockAndItsNeighbours) {
    for (const std::size_t size : {1023U, 1024U, 1025U, 2048U}) {
        const std::string value(size - 7, 'v');
        ConfigNode root;
        parse(root, "<a>" + value + "</a>");
        EXPECT_EQ(root.child("a")->text(), value) << size;
    }
}

TEST(ConfigReaderTest, RefusesAnEndTagThatDoesNotMatch) {
    const TempDir dir;
    EXPECT_EQ(failureOf(dir.write("bad.xml", kz::test::text("<a><b></a>"))), "Bad XML File");
}

TEST(ConfigReaderTest, RefusesWhatIsNotWellFormed) {
    for (const char* xml : {"", "plain", "<a>", "<a/><b/>", "<a x=1/>", "<a>&nothing;</a>"}) {
        ConfigNode root;
        EXPECT_THROW(parse(root, xml), BadFileException) << xml;
    }
}

TEST(ConfigReaderTest, RefusesAMissingFile) {
    const TempDir dir;
    EXPECT_EQ(failureOf(dir / "none.xml"), "File does not exist");
    EXPECT_EQ(failureOf(dir / std::string(5000, 'x')), "File does not exist");
}

TEST(ConfigReaderTest, RefusesAFolder) {
    const TempDir dir;
    EXPECT_EQ(failureOf(dir.path()), "Bad XML File");
}

TEST(ConfigReaderTest, TakesAnUnreadableFileForAnEmptyOne) {
    const TempDir dir;
    const std::string path = dir.makeSocket("s");
    ConfigNode root;
    readFile(root, path);
    EXPECT_TRUE(root.children.empty());
}

TEST(ConfigReaderTest, AReadThatFailsIsNoEndOfTheFile) {
    kz::test::FailingInput input("<a><b>1</b></a>");
    std::istream stream(&input);
    ConfigNode root;
    EXPECT_THROW(readStream(root, stream), BadFileException);
}

TEST(ConfigReaderTest, Allows256LevelsAndRefusesOneMore) {
    ConfigNode fits;
    parse(fits, nested(256));
    EXPECT_EQ(fits.children.size(), 1U);
    ConfigNode tooDeep;
    EXPECT_THROW(parse(tooDeep, nested(257)), BadFileException);
}
