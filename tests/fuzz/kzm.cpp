#include <memory>
#include <vector>

#include "fuzz/FuzzTarget.h"
#include "kzm/Reader.h"
#include "kzm/SampleDescriptor.h"
#include "support/MemoryStream.h"

using namespace qlix::kzm;

namespace {

/// Reads to the last byte of the last sample, as far as the samples lie in the file.
void walk(const Reader& reader, SampleIterator& samples, std::size_t fileSize) {
    std::vector<std::uint8_t> bytes;
    while (samples.hasSample()) {
        const Sample sample = samples.next();
        kz::fuzz::require(sample.timescale != 0, "a sample has a timescale");
        if (sample.frameType() == kSampleIsEmptyEdit) continue;
        kz::fuzz::require(sample.description != nullptr, "a sample has a description");
        // As its caller must: no memory for what the file can't hold.
        if (sample.size > fileSize) throw Exception(1030);
        bytes.resize(sample.size);
        reader.sampleData(sample, bytes.data());
    }
}

void visitTracks(const Reader& reader) {
    for (const Track& track : reader.tracks()) {
        kz::fuzz::require(track.info().timescale != 0, "a track has a timescale");
        try {
            for (std::size_t i = 0; i < track.descriptionCount(); ++i) {
                track.description(i).copyOut();
            }
        } catch (const Exception&) {
        }
    }
}

void read(const kz::test::Bytes& file, bool ignoreEdits) {
    kz::test::MemoryStream stream(file);
    try {
        const Reader reader(stream, nullptr, nullptr, ignoreEdits);
        reader.docInfo();
        visitTracks(reader);
        const std::shared_ptr<SampleIterator> samples =
            reader.createIterator(MovieTime{}, reader.wholeEnd(), std::vector<Track>{});
        walk(reader, *samples, file.size());
        visitTracks(reader);
    } catch (const Exception&) {
    }
    kz::fuzz::require(stream.references == 0, "all references on the stream are given back");
}

}  // namespace

/// With the edit lists and without them.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const kz::test::Bytes file(data, data + size);
    {
        kz::test::MemoryStream stream(file);
        peekType(stream);
    }
    read(file, true);
    read(file, false);
    return 0;
}
