#include "offline/Inspection.h"

#include <fstream>
#include <locale>
#include <ostream>
#include <string>
#include <vector>

#include "kvl/InputFile.h"
#include "kzs/AfraIndex.h"
#include "kzs/AfraReader.h"
#include "kzs/base/BoxFunctions.h"
#include "kzs/base/ByteOrder.h"
#include "offline/BootstrapDump.h"
#include "offline/InputPath.h"
#include "offline/OfflineException.h"

namespace torvo::offline {
namespace {

using kzs::fourCc;

std::ifstream openInput(const OptionMap& options) {
    const std::string& path = textOf(options, "input-file");
    requireFile(path);
    std::ifstream stream;
    kvl::openForReading(stream, path);
    if (!stream) throw CantAccessFileException(path);
    return stream;
}

void printIndexAt(std::istream& stream, std::ostream& out) {
    kzs::AfraIndex index;
    kzs::readAfra(stream, index);
    out << "afra:\n"
        << "\tlong ids: " << index.longIds << '\n'
        << "\tlong offsets: " << index.longOffsets << '\n'
        << "\tentries:\n";
    for (const kzs::AfraEntry& entry : index.localEntries) {
        out << "\t\ttime = " << entry.time.value << ", offset = " << entry.offset << '\n';
    }
    out << "\tglobal entries:\n";
    for (const kzs::AfraEntry& entry : index.globalEntries) {
        out << "\t\ttime = " << entry.time.value << ", segment = " << entry.segment
            << ", fragment = " << entry.fragment << ", afra-offset = " << entry.afraOffset
            << ", offset-from-afra = " << entry.offsetFromAfra << '\n';
    }
}

/// Makes bools words, and numbers free of the environment, while it lives.
class PrintSettings {
public:
    explicit PrintSettings(std::ostream& out)
        : out_(out), formerFlags_(out.flags()), formerLocale_(out.imbue(std::locale::classic())) {
        out_ << std::boolalpha << std::dec;
    }
    ~PrintSettings() {
        out_.flags(formerFlags_);
        out_.imbue(formerLocale_);
    }
    PrintSettings(const PrintSettings&) = delete;
    PrintSettings& operator=(const PrintSettings&) = delete;

private:
    std::ostream& out_;  // outlives the object
    std::ios::fmtflags formerFlags_;
    std::locale formerLocale_;
};

}  // namespace

void inspectIndex(const OptionMap& options, std::ostream& out) {
    const PrintSettings settings(out);
    std::ifstream stream = openInput(options);
    // On purpose: at the first byte, although the help speaks of a segment file too.
    // Pinned by InspectCliTest.AnIndexOrABootstrapBehindOtherBytesIsNotLookedFor.
    printIndexAt(stream, out);
}

void inspectBootstrap(const OptionMap& options, std::ostream& out) {
    const PrintSettings settings(out);
    std::ifstream stream = openInput(options);
    // On purpose: at the first byte, as for the index.
    // Pinned by InspectCliTest.AnIndexOrABootstrapBehindOtherBytesIsNotLookedFor.
    printBootstrapAt(stream, out);
}

void inspectFragments(const OptionMap& options, std::ostream& out) {
    const PrintSettings settings(out);
    std::ifstream stream = openInput(options);
    for (std::uint64_t number = 1; kzs::findBox(stream, fourCc("afra")); ++number) {
        out << "fragment: " << number << ", " << static_cast<std::streamoff>(stream.tellg())
            << '\n';
        printIndexAt(stream, out);
        // On purpose: the next bootstrap wherever it is, past further indexes too.
        // Pinned by InspectCliTest.TheBootstrapMayLieBehindFurtherIndexes.
        if (kzs::findBox(stream, fourCc("abst"))) printBootstrapAt(stream, out);
    }
}

}  // namespace torvo::offline
