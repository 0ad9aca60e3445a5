#include <new>
#include <set>

#include <gtest/gtest.h>

#include "kzm/impl/Box.h"
#include "kzm/impl/BoxSupport.h"
#include "kzm/impl/MoovBox.h"
#include "kzm/impl/UuidBox.h"

namespace qlix::kzm::impl {
namespace {

using namespace kz::test;

/// A box with `count` bytes of fields, which are 1 at first and 2 once they were rewritten.
class Probe : public Box {
public:
    Probe(const BoxContext& context, std::uint32_t type, std::uint64_t count, bool isLarge = false)
        : Box(context, type, isLarge), count_(count) {
        grow(count);
    }

    void writeFields() override { put(bytes(1)); }
    void updateFields() override { putAt(ownSize() - count_, bytes(2)); }

private:
    FieldWriter bytes(std::uint8_t value) const {
        FieldWriter out;
        for (std::uint64_t i = 0; i < count_; ++i) out.u8(value);
        return out;
    }

    std::uint64_t count_;
};

/// Counts what it gives out; throws at the call `failAt`.
class CountingAllocator : public Allocator {
public:
    void* allocate(std::size_t size) override {
        if (calls++ == failAt) throw std::bad_alloc();
        void* out = Allocator::allocate(size);
        held.insert(out);
        return out;
    }
    void release(void* pointer) noexcept override {
        held.erase(pointer);
        Allocator::release(pointer);
    }

