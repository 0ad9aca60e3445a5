#include "offline/SampleDump.h"

#include <algorithm>
#include <iomanip>
#include <locale>
#include <ostream>
#include <sstream>
#include <string>
#include <vector>

#include <boost/format.hpp>

#include "kzm/Allocator.h"
#include "kzm/Exception.h"
#include "kzm/Reader.h"
#include "kzm/WarningHandler.h"
#include "kzs/AVFragmenter.h"
#include "kzs/base/ByteOrder.h"
#include "kzs/base/FileStream.h"
#include "kzspkgutil/KZMSampleIterator.h"
#include "kzspkgutil/KZMStream.h"
#include "kzspkgutil/KZMTagBuilder.h"
#include "offline/ErrorMapping.h"
#include "offline/FragmentTiming.h"
#include "offline/InputPath.h"

namespace torvo::offline {
namespace {

using kzs::fourCc;
using kzs::FragmenterSample;
using qlix::kzm::Reader;
using qlix::kzm::Sample;

constexpr std::uint32_t kShownBytes = 16;

const char* mediaTypeOf(const Sample& sample) {
    switch (sample.handler) {
        case fourCc("vide"):
            return "video";
        case fourCc("soun"):
            return "audio";
        case fourCc("hint"):
            return "hint";
        case fourCc("meta"):
            return "data";
        default:
            return "unk";
    }
}

const char* sampleTypeOf(const Sample& sample) {
    constexpr const char* kTypes[] = {"normal", "key", "gap"};
    const std::uint32_t type = sample.frameType();
    return type < std::size(kTypes) ? kTypes[type] : "unk";
}

std::string firstBytesOf(Reader& reader, const Sample& sample) {
    Sample head = sample;
    head.size = std::min(sample.size, kShownBytes);
    std::vector<std::uint8_t> bytes(head.size);
    if (!bytes.empty()) reader.sampleData(head, bytes.data());

    std::ostringstream text;
    text.exceptions(std::ios::failbit | std::ios::badbit);
    text.imbue(std::locale::classic());
    // On purpose: the width is set once and holds for the first blank alone, which becomes "0 ";
    // no value is padded. Without any bytes there is not even that.
    // Pinned by SampleDumpCliTest.MessagesAreData and .PausesOfAnEditListShowAsGapsWithoutData.
    text << std::hex << std::setw(2) << std::setfill('0');
    for (const std::uint8_t byte : bytes) text << ' ' << static_cast<unsigned>(byte);
    return text.str();
}

void printSamples(Reader& reader, const std::vector<Sample>& samples, std::uint32_t fragment,
                  std::ostream& out) {
    // On purpose: with a blank in front of the third comma.
    // Pinned by SampleDumpCliTest.MessagesAreData.
    constexpr const char* kLine =
        "in | fragment : %1%, timestamp : %2%, media-type : %3% , length : %4%, "
        "sample-type : %5%, data : %6%\n";
    for (const Sample& sample : samples) {
        out << boost::format(kLine) % fragment %
                   kzspkgutil::sampleTimeOf(sample.time, sample.timescale).value %
                   mediaTypeOf(sample) % sample.size % sampleTypeOf(sample) %
                   firstBytesOf(reader, sample);
    }
}

void dumpAll(Reader& reader, kzs::AVFragmenter& fragmenter, std::ostream& out) {
    const std::uint32_t timescale = reader.docInfo().timescale;
    const auto samples = reader.createIterator({0, timescale}, reader.wholeEnd(),
                                               {fourCc("vide"), fourCc("soun"), fourCc("meta")});
    std::vector<Sample> pending;
    FragmenterSample last;
    while (samples->hasSample()) {
        Sample sample = samples->next();
        last = kzspkgutil::fragmenterSampleOf(sample);
        // On purpose: skipped samples too, and every kind of event closes.
        // Pinned by SampleDumpCliTest.EveryClosingEventEndsAPrintedFragment.
        const kzs::FragmentEvent event = fragmenter.addSample(last);
        if (event.kind != kzs::FragmentEventKind::None) {
            printSamples(reader, pending, event.fragmentNumber, out);
            pending.clear();
        }
        pending.push_back(std::move(sample));
    }
    printSamples(reader, pending, fragmenter.finish(last).fragmentNumber, out);
}

}  // namespace

void dumpSamples(const OptionMap& options, std::ostream& out) {
    // On purpose: a fragmenter for video even where there is none, and a reader for one kind of
    // file, so that FLV fails. Pinned by SampleDumpCliTest.AudioAloneIsCutAsIfThereWereVideo and
    // .AnFlvFileIsNotReadHere.
    kzs::AVFragmenter fragmenter(fragmentTimingOf(options).fragmentDuration,
                                 /*checkFirstCut=*/false);
    const std::string& path = textOf(options, "input-file");
    refuseFifo(path);
    try {
        kzspkgutil::KZMStream stream(path, kzs::openFlagsFor(false, false));
        qlix::kzm::WarningHandler tolerant;
        qlix::kzm::Allocator allocator;
        const bool ignoresEdits = !flagOf(options, "edit-list");
        Reader reader(stream, &tolerant, &allocator, ignoresEdits);
        dumpAll(reader, fragmenter, out);
    } catch (const qlix::kzm::Exception& failure) {
        throwBoxLibraryFailure(failure.code());
    }
}

}  // namespace torvo::offline
