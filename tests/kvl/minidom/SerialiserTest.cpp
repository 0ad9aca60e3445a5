#include <gtest/gtest.h>

#include "kvl/minidom/Dom.h"
#include "kvl/minidom/Serialiser.h"

using namespace kvl::minidom;
using kz::test::outline;
using kz::test::parse;
using kz::test::serialised;

namespace {

const std::string kDeclaration = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>";

}  // namespace

TEST(SerialiserTest, WritesAnElementWithoutChildrenAsTwoTagsOnTwoLines) {
    EXPECT_EQ(serialised(parse("<r/>")), kDeclaration + "\n<r>\n</r>\n");
}

TEST(SerialiserTest, WritesTextOnALineOfItsOwn) {
    EXPECT_EQ(serialised(parse("<r><a>x</a><b/></r>")),
              kDeclaration + "\n<r>\n\t<a>\n\t\tx\n\t</a>\n\t<b>\n\t</b>\n</r>\n");
}

TEST(SerialiserTest, WritesAnEmptyTextAsALineOfIndent) {
    const DocumentPtr document = createDocument("", "r");
    document->getDocumentElement()->appendChild(document->createTextNode(""));
    EXPECT_EQ(serialised(document), kDeclaration + "\n<r>\n\t\n</r>\n");
}

TEST(SerialiserTest, WritesEachAttributeOnItsOwnLine) {
    EXPECT_EQ(serialised(parse("<r><a x=\"1\" y=\"2\"/></r>"), "  "), kDeclaration + R"(
<r>
  <a
     x="1"
     y="2"
  >
  </a>
</r>
)");
}

TEST(SerialiserTest, WritesOneLineWithoutAnIndent) {
    EXPECT_EQ(serialised(parse("<r x=\"1\" y=\"2\"><a>t</a></r>"), ""),
              kDeclaration + "<r x=\"1\" y=\"2\"><a>t</a></r>");
}

TEST(SerialiserTest, DeclaresANamespaceOnceAtItsFirstUse) {
    const DocumentPtr document = createDocument("urn:d", "r");
    const ElementPtr root = document->getDocumentElement();
    root->appendChild(document->createElementNS("urn:d", "a"));
    root->appendChild(document->createElementNS("urn:p", "p:b"))
        ->appendChild(document->createElementNS("urn:p", "p:c"));
    root->appendChild(document->createElementNS("urn:p", "p:d"));
    EXPECT_EQ(serialised(document, ""),
              kDeclaration +
                  "<r xmlns=\"urn:d\"><a></a><p:b xmlns:p=\"urn:p\"><p:c></p:c></p:b>"
                  "<p:d xmlns:p=\"urn:p\"></p:d></r>");
}

TEST(SerialiserTest, DoesNotCompareTheUriOfABoundPrefix) {
    EXPECT_EQ(serialised(parse("<r xmlns=\"urn:a\"><b xmlns=\"urn:b\"/></r>"), ""),
              kDeclaration + "<r xmlns=\"urn:a\"><b></b></r>");
    EXPECT_EQ(serialised(parse("<r><b xmlns=\"urn:b\"/></r>"), ""),
              kDeclaration + "<r><b></b></r>");
}

TEST(SerialiserTest, DeclaresThePrefixOfAnAttributeThatNobodyBinds) {
    const std::string written =
        serialised(parse("<r xmlns:p=\"urn:p\" p:x=\"1\" p:y=\"2\"><a p:x=\"3\"/></r>"), "");
    EXPECT_EQ(written,
              kDeclaration + "<r xmlns:p=\"urn:p\" p:x=\"1\" p:y=\"2\"><a p:x=\"3\"></a></r>");
}

TEST(SerialiserTest, DeclaresThePrefixOfElementAndAttributeOnce) {
    EXPECT_EQ(serialised(parse("<p:r xmlns:p=\"urn:p\" p:x=\"1\"/>"), ""),
              kDeclaration + "<p:r xmlns:p=\"urn:p\" p:x=\"1\"></p:r>");
}

TEST(SerialiserTest, WritesValuesAsTheyAreInTheTree) {
    const DocumentPtr document = createDocument("", "r");
    document->getDocumentElement()->setAttribute("x", "a&b<\"");
    document->getDocumentElement()->appendChild(document->createTextNode("<&>"));
    EXPECT_EQ(serialised(document, ""), kDeclaration + "<r x=\"a&b<\"\"><&></r>");
}

TEST(SerialiserTest, KeepsRawMarkup) {
    EXPECT_EQ(serialised(parse("<r><!-- a & b --></r>"), " "),
              kDeclaration + "\n<r>\n <!-- a & b -->\n</r>\n");
}

TEST(SerialiserTest, GivesATextThatParsesToTheSameTree) {
    const DocumentPtr document = parse(
        "<r xmlns=\"urn:d\" xmlns:p=\"urn:p\"><id>one two</id><p:a x=\"1\" p:y=\"2\">text"
        "<b/>more<!-- c --></p:a></r>");
    const std::string once = serialised(document);
    EXPECT_EQ(outline(parse(once)), outline(document));
    EXPECT_EQ(serialised(parse(once)), once);
}