    int calls = 0;
    int failAt = -1;
    std::set<void*> held;
};

TEST(BoxTest, StartsWithItsHeaderAlone) {
    Box plain({}, fourCc("test"));
    EXPECT_EQ(plain.ownSize(), 8U);
    EXPECT_EQ(plain.size(), 8U);
    EXPECT_EQ(plain.fieldsSize(), 0U);
    Box large({}, fourCc("test"), true);
    EXPECT_EQ(large.ownSize(), 16U);
    EXPECT_EQ(large.size(), 16U);
    EXPECT_EQ(large.fieldsSize(), 0U);
}

TEST(BoxTest, TakesTheWholeBoxAsItsOwnWhenItIsMadeFromAHeader) {
    ReadFile file(box("test", fill(20, 0)));
    const BoxPtr made = file.make();
    EXPECT_EQ(made->ownSize(), 28U);
    EXPECT_EQ(made->size(), 28U);
    EXPECT_EQ(made->fieldsSize(), 20U);
    EXPECT_EQ(made->length(), 28U);
}

TEST(BoxTest, PlacesChildrenBehindEachOther) {
    Box parent({}, fourCc("moov"));
    parent.addChild(makeBox<Probe>(BoxContext(), fourCc("aaaa"), 4U));
    parent.addChild(nullptr);
    parent.addChild(makeBox<Probe>(BoxContext(), fourCc("bbbb"), 10U));
    EXPECT_EQ(parent.childCount(), 2U);
    EXPECT_EQ(parent.ownSize(), 8U);
    EXPECT_EQ(parent.size(), 8U + 12U + 18U);
    EXPECT_EQ(parent.child(0)->position(), 8U);
    EXPECT_EQ(parent.child(1)->position(), 20U);
    EXPECT_EQ(parent.child(2), nullptr);
}

TEST(BoxTest, MovesItsChildrenAlong) {
    Box outer({}, fourCc("moov"));
    auto inner = makeBox<Box>(BoxContext(), fourCc("trak"));
    inner->addChild(makeBox<Probe>(BoxContext(), fourCc("aaaa"), 4U));
    outer.addChild(makeBox<Probe>(BoxContext(), fourCc("bbbb"), 2U));
    outer.addChild(std::move(inner));
    outer.setPosition(1000);
    EXPECT_EQ(outer.child(0)->position(), 1008U);
    EXPECT_EQ(outer.child(1)->position(), 1018U);
    EXPECT_EQ(outer.child(1)->child(0)->position(), 1026U);
}

TEST(BoxTest, WritesWholeFirstAndThenOnlyWhatChanges) {
    WriteFile file;
    Box parent(file.context(), fourCc("moov"));
    parent.addChild(makeBox<Probe>(file.context(), fourCc("aaaa"), 2U));
    parent.setPosition(3);
    EXPECT_FALSE(parent.wasWritten());
    parent.write();
    EXPECT_TRUE(parent.wasWritten());
    EXPECT_EQ(file.bytes(), fill(3, 0) + box("moov", box("aaaa", raw({1, 1}))));
    EXPECT_EQ(file.memory.writes, 1U);  // the size was final: nothing is patched
    parent.write();
    EXPECT_EQ(file.bytes(), fill(3, 0) + box("moov", box("aaaa", raw({2, 2}))));
}

TEST(BoxTest, PatchesItsSizeWhenItGotMoreChildren) {
    WriteFile file;
    Box parent(file.context(), fourCc("moov"));
    parent.addChild(makeBox<Probe>(file.context(), fourCc("aaaa"), 2U));
    parent.write();
    parent.addChild(makeBox<Probe>(file.context(), fourCc("bbbb"), 1U));
    parent.write();
    EXPECT_EQ(file.bytes(), box("moov", box("aaaa", raw({2, 2})), box("bbbb", raw({1}))));
}

TEST(BoxTest, WritesAndPatchesA64BitSize) {
    WriteFile file;
    Box parent(file.context(), fourCc("moov"), true);
    parent.write();
    parent.addChild(makeBox<Probe>(file.context(), fourCc("aaaa"), 1U));
    parent.write();
    EXPECT_EQ(file.bytes(), hexTable(R"(
        0   00000001          size: 64 bits follow the type
        4   6d6f6f76          'moov'
        8   0000000000000019  size 25
        16  00000009          size 9
        20  61616161          'aaaa'
        24  01                field
    )"));
}

TEST(BoxTest, FindsAndCountsChildren) {
    Box parent({}, fourCc("moov"));
    for (const char* type : {"aaaa", "bbbb", "aaaa"}) {
        parent.addChild(makeBox<Box>(BoxContext(),
                                     torvo::kzs::fourCc({type[0], type[1], type[2], type[3], 0})));
    }
    EXPECT_EQ(parent.findChild(fourCc("aaaa")), parent.child(0));
    EXPECT_EQ(parent.findChild(fourCc("bbbb")), parent.child(1));
    EXPECT_EQ(parent.findChild(fourCc("cccc")), nullptr);
    EXPECT_EQ(parent.countChildren(fourCc("aaaa")), 2U);
    const std::uint32_t codes[] = {fourCc("bbbb"), fourCc("cccc"), fourCc("aaaa"), 0};
    EXPECT_EQ(parent.countChildrenAmong(codes), 3U);
    EXPECT_EQ(parent.countChildrenAmong(codes + 3), 0U);
}

TEST(BoxTest, ResetsToEightBytes) {
    ReadFile file(box("test", fill(20, 0)));
    const BoxPtr made = file.make();
    made->resetSize();
    EXPECT_EQ(made->ownSize(), 8U);
    EXPECT_EQ(made->size(), 8U);
}

TEST(BoxTest, StepsOverAChildWhoseEndOverflows) {
    const Bytes bad = u32(1) + text("free") + u64(0xFFFFFFFFFFFFFFFF);
    ReadFile file(box("edts", bad, box("free", fill(2, 0))));
    const BoxPtr made = file.read();
    ASSERT_EQ(made->childCount(), 1U);
    EXPECT_EQ(made->child(0)->position(), 24U);
}

TEST(BoxTest, ComesFromItsAllocatorAndGoesBackToIt) {
    CountingAllocator allocator;
    ReadFile file(uuidBox(pattern(16, 1), fill(300, 1)));
    {
        const auto header = readBoxHeader(file.stream, nullptr);
        const BoxPtr made = BoxFactory::standard().create(file.stream, header.value(), &allocator);
        made->parse(nullptr, false);
        EXPECT_EQ(allocator.held.size(), 2U);  // the box and its body
        EXPECT_EQ(allocator.held.count(made.get()), 1U);
    }
    EXPECT_TRUE(allocator.held.empty());
}

TEST(BoxTest, GivesItsMemoryBackWhenItsConstructorThrows) {
    CountingAllocator allocator;
    ReadFile file(fullBox("mvhd", 0, 0).claiming(8));
    const auto header = readBoxHeader(file.stream, nullptr);
    EXPECT_EQ(codeThrownBy(
                  [&] { BoxFactory::standard().create(file.stream, header.value(), &allocator); }),
              28U);
    EXPECT_EQ(allocator.calls, 1);
    EXPECT_TRUE(allocator.held.empty());
}

TEST(BoxTest, DestroysAChildThatItCantTake) {
    CountingAllocator allocator;
    const BoxContext context{nullptr, &allocator};
    Box parent(context, fourCc("moov"));
    auto child = makeBox<Box>(context, fourCc("free"));
    allocator.failAt = allocator.calls;
    EXPECT_THROW(parent.addChild(std::move(child)), std::bad_alloc);
    EXPECT_TRUE(allocator.held.empty());
    EXPECT_EQ(parent.size(), 8U);
}

struct Rule {
    const char* parent;
    std::vector<const char*> children;
    bool isValid;
};

std::uint32_t codeFrom(const char* type) {
    return torvo::kzs::loadU32(reinterpret_cast<const std::uint8_t*>(type));
}

TEST(BoxTest, VerifiesTheChildrenThatItRequires) {
    const Rule rules[] = {
        {"moov", {"mvhd", "trak"}, true},
        {"moov", {"mvhd", "trak", "trak", "free"}, true},
        {"moov", {"mvhd"}, false},
        {"moov", {"trak"}, false},
        {"moov", {"mvhd", "mvhd", "trak"}, false},
        {"trak", {"tkhd", "mdia"}, true},
        {"trak", {"tkhd"}, false},
        {"trak", {"mdia"}, false},
        {"trak", {"tkhd", "mdia", "mdia"}, false},
        {"mdia", {"mdhd", "hdlr", "minf"}, true},
        {"mdia", {"mdhd", "hdlr"}, false},
        {"mdia", {"mdhd", "minf"}, false},
        {"mdia", {"hdlr", "minf"}, false},
        {"minf", {"dinf", "stbl"}, true},
        {"minf", {"dinf"}, false},
        {"minf", {"stbl"}, false},
        {"dinf", {"dref"}, true},
        {"dinf", {"url "}, true},
        {"dinf", {"dref", "url "}, false},
        {"dinf", {}, false},
        {"stbl", {"stsd", "stts", "stsc", "stco", "stsz"}, true},
        {"stbl", {"stsd", "stts", "stsc", "co64", "stsz"}, true},
        {"stbl", {"stsd", "stts", "stsc", "co64", "stco", "stsz"}, false},
        {"stbl", {"stsd", "stts", "stsc", "stsz"}, false},
        {"stbl", {"stsd", "stts", "stsc", "stco"}, false},
        {"stbl", {"stsd", "stts", "stco", "stsz"}, false},
        {"stbl", {"stsd", "stsc", "stco", "stsz"}, false},
        {"stbl", {"stts", "stsc", "stco", "stsz"}, false},
        {"moof", {"mfhd"}, true},
        {"moof", {}, false},
        {"traf", {"tfhd"}, true},
        {"traf", {"tfhd", "tfhd"}, false},
        {"mvex", {}, true},
        {"edts", {}, true},
        {"free", {}, true},
    };
    for (const Rule& rule : rules) {
        ReadFile file(box(rule.parent));
        const BoxPtr parent = file.make();
        std::string shown = rule.parent;
        for (const char* each : rule.children) {
            parent->addChild(makeBox<Box>(BoxContext(), codeFrom(each)));
            shown += std::string(" ") + each;
        }
        EXPECT_EQ(parent->verifyChildren(), rule.isValid) << shown;
    }
}

}  // namespace
}  // namespace qlix::kzm::impl
