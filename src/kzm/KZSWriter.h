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
class KZSWriter;
}

/// Writes a segment file: headers, then fragments of `afra`, `abst`, `moof` and `mdat`, whose bytes
/// belong to the samples of a hint track; the samples of the other tracks are ranges of them.
///
/// The handle may be copied; the last copy closes the file and swallows what fails then: call
/// `flush` or `close` to hear of it. Every operation throws Exception and nothing else. After a
/// code that concerns more than the call (leavesWriterUsable) all further writing throws notOpen.
/// A null track handle gives badArgument.
class KZSWriter {
public:
    /// Opens `stream`, of which a reference is held until the file is closed, and writes the
    /// start of the file. `allocator` may be null and outlives the writer. Throws noTimescale.
    KZSWriter(QlixIOStream& stream, const WriterConfiguration& configuration, Allocator* allocator);

    /// Adds a media track before the first fragment. `name` and `nameLength` repeat the handler
    /// name of `info`, which is the one that counts. Throws noTimescale, trackAddedTooLate.
    TrackHandle addTrack(const KZMTrackInfo& info, const KZMTrackParams& params, const char* name,
                         std::uint32_t nameLength,
                         std::uint32_t sampleTableCapacity = kDefaultSampleTableCapacity);
    /// The same for the one hint track, which refers to `count` tracks at `referenced`. Throws
    /// secondHintTrack too.
    TrackHandle addHintTrack(const KZMTrackInfo& info, const KZMTrackParams& params,
                             const char* name, std::uint32_t nameLength,
                             const TrackHandle* referenced, std::uint32_t count);
    /// Adds a description, which holds for the samples written from now on. `data` is the codec
    /// data; that in `description` isn't looked at. One of format `rtmp` on the hint track settles
    /// the time origin. With samples of the track in the open fragment the fragment is closed and
    /// none is open. Throws wrongHandler, descriptionTooLarge, secondRtmpDescription.
    SampleDescriptionHandle addSampleDescription(const TrackHandle& track,
                                                 const SampleDescriptor& description,
                                                 const std::vector<std::uint8_t>& data);
    /// Closes the open fragment, begins one, and returns its position in the file. Does nothing
    /// when the open one is still empty and has no bootstrap. The first call ends the adding of
    /// tracks. Throws noHintTrack; bootstrapWithoutFragment for a bootstrap without samples.
    std::uint64_t startFragment();
    /// Gives the open fragment a copy of the bootstrap: the body of its `abst` behind version and
    /// flags. The buffer stays until `release(context)` (null: nothing to do), which is called
    /// once, also when this call fails. Throws badArgument for a null buffer, secondBootstrap.
    void setBootstrap(const std::uint8_t* buffer, std::uint64_t size, void* context,
                      void (*release)(void* context));
    /// Writes a sample of one track. With `afraEntry` the fragment's index gets its time and
    /// place. Throws wrongHandler, emptySample, noTimescale, noTimeOrigin, noDescriptionSet,
    /// noFragmentOpen, timeWentBack, gapTooLong; editListFull, writeFailed.
    void writeSample(const TrackHandle& track, const KZMSample& sample, SampleData data,
                     bool afraEntry);
    /// Writes a sample of the hint track and a sample of `media` that is the range `part` of its
    /// bytes. Throws trackNotHinted, and what `writeSample` throws.
    void writeHintedSample(const TrackHandle& hint, const TrackHandle& media,
                           const KZMSample& hintSample, const MediaPart& part, SampleData data,
                           bool afraEntry);
    /// Closes the open fragment if it has samples, begins the next, and hands all bytes to the
    /// stream.
    void flush();
    /// Finishes the file. A second call does nothing.
    void close();

private:
    std::shared_ptr<impl::KZSWriter> impl_;
};

}  // namespace qlix::kzm
