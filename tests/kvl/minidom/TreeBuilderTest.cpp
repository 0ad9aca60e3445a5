#include <gtest/gtest.h>

#include "kvl/minidom/Dom.h"
#include "kvl/minidom/TreeBuilder.h"

using namespace kvl::minidom;
using kz::test::outline;

namespace {

const char* const kNoAttributes[] = {nullptr};

/// A root with the pieces of markup in it.
std::string rootOf(const std::vector<std::string>& pieces, bool keepWhitespace) {
    TreeBuilder builder(keepWhitespace);
    builder.startElement("r", kNoAttributes);
    for (const std::string& piece : pieces) builder.rawMarkup(piece);
    builder.endElement("r");
    return outline(builder.document());
}

}  // namespace

TEST(TreeBuilderTest, TreatsWhiteSpaceInMarkupAsInText) {
    EXPECT_EQ(rootOf({" \n\t", " a ", "b ", " "}, false), "{}r(|ab|)");
    EXPECT_EQ(rootOf({" \n\t", " a ", "b ", " "}, true), "{}r(| a b |)");
}

TEST(TreeBuilderTest, RefusesAnEndThatDoesNotFit) {
    TreeBuilder nothingOpen(false);
    EXPECT_THROW(nothingOpen.endElement("r"), std::runtime_error);
    TreeBuilder otherNamespace(false);
    otherNamespace.declareNamespace("p", "urn:p");
    otherNamespace.startElement("r", kNoAttributes);
    EXPECT_THROW(otherNamespace.endElement("urn:p:r"), std::runtime_error);
    TreeBuilder unknownNamespace(false);
    unknownNamespace.startElement("r", kNoAttributes);
    EXPECT_THROW(unknownNamespace.endElement("urn:q:r"), std::runtime_error);
}
