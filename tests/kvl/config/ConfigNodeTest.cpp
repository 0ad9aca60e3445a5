#include <gtest/gtest.h>

#include "kvl/config/ConfigNode.h"

using namespace kvl::config;

namespace {

ConfigNode* addChild(ConfigNode& parent, const std::string& name) {
    parent.children.push_back(std::make_unique<ConfigNode>());
    parent.children.back()->name = name;
    parent.children.back()->parent = &parent;
    return parent.children.back().get();
}

ConfigNode* addChild(ConfigNode& parent, const std::string& name, const std::string& data) {
    ConfigNode* node = addChild(parent, name);
    node->hasData = true;
    node->data = data;
    return node;
}

std::string messageOf(const ConfigNode& node) {
    try {
        node.text();
    } catch (const ConfigException& failure) {
        return failure.what();
    }
    return "nothing thrown";
}

}  // namespace

TEST(ConfigNodeTest, FindsTheFirstOfTwoChildrenOfOneName) {
    ConfigNode root;
    addChild(root, "a", "0");
    addChild(root, "b", "1");
    addChild(root, "b", "2");
    EXPECT_EQ(root.child("b")->text(), "1");
}

TEST(ConfigNodeTest, FindsNoChildOfAnotherName) {
    ConfigNode root;
    addChild(*addChild(root, "a"), "deeper");
    EXPECT_EQ(root.child("A"), nullptr);
    EXPECT_EQ(root.child("deeper"), nullptr);
}

TEST(ConfigNodeTest, ThrowsWhereThereIsNoText) {
    const ConfigNode node;
    EXPECT_THROW(node.text(), NoDataException);
    EXPECT_EQ(messageOf(node), "No data in this Node");
}

TEST(ConfigNodeTest, TextOrTakesTheDefaultForNoNodeAndNoText) {
    ConfigNode root;
    ConfigNode* full = addChild(root, "full", " x ");
    EXPECT_EQ(textOr(nullptr, "d"), "d");
    EXPECT_EQ(textOr(addChild(root, "empty"), "d"), "d");
    EXPECT_EQ(textOr(full, "d"), " x ");
}

TEST(ConfigNodeTest, NumberOrTakesTheDefaultForNoNodeAndNoText) {
    ConfigNode root;
    EXPECT_EQ(numberOr(nullptr, 4.0), 4.0);
    EXPECT_EQ(numberOr(addChild(root, "empty"), 4.0), 4.0);
}

TEST(ConfigNodeTest, NumberOrConvertsTheText) {
    const std::pair<const char*, double> cases[] = {
        {"7", 7.0},     {"2.5", 2.5},   {"-1", -1.0}, {".5", 0.5},         {"1e3", 1000.0},
        {"    8", 8.0}, {"9\t\n", 9.0}, {"abc", 4.0}, {"4 5", 4.0},        {"4,5", 4.0},
        {"0x10", 4.0},  {"", 4.0},      {"   ", 4.0}, {"1.5seconds", 4.0},
    };
    for (const auto& [text, number] : cases) {
        ConfigNode root;
        EXPECT_EQ(numberOr(addChild(root, "n", text), 4.0), number) << '"' << text << '"';
    }
}
