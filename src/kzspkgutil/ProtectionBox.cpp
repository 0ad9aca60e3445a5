#include "kzspkgutil/ProtectionBox.h"

#include <exception>

#include "kzs/base/ByteOrder.h"

namespace torvo::kzspkgutil {
namespace {

using kzs::fourCc;
using kzs::loadU32;

constexpr std::uint32_t kSinf = fourCc("sinf");
constexpr std::uint32_t kFrma = fourCc("frma");
constexpr std::uint32_t kSchm = fourCc("schm");
constexpr std::uint32_t kSchi = fourCc("schi");
constexpr std::uint32_t kAdkm = fourCc("adkm");

constexpr std::uint32_t kSchemeVersion = 1;
constexpr std::uint8_t kRecordVersionWithSecondText = 3;
constexpr std::size_t kBoxHeaderSize = 8;
constexpr std::size_t kFullBoxHeaderSize = 12;

void append(Blob& out, const Blob& more) { out.insert(out.end(), more.begin(), more.end()); }

Blob joined(std::initializer_list<Blob> parts) {
    Blob out;
    for (const Blob& part : parts) append(out, part);
    return out;
}

Blob word(std::uint32_t value) {
    Blob out(4);
    kzs::storeU32(out.data(), value);
    return out;
}

Blob zeroTerminated(const std::string& text) {
    Blob out(text.begin(), text.end());
    out.push_back(0);
    return out;
}

Blob box(std::uint32_t type, const Blob& content) {
    return joined({word(kzs::low32(kBoxHeaderSize + content.size())), word(type), content});
}

/// The flags are 0 in all of them. On purpose the boxes have different versions, and `flxs` none,
/// as players expect them. Pinned by ProtectionBoxTest.IsTheWholeTree.
Blob fullBox(std::uint32_t type, std::uint8_t version, const Blob& content) {
    return box(type, joined({word(std::uint32_t{version} << 24), content}));
}

Blob flxsBox(const ProtectionBoxContent& content) {
    Blob texts = zeroTerminated(content.metadataText);
    if (content.recordVersion >= kRecordVersionWithSecondText) {
        append(texts, zeroTerminated(content.secondText));
    }
    return box(fourCc("flxs"), texts);
}

/// One child box inside a parent.
struct Child {
    std::uint32_t type;
    std::size_t offset;
    std::size_t size;
};

Child childAt(const Blob& data, std::size_t offset, std::size_t end) {
    if (end - offset < kBoxHeaderSize) throw std::exception();
    const std::uint32_t size = loadU32(data.data() + offset);
    if (size < kBoxHeaderSize || size > end - offset) throw std::exception();
    return {loadU32(data.data() + offset + 4), offset, size};
}

void requireThat(bool isSo) {
    if (!isSo) throw std::exception();
}

/// The clear format that a `sinf` box names.
std::uint32_t clearFormatIn(const Blob& data, const Child& sinf) {
    const std::size_t end = sinf.offset + sinf.size;
    const Child frma = childAt(data, sinf.offset + kBoxHeaderSize, end);
    requireThat(frma.type == kFrma && frma.size >= kBoxHeaderSize + 4);
    const Child schm = childAt(data, frma.offset + frma.size, end);
    requireThat(schm.type == kSchm && schm.size >= kFullBoxHeaderSize + 8);
    const std::uint8_t* scheme = data.data() + schm.offset + kFullBoxHeaderSize;
    requireThat(loadU32(scheme) == kAdkm && loadU32(scheme + 4) == kSchemeVersion);
    requireThat(childAt(data, schm.offset + schm.size, end).type == kSchi);
    return loadU32(data.data() + frma.offset + kBoxHeaderSize);
}

}  // namespace

Blob makeProtectionBox(const ProtectionBoxContent& content) {
    const Blob aeib = fullBox(fourCc("aeib"), 1, joined({zeroTerminated("AES-CBC"), Blob{16}}));
    const Blob akey = fullBox(fourCc("akey"), 1, flxsBox(content));
    const Blob aprm = fullBox(fourCc("aprm"), 1, joined({aeib, akey}));
    const Blob ahdr = fullBox(fourCc("ahdr"), content.ahdrVersion, aprm);
    const Blob adaf = fullBox(fourCc("adaf"), 0, Blob{0x80, 0, 16});
    const Blob adkm = fullBox(kAdkm, 1, joined({ahdr, adaf}));
    const Blob schm = fullBox(kSchm, 1, joined({word(kAdkm), word(kSchemeVersion)}));
    return box(kSinf, joined({box(kFrma, word(content.clearFormat)), schm, box(kSchi, adkm)}));
}

SplitDescription splitProtectedDescription(const Blob& data) {
    std::size_t at = 0;
    Child child = childAt(data, at, data.size());
    while (child.type != kSinf) {
        at += child.size;
        child = childAt(data, at, data.size());
    }
    SplitDescription split;
    split.clearFormat = clearFormatIn(data, child);
    const auto border = data.begin() + static_cast<std::ptrdiff_t>(at);
    split.extraData.assign(data.begin(), border);
    split.protectionData.assign(border, data.end());
    return split;
}

}  // namespace torvo::kzspkgutil
