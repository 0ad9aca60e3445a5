#include "kzm/impl/RequiredChild.h"

#include <algorithm>
#include <iterator>

#include "kzs/base/ByteOrder.h"

namespace qlix::kzm::impl {
namespace {

using torvo::kzs::fourCc;
using Kind = RequiredChild::Kind;

constexpr std::uint32_t kDataReferences[] = {fourCc("url "), fourCc("dref"), 0};
constexpr std::uint32_t kChunkOffsets[] = {fourCc("stco"), fourCc("co64"), 0};
constexpr std::uint32_t kSampleSizes[] = {fourCc("stsz"), 0};

constexpr RequiredChild kMoov[] = {{fourCc("mvhd"), Kind::exactlyOne, nullptr},
                                   {fourCc("trak"), Kind::atLeastOne, nullptr}};
constexpr RequiredChild kTrak[] = {{fourCc("tkhd"), Kind::exactlyOne, nullptr},
                                   {fourCc("mdia"), Kind::exactlyOne, nullptr}};
constexpr RequiredChild kMdia[] = {{fourCc("mdhd"), Kind::exactlyOne, nullptr},
                                   {fourCc("hdlr"), Kind::exactlyOne, nullptr},
                                   {fourCc("minf"), Kind::exactlyOne, nullptr}};
constexpr RequiredChild kMinf[] = {{fourCc("dinf"), Kind::exactlyOne, nullptr},
                                   {fourCc("stbl"), Kind::exactlyOne, nullptr}};
constexpr RequiredChild kDinf[] = {{0, Kind::exactlyOneAmong, kDataReferences}};
constexpr RequiredChild kStbl[] = {{fourCc("stsd"), Kind::exactlyOne, nullptr},
                                   {fourCc("stts"), Kind::exactlyOne, nullptr},
                                   {fourCc("stsc"), Kind::exactlyOne, nullptr},
                                   {0, Kind::exactlyOneAmong, kChunkOffsets},
                                   {0, Kind::exactlyOneAmong, kSampleSizes}};
constexpr RequiredChild kMoof[] = {{fourCc("mfhd"), Kind::exactlyOne, nullptr}};
constexpr RequiredChild kTraf[] = {{fourCc("tfhd"), Kind::exactlyOne, nullptr}};
constexpr RequiredChild kMfra[] = {{fourCc("mfro"), Kind::exactlyOne, nullptr}};

struct Rules {
    std::uint32_t parent;
    RequiredChildren children;
};

constexpr Rules kRules[] = {
    {fourCc("moov"), {kMoov, std::size(kMoov)}}, {fourCc("trak"), {kTrak, std::size(kTrak)}},
    {fourCc("mdia"), {kMdia, std::size(kMdia)}}, {fourCc("minf"), {kMinf, std::size(kMinf)}},
    {fourCc("dinf"), {kDinf, std::size(kDinf)}}, {fourCc("stbl"), {kStbl, std::size(kStbl)}},
    {fourCc("moof"), {kMoof, std::size(kMoof)}}, {fourCc("traf"), {kTraf, std::size(kTraf)}},
    {fourCc("mfra"), {kMfra, std::size(kMfra)}},
};

}  // namespace

RequiredChildren requiredChildrenOf(std::uint32_t type) {
    const auto* found = std::find_if(std::begin(kRules), std::end(kRules),
                                     [type](const Rules& row) { return row.parent == type; });
    return found == std::end(kRules) ? RequiredChildren() : found->children;
}

}  // namespace qlix::kzm::impl
