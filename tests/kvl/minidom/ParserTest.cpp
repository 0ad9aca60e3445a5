#include <gtest/gtest.h>

#include "kvl/minidom/Dom.h"
#include "kvl/minidom/ParseExceptions.h"
#include "kvl/minidom/Parser.h"
#include "support/FailingInput.h"
#include "support/TempDir.h"

using namespace kvl::minidom;
using kz::test::outline;
using kz::test::parse;
using kz::test::TempDir;

namespace {

std::string nested(std::size_t depth) {
    std::string xml;
    for (std::size_t i = 0; i < depth; ++i) xml += "<a>";
    for (std::size_t i = 0; i < depth; ++i) xml += "</a>";
    return xml;
}

}  // namespace

TEST(ParserTest, BuildsElementsAttributesAndTexts) {
    EXPECT_EQ(outline(parse("<r><a x=\"1\" y=\"\">one</a><b/></r>")),
              "{}r({}a[{}x=1 {}y=](\"one\") {}b)");
}

TEST(ParserTest, GivesEveryNodeItsOwnerAndParent) {
    const DocumentPtr document = parse("<r><a x=\"1\">t</a></r>");
    const NodePtr a = document->getDocumentElement()->getFirstChild();
    EXPECT_EQ(a->getOwnerDocument(), document);
    EXPECT_EQ(a->getParentNode(), document->getDocumentElement());
    EXPECT_EQ(a->getFirstChild()->getParentNode(), a);
    EXPECT_EQ(a->getFirstChild()->getOwnerDocument(), document);
    EXPECT_EQ(a->getAttributes()->item(0)->getOwnerDocument(), document);
}

TEST(ParserTest, SeesADeclarationOnTheElementItself) {
    EXPECT_EQ(outline(parse("<p:r xmlns:p=\"http://h.example/p\" p:x=\"1\"><p:a/></p:r>")),
              "{http://h.example/p}p:r[{http://h.example/p}p:x=1]({http://h.example/p}p:a)");
}

TEST(ParserTest, RebuildsNamesFromTheInnermostScopeThatKnowsTheUri) {
    EXPECT_EQ(outline(parse("<o:r xmlns:o=\"urn:u\"><i:a xmlns:i=\"urn:u\"/><o:b/></o:r>")),
              "{urn:u}o:r({urn:u}i:a {urn:u}o:b)");
}

TEST(ParserTest, EndsADeclarationWithItsElement) {
    EXPECT_EQ(outline(parse("<r xmlns=\"urn:a\"><b xmlns=\"urn:b\"/><c xmlns=\"\"/><d/></r>")),
              "{urn:a}r({urn:b}b {}c {urn:a}d)");
}

TEST(ParserTest, RefusesAnUndeclaredPrefixAsNotWellFormed) {
    EXPECT_THROW(parse("<p:r/>"), XMLParseException);
    EXPECT_THROW(parse("<r p:x=\"1\"/>"), XMLParseException);
}

TEST(ParserTest, RefusesAUriThatNoScopeKnows) {
    EXPECT_THROW(parse("<r xml:lang=\"en\"/>"), NamespaceException);
    EXPECT_THROW(parse("<xml:r/>"), NamespaceException);
}

TEST(ParserTest, DropsLinesOfOnlyWhiteSpace) {
    const std::string xml = "<r>\n \t\n<a> \r\n </a>\n</r>";
    EXPECT_EQ(outline(parse(xml)), "{}r({}a)");
    EXPECT_EQ(outline(parse(xml, true)), "{}r({}a)");
}

TEST(ParserTest, TrimsTextUnlessWhiteSpaceIsToBeKept) {
    const std::string xml = "<r>\n\t a b \n</r>";
    EXPECT_EQ(outline(parse(xml)), "{}r(\"a b\")");
    EXPECT_EQ(outline(parse(xml, true)), "{}r(\"\t a b \")");
}

TEST(ParserTest, JoinsTheLinesOfAText) {
    EXPECT_EQ(outline(parse("<r>\n  QUJD\n  REVG\n</r>")), "{}r(\"QUJDREVG\")");
}

