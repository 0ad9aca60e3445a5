#include "offline/BootstrapDump.h"

#include <istream>
#include <ostream>
#include <string>
#include <vector>

#include "kzs/BootstrapInfo.h"
#include "kzs/BootstrapReader.h"
#include "offline/OfflineException.h"

namespace torvo::offline {
namespace {

void printTexts(std::ostream& out, const std::vector<std::string>& texts) {
    for (const std::string& text : texts) out << "\t\t" << text << '\n';
}

void printSegments(std::ostream& out, const kzs::SegmentRunTable& table) {
    out << "segment run table:\n"
        << "\tis update: " << table.update << '\n'
        << "\tqualities:\n";
    printTexts(out, table.qualities);
    out << "\tentries:\n";
    for (const kzs::SegmentRunEntry& entry : table.entries) {
        out << "\t\tsegment = " << entry.firstSegment
            << ", fragments = " << entry.fragmentsPerSegment << '\n';
    }
}

void printFragments(std::ostream& out, const kzs::FragmentRunTable& table) {
    out << "fragment run table:\n"
        << "\tis update: " << (table.update != 0) << '\n'
        << "\tqualities:\n";
    printTexts(out, table.qualities);
    out << "\tentries:\n";
    for (const kzs::FragmentRunEntry& entry : table.entries) {
        out << "\t\tfragment = " << entry.firstFragment
            << ", timestamp = " << entry.firstFragmentTimestamp.value
            << ", duration = " << entry.fragmentDuration;
        // On purpose: only where the duration is 0, as in the box itself.
        // Pinned by InspectCliTest.ABootstrapIsPrintedLineByLine.
        if (entry.fragmentDuration == 0) {
            out << ", discontinuity = " << entry.discontinuityIndicator;
        }
        out << '\n';
    }
}

kzs::BootstrapInfo readAt(std::istream& stream) {
    try {
        kzs::BootstrapInfo info;
        kzs::readBootstrap(stream, info);
        return info;
    } catch (const kzs::InvalidBootstrapFormat&) {
        throw InvalidBootstrapException();
    }
}

}  // namespace

void printBootstrapAt(std::istream& stream, std::ostream& out) {
    const kzs::BootstrapInfo info = readAt(stream);
    out << "bootstrap:\n"
        << "\tversion: " << info.version << '\n'
        << "\tis update: " << info.update << '\n'
        << "\tis live: " << info.live << '\n'
        << "\tmovie id: " << info.movieIdentifier << '\n'
        << "\ttimescale: " << info.timescale << '\n'
        << "\tcurrent media time: " << info.currentMediaTime.value << '\n'
        << "\tsmpte timecode offset: " << info.smpteTimeCodeOffset << '\n'
        << "\tservers:\n";
    printTexts(out, info.servers);
    out << "\tqualities:\n";
    printTexts(out, info.qualities);
    out << "segments:\n";
    for (const kzs::SegmentRunTable& table : info.segmentRunTables) printSegments(out, table);
    out << "fragments:\n";
    for (const kzs::FragmentRunTable& table : info.fragmentRunTables) printFragments(out, table);
}

}  // namespace torvo::offline
