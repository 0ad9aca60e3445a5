#include <cmath>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "qlix_flv/FlvFixture.h"
#include "support/AmfBuilder.h"
#include "support/FlvBuilder.h"

namespace kz::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// One member as the library tells it: no number stands for "another type".
struct Member {
    std::string name;
    std::optional<double> number;

    friend bool operator==(const Member& left, const Member& right) {
        return left.name == right.name && left.number == right.number;
    }
    friend std::ostream& operator<<(std::ostream& out, const Member& member) {
        return out << member.name << "=" << member.number.value_or(-0.5);
    }
};

std::string nameOf(QlixFLVScriptData* data) {
    QlixFLVScriptDataString* name = nullptr;
    EXPECT_EQ(QlixFLVScriptDataGetName(data, &name), 0U);
    std::uint32_t length = 0;
    EXPECT_EQ(QlixFLVScriptDataStringGetLength(name, &length), 0U);
    Bytes out(length + 1);
    std::uint32_t count = 0;
    EXPECT_EQ(QlixFLVScriptDataStringCopyData(name, length + 1, out.data(), &count), 0U);
    EXPECT_EQ(count, length);
    QlixFLVReleaseScriptDataString(name);
    return out.cutTo(count).str();
}

/// The root of a script tag with `values` as its body. Released with the object.
class Script {
public:
    explicit Script(const Bytes& values) : file_(flvFile({scriptTag(0, values)})) {
        file_.open();
        QlixFLVTagIterator* tags = file_.all();
        QlixFLVTag* tag = nullptr;
        QlixFLVTagIteratorGetNextEntry(tags, &tag);
        result = QlixFLVTagGetScriptData(tag, &root);
        QlixFLVReleaseTag(tag);
        QlixFLVReleaseTagIterator(tags);
    }
    ~Script() {
        if (root != nullptr) QlixFLVReleaseScriptData(root);
    }
    Script(const Script&) = delete;
    Script& operator=(const Script&) = delete;

    QlixFLVScriptData* root = nullptr;
    std::uint32_t result = 0;

private:
    FlvFixture file_;
};

/// Walks the members of `data`; `descend` chooses one member to enter by its name.
struct Walk {
    std::vector<Member> members;
    std::uint32_t result = 0;
};

Walk walk(QlixFLVScriptData* data, const std::vector<std::string>& path = {}) {
    Walk out;
    QlixFLVScriptDataIterator* iterator = nullptr;
    out.result = QlixFLVScriptDataGetIterator(data, &iterator);
    if (out.result != 0) return out;
    std::int32_t hasMore = 0;
    while (QlixFLVScriptDataIteratorHasMoreEntries(iterator, &hasMore) == 0 && hasMore == 1) {
        QlixFLVScriptData* member = nullptr;
        out.result = QlixFLVScriptDataIteratorGetNextEntry(iterator, &member);
        if (out.result != 0) break;
        Member seenMember{nameOf(member), std::nullopt};
        double number = 0;
        if (QlixFLVScriptDataGetNumber(member, &number) == 0) seenMember.number = number;
        const bool isOnPath = !path.empty() && path.front() == seenMember.name;
        Walk inner;
        if (isOnPath) inner = walk(member, {path.begin() + 1, path.end()});
        QlixFLVReleaseScriptData(member);
        if (isOnPath) {
            out = inner;
            break;
        }
        out.members.push_back(seenMember);
    }
    QlixFLVReleaseScriptDataIterator(iterator);
    return out;
}

Walk walkOf(const Bytes& value, const std::vector<std::string>& path = {}) {
    const Script script(amfString("onMetaData") + value);
    EXPECT_EQ(script.result, 0U);
    return walk(script.root, path);
}

TEST(ScriptDataTest, TheRootHasTheEventsNameAndTheMembersOfItsArray) {
    const Script script(amfString("onMetaData") +
                        amfEcmaArray({{"width", amfNumber(320)}, {"height", amfNumber(180.5)}}));
    EXPECT_EQ(nameOf(script.root), "onMetaData");
    EXPECT_THAT(walk(script.root).members,
                ElementsAre(Member{"width", 320.0}, Member{"height", 180.5}));
}

