#include <memory>

#include <gtest/gtest.h>

#include "kvl/config/ConfigNode.h"
#include "offline/ConfigType.h"

namespace torvo::offline {
namespace {

using kvl::config::ConfigNode;

/// Settings with one element <x> of that text.
std::unique_ptr<ConfigNode> settingsWith(const std::string& text) {
    auto settings = std::make_unique<ConfigNode>();
    auto node = std::make_unique<ConfigNode>();
    node->name = "x";
    node->hasData = true;
    node->data = text;
    settings->children.push_back(std::move(node));
    return settings;
}

template <typename Value>
Value readText(const ConfigType& type, const std::string& text) {
    OptionMap options;
    type.readFromConfig(options, *settingsWith(text), "x");
    return boost::any_cast<Value>(options.at("x"));
}

template <typename Value>
Value readNothing(const ConfigType& type) {
    OptionMap options;
    type.readFromConfig(options, ConfigNode(), "x");
    return boost::any_cast<Value>(options.at("x"));
}

TEST(ConfigTypeTest, ASwitchKnowsOnlyTheWordTrue) {
    const NoValueConfigType type("help");
    EXPECT_TRUE(readText<bool>(type, "true"));
    for (const char* text : {"yes", "1", "TRUE", "True", "on", "false", "", "truer"}) {
        EXPECT_FALSE(readText<bool>(type, text)) << text;
    }
    EXPECT_FALSE(readNothing<bool>(type));
}

TEST(ConfigTypeTest, ABoolTakesTwoWordsAndElseItsDefault) {
    const BoolConfigType isTrue(true, "help");
    const BoolConfigType isFalse(false, "help");
    EXPECT_TRUE(readText<bool>(isFalse, "true"));
    EXPECT_FALSE(readText<bool>(isTrue, "false"));
    for (const char* text : {"yes", "no", "0", "FALSE", ""}) {
        EXPECT_TRUE(readText<bool>(isTrue, text)) << text;
        EXPECT_FALSE(readText<bool>(isFalse, text)) << text;
    }
    EXPECT_TRUE(readNothing<bool>(isTrue));
    EXPECT_FALSE(readNothing<bool>(isFalse));
}

TEST(ConfigTypeTest, ANumberThatDoesNotConvertIsTheDefault) {
    const DoubleConfigType type(4.0, "help");
    EXPECT_EQ(readText<double>(type, "2.5"), 2.5);
    EXPECT_EQ(readText<double>(type, "1e3"), 1000.0);
    for (const char* text : {"abc", "", "4,5", "0x10", "3 s"}) {
        EXPECT_EQ(readText<double>(type, text), 4.0) << text;
    }
    EXPECT_EQ(readNothing<double>(type), 4.0);
}

TEST(ConfigTypeTest, WhiteSpaceAroundAWordOrANumberDoesNotCount) {
    EXPECT_TRUE(readText<bool>(NoValueConfigType("help"), "  true\t"));
    EXPECT_FALSE(readText<bool>(BoolConfigType(true, "help"), "\n false "));
    EXPECT_EQ(readText<double>(DoubleConfigType(4.0, "help"), "    2"), 2.0);
}

TEST(ConfigTypeTest, ATextIsTakenAsItStands) {
    const StringConfigType type("default", "help");
    EXPECT_EQ(readText<std::string>(type, "  a b "), "  a b ");
    EXPECT_EQ(readNothing<std::string>(type), "default");
}

TEST(ConfigTypeTest, AnElementWithoutTextGivesADefaultText) {
    ConfigNode settings;
    settings.children.push_back(std::make_unique<ConfigNode>());
    settings.children.front()->name = "x";
    OptionMap options;
    StringConfigType("default", "help").readFromConfig(options, settings, "x");
    EXPECT_EQ(textOf(options, "x"), "default");
}

TEST(ConfigTypeTest, ValuesHaveTheirExactTypes) {
    EXPECT_EQ(NoValueConfigType("help").defaultValue().type(), typeid(bool));
    EXPECT_EQ(BoolConfigType(true, "help").defaultValue().type(), typeid(bool));
    EXPECT_EQ(DoubleConfigType(4, "help").defaultValue().type(), typeid(double));
    EXPECT_EQ(StringConfigType("", "help").defaultValue().type(), typeid(std::string));
}

}  // namespace
}  // namespace torvo::offline
