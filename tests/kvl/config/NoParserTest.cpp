#include <sstream>

#include <expat.h>
#include <gtest/gtest.h>

#include "kvl/config/ConfigNode.h"

namespace {

bool parsersFail = false;

/// Makes parsers fail to come into being while it lives.
class NoParsers {
public:
    NoParsers() { parsersFail = true; }
    ~NoParsers() { parsersFail = false; }
    NoParsers(const NoParsers&) = delete;
    NoParsers& operator=(const NoParsers&) = delete;
};

}  // namespace

/// Stands in front of Expat's function in this program.
extern "C" XML_Parser XMLCALL XML_ParserCreate(const XML_Char* encoding) {
    return parsersFail ? nullptr : XML_ParserCreate_MM(encoding, nullptr, nullptr);
}

namespace kvl::config {
namespace {

TEST(ConfigReaderTest, TakesAnyFileForAnEmptyOneWithoutAParser) {
    const NoParsers none;
    for (const char* xml : {"<settings><bitrate>4</bitrate></settings>", "<broken", ""}) {
        ConfigNode root;
        std::istringstream stream(xml);
        EXPECT_NO_THROW(readStream(root, stream)) << xml;
        EXPECT_TRUE(root.children.empty()) << xml;
        EXPECT_FALSE(root.hasData) << xml;
    }
}

}  // namespace
}  // namespace kvl::config
