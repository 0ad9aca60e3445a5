#include <dlfcn.h>
#include <sstream>

#include <expat.h>
#include <gtest/gtest.h>

#include "kvl/config/ConfigNode.h"
#include "kvl/config/ConfigReader.h"

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
extern "C" XML_Parser XMLCALL XML_ParserCreate_MM(const XML_Char* encoding,
                                                  const XML_Memory_Handling_Suite* memory,
                                                  const XML_Char* separator) {
    static const auto real =
        reinterpret_cast<decltype(&XML_ParserCreate_MM)>(dlsym(RTLD_NEXT, "XML_ParserCreate_MM"));
    return parsersFail ? nullptr : real(encoding, memory, separator);
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
