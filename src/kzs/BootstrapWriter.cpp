#include "kzs/BootstrapWriter.h"

#include <ostream>

#include "kzs/BootstrapInfo.h"
#include "kzs/ByteAppender.h"
#include "kzs/base/StreamExceptionGuard.h"

namespace torvo::kzs {
namespace {

// The count's low byte, as wide as the field is.
std::uint8_t lowByte(std::size_t count) { return static_cast<std::uint8_t>(count); }

// On purpose: all texts are written though the count before them is cut to a byte.
// Pinned by BootstrapWriterTest.CutsTheCountOfServersToAByte.
void texts(ByteAppender& out, const std::vector<std::string>& values) {
    out.u8(lowByte(values.size()));
    for (const std::string& value : values) out.text(value);
}

void segmentRuns(ByteAppender& out, const SegmentRunTable& table) {
    const std::size_t box = out.beginBox(fourCc("asrt"));
    out.u32(table.update ? 1 : 0);
    texts(out, table.qualities);
    out.u32(low32(table.entries.size()));
    for (const SegmentRunEntry& entry : table.entries) {
        out.u32(entry.firstSegment);
        out.u32(entry.fragmentsPerSegment);
    }
    out.endBox(box);
}

void fragmentRuns(ByteAppender& out, const FragmentRunTable& table) {
    const std::size_t box = out.beginBox(fourCc("afrt"));
    out.u32(table.update != 0 ? 1 : 0);
    out.u32(table.timescale);
    texts(out, table.qualities);
    out.u32(low32(table.entries.size()));
    for (const FragmentRunEntry& entry : table.entries) {
        out.u32(entry.firstFragment);
        out.u64(entry.firstFragmentTimestamp.value);
        out.u32(entry.fragmentDuration);
        if (entry.fragmentDuration == 0) {
            out.u8(static_cast<std::uint8_t>(entry.discontinuityIndicator));
        }
    }
    out.endBox(box);
}

std::uint8_t bitsOf(const BootstrapInfo& info) {
    return static_cast<std::uint8_t>(((info.profile & 3) << 6) | (info.live ? 0x20 : 0) |
                                     (info.update ? 0x10 : 0));
}

void body(ByteAppender& out, const BootstrapInfo& info) {
    out.u32(info.version);
    out.u8(bitsOf(info));
    out.u32(info.timescale);
    // On purpose: in whatever timescale it has.
    // Pinned by BootstrapWriterTest.WritesTimesAsTheyStandWhateverTheirTimescale.
    out.u64(info.currentMediaTime.value);
    out.u64(info.smpteTimeCodeOffset);
    out.text(info.movieIdentifier);
    texts(out, info.servers);
    texts(out, info.qualities);
    out.text(info.drmData);
    out.text(info.metadata);
    out.u8(lowByte(info.segmentRunTables.size()));
    for (const SegmentRunTable& table : info.segmentRunTables) segmentRuns(out, table);
    out.u8(lowByte(info.fragmentRunTables.size()));
    for (const FragmentRunTable& table : info.fragmentRunTables) fragmentRuns(out, table);
}

}  // namespace

std::vector<std::uint8_t> serialiseBootstrap(const BootstrapInfo& info, bool bodyOnly) {
    std::vector<std::uint8_t> bytes;
    ByteAppender out(bytes);
    if (bodyOnly) {
        body(out, info);
        return bytes;
    }
    const std::size_t box = out.beginBox(fourCc("abst"));
    out.u32(0);
    body(out, info);
    out.endBox(box);
    return bytes;
}

std::uint64_t writeBootstrap(std::ostream& stream, const BootstrapInfo& info, bool bodyOnly) {
    const std::vector<std::uint8_t> bytes = serialiseBootstrap(info, bodyOnly);
    const StreamExceptionGuard guard(stream, std::ios::failbit | std::ios::badbit);
    stream.write(reinterpret_cast<const char*>(bytes.data()),
                 static_cast<std::streamsize>(bytes.size()));
    return bytes.size();
}

}  // namespace torvo::kzs
