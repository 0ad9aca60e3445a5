#include "kzs/BootstrapReader.h"

#include <istream>

#include "kzs/BootstrapInfo.h"
#include "kzs/base/BoxFunctions.h"
#include "kzs/base/ByteOrder.h"
#include "kzs/base/StreamExceptionGuard.h"

namespace torvo::kzs {
namespace {

constexpr std::uint32_t kUpdateFlag = 0x1;

std::string readText(std::istream& stream) {
    std::string text;
    while (const std::uint8_t byte = readByte(stream)) text.push_back(static_cast<char>(byte));
    return text;
}

std::vector<std::string> readTexts(std::istream& stream) {
    std::vector<std::string> texts;
    for (unsigned left = readByte(stream); left > 0; --left) texts.push_back(readText(stream));
    return texts;
}

// Returns the word of version and flags.
std::uint32_t readFullBoxHeader(std::istream& stream, std::uint32_t type) {
    StreamBoxHeader header;
    readBoxHeader(stream, header);
    if (header.type != type) throw InvalidBootstrapFormat();
    return readU32(stream);
}

// The lists grow as they are read: a count in a file proves nothing.
SegmentRunTable readSegmentRuns(std::istream& stream) {
    SegmentRunTable table;
    // On purpose: any version is taken. Pinned by BootstrapReaderTest.TakesTablesOfAnyVersion.
    table.update = (readFullBoxHeader(stream, fourCc("asrt")) & kUpdateFlag) != 0;
    table.qualities = readTexts(stream);
    for (std::uint32_t left = readU32(stream); left > 0; --left) {
        SegmentRunEntry entry;
        entry.firstSegment = readU32(stream);
        entry.fragmentsPerSegment = readU32(stream);
        table.entries.push_back(entry);
    }
    return table;
}

FragmentRunTable readFragmentRuns(std::istream& stream) {
    FragmentRunTable table;
    table.update = readFullBoxHeader(stream, fourCc("afrt")) & kUpdateFlag;
    table.timescale = readU32(stream);
    table.qualities = readTexts(stream);
    for (std::uint32_t left = readU32(stream); left > 0; --left) {
        FragmentRunEntry entry;
        entry.firstFragment = readU32(stream);
        // On purpose: in milliseconds whatever the table's timescale.
        // Pinned by BootstrapReaderTest.GivesTimestampsInMillisecondsWhateverTheTableSays.
        entry.firstFragmentTimestamp = milliseconds(readU64(stream));
        entry.fragmentDuration = readU32(stream);
        if (entry.fragmentDuration == 0) entry.discontinuityIndicator = readByte(stream);
        table.entries.push_back(entry);
    }
    return table;
}

BootstrapInfo readInfo(std::istream& stream) {
    if ((readFullBoxHeader(stream, fourCc("abst")) >> 24) != 0) throw InvalidBootstrapFormat();
    BootstrapInfo info;
    info.version = readU32(stream);
    const std::uint8_t bits = readByte(stream);
    info.profile = bits >> 6;
    info.live = (bits & 0x20) != 0;
    info.update = (bits & 0x10) != 0;
    info.timescale = readU32(stream);
    info.currentMediaTime.value = readU64(stream);
    info.smpteTimeCodeOffset = readU64(stream);
    info.movieIdentifier = readText(stream);
    info.servers = readTexts(stream);
    info.qualities = readTexts(stream);
    info.drmData = readText(stream);
    info.metadata = readText(stream);
    for (unsigned left = readByte(stream); left > 0; --left) {
        info.segmentRunTables.push_back(readSegmentRuns(stream));
    }
    for (unsigned left = readByte(stream); left > 0; --left) {
        info.fragmentRunTables.push_back(readFragmentRuns(stream));
    }
    return info;
}

}  // namespace

InvalidBootstrapFormat::InvalidBootstrapFormat()
    : kvl::KVLException("Could not parse bootstrap info") {}

void readBootstrap(std::istream& stream, BootstrapInfo& info) {
    try {
        const StreamExceptionGuard guard(stream,
                                         std::ios::eofbit | std::ios::failbit | std::ios::badbit);
        info = readInfo(stream);
    } catch (const std::exception&) {
        // On purpose: a box cut short and a box that is wrong have the same text.
        // Pinned by BootstrapReaderTest.RefusesAFileThatStopsAnywhereWithTheSameText.
        throw InvalidBootstrapFormat();
    }
}

}  // namespace torvo::kzs