TEST(ScriptDataTest, EveryTypeIsSteppedOverToTheMemberBehindIt) {
    const std::vector<Bytes> values{
        amfNumber(1),
        amfBool(true),
        amfString("text"),
        amfObject({{"a", amfNumber(1)}, {"b", amfObject({})}}),
        amfMovieClip(),
        amfNull(),
        amfUndefined(),
        amfReference(3),
        amfEcmaArray({{"a", amfStrictArray({amfNumber(1), amfString("x")})}}, 77),
        amfStrictArray({amfNumber(1), amfObject({{"a", amfNull()}}), amfStrictArray({})}),
        amfDate(1e12, -60),
        amfLongString(std::string(70000, 'x')),
        amfUnsupported(),
        amfXml("<a/>"),
        amfTypedObject("Class", {{"a", amfDate(0)}})};
    for (std::size_t i = 0; i < values.size(); ++i) {
        const Walk all = walkOf(amfEcmaArray({{"first", values[i]}, {"width", amfNumber(7)}}));
        EXPECT_EQ(all.result, 0U) << "value " << i;
        ASSERT_EQ(all.members.size(), 2U) << "value " << i;
        EXPECT_EQ(all.members[0].name, "first");
        EXPECT_EQ(all.members[0].number.has_value(), i == 0) << "value " << i;
        EXPECT_EQ(all.members[1], (Member{"width", 7.0}));
    }
}

TEST(ScriptDataTest, AValueOfTheWrongTypeHasACodeOfItsOwn) {
    for (const Bytes& value : {amfBool(true), amfString("320"), amfNull(), amfDate(320),
                               amfObject({}), amfStrictArray({amfNumber(320)})}) {
        const Script script(amfString("x") + value);
        double number = 7;
        EXPECT_EQ(QlixFLVScriptDataGetNumber(script.root, &number), 7U);
        EXPECT_EQ(number, 0.0);
    }
    const Script script(amfString("x") + amfNumber(320));
    double number = 0;
    EXPECT_EQ(QlixFLVScriptDataGetNumber(script.root, &number), 0U);
    EXPECT_EQ(number, 320.0);
}

TEST(ScriptDataTest, OnlyValuesThatCanHoldMembersAreWalked) {
    for (const Bytes& value : {amfNumber(1), amfBool(true), amfString("x"), amfDate(1),
                               amfLongString("x"), amfXml("x"), amfMovieClip()}) {
        EXPECT_EQ(walkOf(value).result, 7U);
    }
    for (const Bytes& value : {amfNull(), amfUndefined(), amfUnsupported(), amfReference(0),
                               Bytes(), amfObject({}), amfEcmaArray({}, 0xffffffff)}) {
        const Walk none = walkOf(value);
        EXPECT_EQ(none.result, 0U);
        EXPECT_THAT(none.members, IsEmpty());
    }
}

TEST(ScriptDataTest, NestedValuesAreWalkedFromTheirMember) {
    const Bytes value = amfEcmaArray(
        {{"before", amfNumber(1)},
         {"outer", amfTypedObject("C", {{"x", amfNull()},
                                        {"list", amfStrictArray({amfNumber(5), amfNumber(6)})}})},
         {"after", amfNumber(2)}});
    EXPECT_THAT(walkOf(value, {"outer"}).members,
                ElementsAre(Member{"x", std::nullopt}, Member{"list", std::nullopt}));
    EXPECT_THAT(walkOf(value, {"outer", "list"}).members,
                ElementsAre(Member{"", 5.0}, Member{"", 6.0}));
}

TEST(ScriptDataTest, TheCountOfAnArrayWithNamesIsAHintOnly) {
    for (std::uint32_t count : {0U, 1U, 9U, 0xffffffffU}) {
        EXPECT_EQ(
            walkOf(amfEcmaArray({{"a", amfNumber(1)}, {"b", amfNumber(2)}}, count)).members.size(),
            2U);
    }
}

TEST(ScriptDataTest, AMissingEndMarkerEndsWithTheTag) {
    const Bytes value = amfEcmaArray({{"width", amfNumber(320)}});
    for (std::size_t missing : {1U, 3U}) {
        const Walk cut = walkOf(value.cutTo(value.size() - missing));
        EXPECT_EQ(cut.result, 0U);
        EXPECT_THAT(cut.members, ElementsAre(Member{"width", 320.0}));
    }
}

