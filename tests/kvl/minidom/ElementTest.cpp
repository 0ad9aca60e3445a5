#include <gtest/gtest.h>

#include "kvl/minidom/DOMException.h"
#include "kvl/minidom/Dom.h"
#include "kvl/minidom/Element.h"
#include "kvl/minidom/ElementImpl.h"

using namespace kvl::minidom;
using kz::test::outline;
using kz::test::parse;

namespace {

std::string names(const NodeList& nodes) {
    std::string line;
    for (std::size_t i = 0; i < nodes.getLength(); ++i) {
        line += (i == 0 ? "" : " ") + nodes.item(i)->getNodeName();
    }
    return line;
}

}  // namespace

TEST(ElementTest, HasItsNodeNameAsTagName) {
    EXPECT_EQ(createDocument("u", "p:n")->getDocumentElement()->getTagName(), "p:n");
}

TEST(ElementTest, KeepsTheFirstPositionAndTheLastValueOfAnAttributeSetTwice) {
    const ElementPtr root = createDocument("", "r")->getDocumentElement();
    root->setAttribute("x", "1");
    root->setAttribute("y", "2");
    root->setAttribute("x", "3");
    EXPECT_EQ(outline(*root), "{}r[{}x=3 {}y=2]");
}

TEST(ElementTest, GivesAnEmptyTextForAMissingAttribute) {
    const ElementPtr root = createDocument("", "r")->getDocumentElement();
    EXPECT_EQ(root->getAttribute("x"), "");
}

TEST(ElementTest, GetAttributeTakesTheFirstOfThatLocalNameInAnyNamespace) {
    const DocumentPtr document = parse("<r xmlns:p=\"urn:p\" p:x=\"in p\" x=\"in none\"/>");
    EXPECT_EQ(document->getDocumentElement()->getAttribute("x"), "in p");
}

TEST(ElementTest, TellsAttributesOfTwoNamespacesApart) {
    const ElementPtr root = parse("<r xmlns:p=\"urn:p\" p:x=\"1\"/>")->getDocumentElement();
    root->setAttribute("x", "2");
    EXPECT_EQ(outline(*root), "{}r[{urn:p}p:x=1 {}x=2]");
}

TEST(ElementTest, SplitsTheNameOfANewAttributeAtItsLastColon) {
    const ElementPtr root = createDocument("", "r")->getDocumentElement();
    root->setAttribute("a:b:c", "1");
    const NodePtr attribute = root->getAttributes()->item(0);
    EXPECT_EQ(attribute->getPrefix(), "a:b");
    EXPECT_EQ(attribute->getLocalName(), "c");
    EXPECT_EQ(root->getAttribute("c"), "1");
}

TEST(ElementTest, GivesBackTheAttributeThatAnotherReplaced) {
    const DocumentPtr document = parse("<r x=\"1\"><s x=\"2\"/><t/></r>");
    const ElementPtr root = document->getDocumentElement();
    const auto attributeOf = [](const NodePtr& node) {
        return std::dynamic_pointer_cast<Attribute>(node->getAttributes()->item(0));
    };
    const AttributePtr first = attributeOf(root);
    EXPECT_EQ(root->setAttributeNode(attributeOf(root->getFirstChild())), first);
    EXPECT_EQ(root->getAttribute("x"), "2");
    const ElementPtr empty = std::dynamic_pointer_cast<Element>(root->getLastChild());
    EXPECT_EQ(empty->setAttributeNode(first), nullptr);
    EXPECT_THROW(root->setAttributeNode(nullptr), DOMExceptionImpl);
}

TEST(ElementTest, OwnsItsAttributesUntilTheyAreReplacedOrItIsDisposedOf) {
    const ElementPtr root = createDocument("", "r")->getDocumentElement();
    const auto ownerOf = [](const NodePtr& attribute) {
        return dynamic_cast<AttributeImpl&>(*attribute).ownerElement();
    };
    root->setAttribute("x", "1");
    const NodePtr first = root->getAttributes()->item(0);
    EXPECT_EQ(ownerOf(first), root);
    root->setAttribute("x", "2");
    EXPECT_EQ(ownerOf(first), nullptr);
    const NodePtr second = root->getAttributes()->item(0);
    EXPECT_EQ(ownerOf(second), root);
    root->dispose();
    EXPECT_EQ(ownerOf(second), nullptr);
}

TEST(ElementTest, FindsElementsOfAnyNamespaceAtAnyDepthInDocumentOrder) {
    const DocumentPtr document = parse(
        "<media xmlns:p=\"urn:p\" xmlns=\"urn:d\"><a><p:media><media/></p:media></a>"
        "<media id=\"last\"/></media>");
    const auto found = document->getDocumentElement()->getElementsByTagNameNS("*", "media");
    EXPECT_EQ(names(*found), "p:media media media");
    EXPECT_EQ(std::dynamic_pointer_cast<Element>(found->item(2))->getAttribute("id"), "last");
}

TEST(ElementTest, FindsElementsOfOneNamespaceOnly) {
    const DocumentPtr document =
        parse("<r xmlns:p=\"urn:p\" xmlns:q=\"urn:q\"><p:a/><q:a/><p:b/></r>");
    const ElementPtr root = document->getDocumentElement();
    EXPECT_EQ(names(*root->getElementsByTagNameNS("urn:p", "*")), "p:a p:b");
    EXPECT_EQ(names(*root->getElementsByTagNameNS("urn:q", "a")), "q:a");
    EXPECT_EQ(names(*root->getElementsByTagNameNS("urn:q", "b")), "");
}
