#include <gtest/gtest.h>

#include "kvl/minidom/Dom.h"
#include "kvl/minidom/EscapedCopy.h"

using namespace kvl::minidom;
using kz::test::outline;
using kz::test::parse;
using kz::test::serialised;

TEST(EscapedCopyTest, ReplacesTheMarkupCharactersOfTextsAndAttributes) {
    const DocumentPtr document = createDocument("urn:a&b", "r");
    document->getDocumentElement()->setAttribute("x", "<\"a\" & 'b'>");
    document->getDocumentElement()->appendChild(document->createTextNode("<\"a\" & 'b'>"));
    EXPECT_EQ(outline(escapedCopy(*document)),
              "{urn:a&amp;b}r[{}x=&lt;&quot;a&quot; &amp; 'b'&gt;]"
              "(\"&lt;&quot;a&quot; &amp; 'b'&gt;\")");
}

TEST(EscapedCopyTest, LeavesTheDocumentAlone) {
    const DocumentPtr document = parse("<r x=\"&amp;\">&lt;<a/></r>");
    escapedCopy(*document);
    EXPECT_EQ(outline(document), "{}r[{}x=&](\"<\" {}a)");
}

TEST(EscapedCopyTest, KeepsLineEndsAndTabsOfAttributes) {
    const DocumentPtr document = parse("<r x=\"a&#9;b&#10;c&#13;d\"/>");
    EXPECT_EQ(outline(escapedCopy(*document)), "{}r[{}x=a&#9;b&#10;c&#13;d]");
}

TEST(EscapedCopyTest, LeavesRawMarkupUntouched) {
    EXPECT_EQ(outline(escapedCopy(*parse("<r><!-- a & b --></r>"))), "{}r(|<!-- a & b -->|)");
}

TEST(EscapedCopyTest, EscapesTextOutsideCdataSectionsOnly) {
    const DocumentPtr document = parse("<r>&amp;<![CDATA[a & b]]>&lt;</r>");
    EXPECT_EQ(outline(escapedCopy(*document)),
              "{}r(\"&amp;\" |<![CDATA[| \"a & b\" |]]>| \"&lt;\")");
}

TEST(EscapedCopyTest, GivesATextThatParsesToTheSameTree) {
    const DocumentPtr document = parse(
        "<r xmlns=\"urn:?a=1&amp;b=2\" xmlns:p=\"urn:p&lt;\"><p:a p:x=\"1 &lt; 2\" y=\" "
        "&quot;q&quot; \">R&amp;D &lt;one&gt;</p:a><![CDATA[<&>]]><!-- & --></r>");
    EXPECT_EQ(outline(parse(serialised(escapedCopy(*document)))), outline(document));
}