TEST(ParserTest, KeepsTheBlanksAroundAnEntity) {
    EXPECT_EQ(outline(parse("<r> Tom &amp; Jerry &lt;3 &#169; &quot; &apos; </r>")),
              "{}r(\"Tom & Jerry <3 \xc2\xa9 \" '\")");
}

TEST(ParserTest, KeepsTheBlanksWhereverABlockEnds) {
    const std::string words = "two words and more words ";
    std::string value;
    while (value.size() < 3000) value += words;
    value += "end";
    for (std::size_t shift = 0; shift < words.size(); ++shift) {
        const std::string xml = "<r x=\"" + std::string(shift, '.') + "\">" + value + "</r>";
        EXPECT_EQ(parse(xml)->getDocumentElement()->getFirstChild()->getNodeValue(), value)
            << shift;
    }
}

TEST(ParserTest, KeepsTextsOnBothSidesOfAChildApart) {
    EXPECT_EQ(outline(parse("<r>one<a/>two</r>")), "{}r(\"one\" {}a \"two\")");
}

TEST(ParserTest, KeepsCommentsAndOtherMarkupAsRawNodes) {
    EXPECT_EQ(outline(parse("<r>a<!-- c\n d --><?pi x?>b</r>")),
              "{}r(\"a\" |<!-- c\n d --><?pi x?>| \"b\")");
    EXPECT_EQ(outline(parse("<r><![CDATA[a<b]]></r>")), "{}r(|<![CDATA[| \"a<b\" |]]>|)");
}

TEST(ParserTest, LeavesReferencesToDeclaredEntitiesAsTheyStand) {
    EXPECT_EQ(outline(parse("<!DOCTYPE r [<!ENTITY e \"long\">]><r>&e;</r>")), "{}r(|&e;|)");
}

TEST(ParserTest, DropsWhatStandsOutsideTheRoot) {
    EXPECT_EQ(outline(parse("<?xml version=\"1.0\"?>\n<!-- a --><!DOCTYPE r>\n<r/><!-- b -->\n")),
              "{}r");
}

TEST(ParserTest, ReportsWhereTheTextIsNotWellFormed) {
    try {
        parse("<r>\n  <a></b>\n</r>");
        FAIL() << "nothing thrown";
    } catch (const XMLParseException& failure) {
        EXPECT_EQ(failure.code, 7);
        EXPECT_EQ(failure.message, "mismatched tag");
        EXPECT_STREQ(failure.what(), "mismatched tag");
        EXPECT_EQ(failure.line, 2U);
        EXPECT_EQ(failure.column, 7U);
    }
}

TEST(ParserTest, RefusesWhatIsNoDocument) {
    for (const char* xml : {"", " ", "text", "<r>", "<r/><s/>", "<r a='1' a='2'/>", "<r>&x;</r>"}) {
        EXPECT_THROW(parse(xml), XMLParseException) << xml;
    }
}

TEST(ParserTest, RefusesBytesThatAreNotUtf8) {
    EXPECT_THROW(parse("<r>\xff</r>"), XMLParseException);
    EXPECT_THROW(parse("<r>\x01</r>"), XMLParseException);
}

TEST(ParserTest, Allows256LevelsAndRefusesOneMore) {
    EXPECT_EQ(outline(parse(nested(256))).substr(0, 9), "{}a({}a({");
    EXPECT_THROW(parse(nested(257)), std::runtime_error);
}

TEST(ParserTest, ReadsFilesOfExactlyOneBlockAndItsNeighbours) {
    const TempDir dir;
    for (const std::size_t size : {1023U, 1024U, 1025U, 2048U}) {
        const std::string value(size - 7, 'v');
        const std::string path = dir.write("f.xml", kz::test::text("<r>" + value + "</r>"));
        EXPECT_EQ(outline(parseFile(path, false)), "{}r(\"" + value + "\")") << size;
    }
}

TEST(ParserTest, AReadThatFailsIsNoEndOfTheFile) {
    kz::test::FailingInput input("<r/>");
    std::istream stream(&input);
    EXPECT_THROW(parseStream(stream, false), std::runtime_error);
}

TEST(ParserTest, RefusesAMissingFileWithAPlainException) {
    const TempDir dir;
    EXPECT_THROW(parseFile(dir / "none.xml", false), std::runtime_error);
}
