#include <gtest/gtest.h>

#include "kvl/minidom/DOMException.h"
#include "kvl/minidom/Dom.h"
#include "kvl/minidom/Node.h"

using namespace kvl::minidom;
using kz::test::outline;

namespace {

class NodeTest : public ::testing::Test {
protected:
    ElementPtr make(const std::string& name) { return document->createElementNS("", name); }

    /// A root with the children a, b and c.
    void SetUp() override {
        for (const ElementPtr& child : {a, b, c}) root->appendChild(child);
    }

    template <typename Action>
    int codeOf(Action action) {
        try {
            action();
        } catch (const DOMException& failure) {
            return failure.code();
        }
        return 0;
    }

    DocumentPtr document = createDocument("", "r");
    ElementPtr root = document->getDocumentElement();
    ElementPtr a = make("a");
    ElementPtr b = make("b");
    ElementPtr c = make("c");
};

}  // namespace

TEST_F(NodeTest, KnowsItsNameInParts) {
    const ElementPtr element = document->createElementNS("urn:x", "p:q:name");
    EXPECT_EQ(element->getNodeName(), "p:q:name");
    EXPECT_EQ(element->getNamespaceURI(), "urn:x");
    EXPECT_EQ(element->getPrefix(), "p:q");
    EXPECT_EQ(element->getLocalName(), "name");
    EXPECT_EQ(element->getOwnerDocument(), document);
    EXPECT_EQ(element->getParentNode(), nullptr);
}

TEST_F(NodeTest, HasTheNumberOfItsKindAsType) {
    root->setAttribute("x", "1");
    EXPECT_EQ(static_cast<int>(root->getNodeType()), 1);
    EXPECT_EQ(static_cast<int>(root->getAttributes()->item(0)->getNodeType()), 2);
    EXPECT_EQ(static_cast<int>(document->createTextNode("t")->getNodeType()), 3);
    EXPECT_EQ(static_cast<int>(document->getNodeType()), 9);
    const DocumentPtr parsed = kz::test::parse("<r><!--c--></r>");
    EXPECT_EQ(static_cast<int>(parsed->getDocumentElement()->getFirstChild()->getNodeType()), 0);
}

TEST_F(NodeTest, HasAValueOnlyAsTextOrAttribute) {
    root->setAttribute("x", "1");
    EXPECT_EQ(root->getNodeValue(), "");
    EXPECT_EQ(document->getNodeValue(), "");
    EXPECT_EQ(root->getAttributes()->item(0)->getNodeValue(), "1");
    const TextPtr text = document->createTextNode("t");
    EXPECT_EQ(text->getNodeValue(), "t");
    text->setData("u");
    EXPECT_EQ(text->getData(), "u");
}

TEST_F(NodeTest, GivesFirstAndLastChildOrNull) {
    EXPECT_EQ(root->getFirstChild(), a);
    EXPECT_EQ(root->getLastChild(), c);
    EXPECT_EQ(a->getFirstChild(), nullptr);
    EXPECT_EQ(a->getLastChild(), nullptr);
    EXPECT_EQ(a->getParentNode(), root);
}

TEST_F(NodeTest, GivesACopyOfItsChildList) {
    const auto children = root->getChildNodes();
    root->removeChild(a);
    EXPECT_EQ(children->getLength(), 3U);
    EXPECT_EQ(children->item(0), a);
    EXPECT_EQ(children->item(3), nullptr);
    EXPECT_EQ(root->getChildNodes()->getLength(), 2U);
}

TEST_F(NodeTest, HasAttributesOnlyAsElement) {
    EXPECT_EQ(document->getAttributes(), nullptr);
    EXPECT_EQ(document->createTextNode("t")->getAttributes(), nullptr);
    EXPECT_EQ(root->getAttributes()->getLength(), 0U);
}

TEST_F(NodeTest, InsertsBeforeAChild) {
    const ElementPtr n = make("n");
    EXPECT_EQ(root->insertBefore(n, b), n);
    EXPECT_EQ(outline(*root), "{}r({}a {}n {}b {}c)");
    EXPECT_EQ(n->getParentNode(), root);
    root->insertBefore(c, a);
    EXPECT_EQ(outline(*root), "{}r({}c {}a {}n {}b)");
}