TEST(ScriptDataTest, AMemberThatLeavesTheTagIsDamage) {
    const Bytes value = amfEcmaArray({{"width", amfNumber(320)}});
    // 5 bytes of marker and count, then 16 bytes of the member.
    for (std::size_t size = 6; size < 21; ++size) {
        EXPECT_EQ(walkOf(value.cutTo(size)).result, 8U) << size;
    }
    EXPECT_EQ(walkOf(amfEcmaArray({{"a", u8(0x02) + u16(500) + text("short")}})).result, 8U);
    EXPECT_EQ(walkOf(amfEcmaArray({{"a", u8(0x0c) + u32(0xffffffff)}})).result, 8U);
    EXPECT_EQ(walkOf(amfEcmaArray({{"a", u8(0x0a) + u32(0xffffffff)}})).result, 8U);
    EXPECT_EQ(walkOf(amfEcmaArray({{"a", u8(0x77)}})).result, 8U);
}

TEST(ScriptDataTest, AStrictArrayWithAFalseCountEndsInDamageAndNotInALoop) {
    const Walk walked = walkOf(u8(0x0a) + u32(0xffffffff) + amfNumber(1) + amfNumber(2));
    EXPECT_EQ(walked.result, 8U);
    EXPECT_EQ(walked.members.size(), 2U);
}

TEST(ScriptDataTest, NestingIsBounded) {
    Bytes deep = amfNull();
    for (int i = 0; i < 60; ++i) deep = amfStrictArray({deep});
    EXPECT_EQ(walkOf(amfEcmaArray({{"a", deep}})).result, 0U);
    for (int i = 0; i < 10; ++i) deep = amfStrictArray({deep});
    EXPECT_EQ(walkOf(amfEcmaArray({{"a", deep}})).result, 8U);

    Bytes bottomless;
    for (int i = 0; i < 200000; ++i) bottomless += u8(0x0a) + u32(1);
    EXPECT_EQ(walkOf(bottomless).result, 8U);
}

TEST(ScriptDataTest, ATagThatDoesNotBeginWithATextHasAnEmptyName) {
    for (const Bytes& values : {Bytes(), amfNumber(1), amfObject({}), raw({0x77, 1, 2})}) {
        const Script script(values);
        EXPECT_EQ(script.result, 0U);
        EXPECT_EQ(nameOf(script.root), "");
        EXPECT_THAT(walk(script.root).members, IsEmpty());
    }
    const Script longName(amfLongString("onMetaData") + amfNull());
    EXPECT_EQ(nameOf(longName.root), "onMetaData");
}

TEST(ScriptDataTest, ANameThatLeavesTheTagIsDamage) {
    for (const Bytes& values :
         {raw({2}), raw({2, 0}), raw({2, 0, 5, 'a'}), raw({12, 0xff, 0xff, 0xff, 0xff})}) {
        EXPECT_EQ(Script(values).result, 8U);
    }
}

TEST(ScriptDataTest, ATextIsCopiedUpToTheRoomThereIs) {
    const Script script(amfString("onMetaData") + amfNull());
    QlixFLVScriptDataString* name = nullptr;
    QlixFLVScriptDataGetName(script.root, &name);
    Bytes room = fill(8, 0xee);
    std::uint32_t count = 0;
    EXPECT_EQ(QlixFLVScriptDataStringCopyData(name, 4, room.data(), &count), 0U);
    EXPECT_EQ(count, 4U);
    EXPECT_EQ(room, text("onMe") + fill(4, 0xee));
    EXPECT_EQ(QlixFLVScriptDataStringCopyData(name, 4, nullptr, &count), 2U);
    QlixFLVReleaseScriptDataString(name);
}

TEST(ScriptDataTest, TheEndOfTheMembersHasACodeOfItsOwn) {
    const Script script(amfString("onMetaData") + amfObject({}));
    QlixFLVScriptDataIterator* iterator = nullptr;
    QlixFLVScriptDataGetIterator(script.root, &iterator);
    QlixFLVScriptData* member = nullptr;
    EXPECT_EQ(QlixFLVScriptDataIteratorGetNextEntry(iterator, &member), 6U);
    EXPECT_EQ(member, nullptr);
    QlixFLVReleaseScriptDataIterator(iterator);
}

}  // namespace
}  // namespace kz::test
