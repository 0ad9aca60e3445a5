#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "kzm/WriterRecords.h"

namespace qlix::kzm {

class Allocator;
class QlixIOStream;
class SampleDescriptor;

namespace impl {
class Writer;
}

/// Writes a file whose sample tables stand in its headers, or a plain fragmented file.
///
/// The handle may be copied; the last copy closes the file and swallows what fails then: call
/// `close` to hear of it. Every operation throws Exception and nothing else. After a code that
/// concerns more than the call (leavesWriterUsable) all further writing throws notOpen.
class Writer {
public:
    /// Opens `stream`, of which a reference is held until the file is closed, and writes the
    /// start of the file. `allocator` may be null and outlives the writer. Throws noTimescale.
    Writer(QlixIOStream& stream, const WriterConfiguration& configuration, Allocator* allocator);

    /// Adds a track before the first sample. `name` and `nameLength` repeat the handler name of
    /// `info`, which is the one that counts. `sampleTableCapacity` doesn't count in a fragmented
    /// file. Throws noTimescale, trackAddedTooLate.
    TrackHandle addTrack(const KZMTrackInfo& info, const KZMTrackParams& params, const char* name,
                         std::uint32_t nameLength,
                         std::uint32_t sampleTableCapacity = kDefaultSampleTableCapacity);
    /// Adds a description, which holds for the samples written from now on. `data` is the codec
    /// data; that in `description` isn't looked at. Throws badArgument for a null track,
    /// wrongHandler, descriptionTooLarge, secondRtmpDescription.
    SampleDescriptionHandle addSampleDescription(const TrackHandle& track,
                                                 const SampleDescriptor& description,
                                                 const std::vector<std::uint8_t>& data);
    /// Throws badArgument, wrongHandler, emptySample, noTimescale, noDescriptionSet,
    /// timeWentBack, gapTooLong, editListFull, tableFull, writeFailed.
    void writeSample(const TrackHandle& track, const KZMSample& sample, SampleData data);
    /// Closes the open fragment if it has samples, and hands all bytes to the stream.
    void flush();
    /// Finishes the file. A second call does nothing.
    void close();

private:
    std::shared_ptr<impl::Writer> impl_;
};

}  // namespace qlix::kzm