TEST_F(NodeTest, InsertBeforeRefusesANullReference) {
    EXPECT_EQ(codeOf([&] { root->insertBefore(make("n"), nullptr); }), 8);
    EXPECT_EQ(outline(*root), "{}r({}a {}b {}c)");
}

TEST_F(NodeTest, InsertBeforeRefusesAReferenceThatIsNoChild) {
    EXPECT_EQ(codeOf([&] { root->insertBefore(make("n"), make("x")); }), 8);
    EXPECT_EQ(codeOf([&] { root->insertBefore(make("n"), root); }), 8);
}

TEST_F(NodeTest, ReplacesAChild) {
    const ElementPtr n = make("n");
    EXPECT_EQ(root->replaceChild(n, b), n);
    EXPECT_EQ(outline(*root), "{}r({}a {}n {}c)");
    EXPECT_EQ(n->getParentNode(), root);
    EXPECT_EQ(b->getParentNode(), nullptr);
    EXPECT_EQ(codeOf([&] { root->replaceChild(make("m"), b); }), 8);
}

TEST(DOMExceptionTest, SaysWhatItsNumberMeans) {
    const DOMExceptionImpl failure(DOMException::kNotFound);
    EXPECT_EQ(failure.code(), 8);
    EXPECT_STREQ(failure.what(), "DOM node not found");
}

TEST_F(NodeTest, MovesAChildThatReplacesAnother) {
    EXPECT_EQ(root->replaceChild(c, a), c);
    EXPECT_EQ(outline(*root), "{}r({}c {}b)");
    EXPECT_EQ(root->replaceChild(b, b), b);
    EXPECT_EQ(outline(*root), "{}r({}c {}b)");
    EXPECT_EQ(b->getParentNode(), root);
}

TEST_F(NodeTest, RemovesAChild) {
    EXPECT_EQ(root->removeChild(b), b);
    EXPECT_EQ(outline(*root), "{}r({}a {}c)");
    EXPECT_EQ(b->getParentNode(), nullptr);
}

TEST_F(NodeTest, RefusesToRemoveWhatIsNoChildWithCode8) {
    EXPECT_EQ(codeOf([&] { root->removeChild(make("a")); }), 8);
    EXPECT_EQ(codeOf([&] { root->removeChild(nullptr); }), 8);
    EXPECT_EQ(codeOf([&] { a->removeChild(b); }), 8);
}

TEST_F(NodeTest, ThrowsAStandardExceptionToo) {
    EXPECT_THROW(root->removeChild(root), std::exception);
}

TEST_F(NodeTest, AppendsAnExistingChildAtTheEnd) {
    EXPECT_EQ(root->appendChild(a), a);
    EXPECT_EQ(outline(*root), "{}r({}b {}c {}a)");
}

TEST_F(NodeTest, DisposesOfEverythingBelow) {
    const ElementPtr deep = make("deep");
    a->appendChild(deep);
    a->setAttribute("x", "1");
    root->dispose();
    EXPECT_EQ(root->getFirstChild(), nullptr);
    EXPECT_EQ(a->getParentNode(), nullptr);
    EXPECT_EQ(a->getFirstChild(), nullptr);
    EXPECT_EQ(a->getAttributes()->getLength(), 0U);
    EXPECT_EQ(deep->getParentNode(), nullptr);
}

TEST_F(NodeTest, DocumentDisposesOfItsRootAndDropsIt) {
    document->dispose();
    EXPECT_EQ(document->getDocumentElement(), nullptr);
    EXPECT_EQ(root->getFirstChild(), nullptr);
}

TEST_F(NodeTest, IsFreedWithItsDocumentUnlessSomebodyHoldsIt) {
    const std::weak_ptr<Node> freed = c;
    c.reset();
    root.reset();
    document.reset();
    EXPECT_TRUE(freed.expired());
    EXPECT_EQ(a->getParentNode(), nullptr);
    EXPECT_EQ(a->getOwnerDocument(), nullptr);
}
