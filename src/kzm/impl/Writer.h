#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "kzm/SampleDescriptor.h"
#include "kzm/WriterRecords.h"
#include "kzm/impl/FileImage.h"
#include "kzm/impl/FragmentHeap.h"
#include "kzm/impl/HeaderTree.h"
#include "kzm/impl/KZMBase.h"
#include "kzm/impl/MdatBox.h"
#include "kzm/impl/OpenFragment.h"
#include "kzm/impl/QlixKZMIOStream.h"
#include "kzm/impl/SampleBlock.h"
#include "kzm/impl/TrackState.h"

namespace qlix::kzm::impl {

/// Writes a file with sample tables, or a fragmented one whose data stand in front of each `moof`.
///
/// Boxes get their place by the position of the next one, and are written at fixed moments, so
/// that nothing has to be moved. Track ids count from 1; 0 raises badArgument, others that don't
/// exist unknownTrack. An operation on a writer that isn't open raises notOpen.
class Writer : public KZMBase {
public:
    Writer(QlixIOStream& stream, const WriterConfiguration& configuration, Allocator* allocator);
    /// Gives samples and stream back; the file is finished only by `close`.
    ~Writer() override = default;

    /// Returns the id of the track.
    std::uint32_t addTrack(const KZMTrackInfo& info, const KZMTrackParams& params,
                           std::uint32_t sampleTableCapacity);
    /// Returns the index of the description, from 1.
    virtual std::uint32_t addSampleDescription(std::uint32_t trackId,
                                               const SampleDescriptor& description,
                                               const std::vector<std::uint8_t>& data);
    void writeSample(std::uint32_t trackId, const KZMSample& sample, SampleBlock block);
    virtual void flush();
    void close();

    /// To be told of each failure that leaves an operation: all but those that concern one call
    /// end the writing.
    void noteFailure(std::uint32_t number);

protected:
    enum class State { broken, open, closed };
    enum class Mode : std::uint32_t { fragmented = 0, plain = 1, reserved = 2 };

    /// A sample on its way to the file.
    struct PendingSample {
        std::uint32_t size = 0;
        std::uint32_t compositionOffset = 0;
        std::uint32_t kind = 0;
        std::uint64_t offset = 0;  ///< in the frame of the `mdat`; given when it holds `block`
        SampleBlock block;         ///< none: the bytes belong to another sample

        bool isMarker() const { return isEndOfEditMarker(kind); }
    };

    void requireOpen() const;
    bool isOpen() const { return state_ == State::open; }
    TrackState& track(std::uint32_t trackId);
    std::vector<TrackState>& tracks() { return tracks_; }
    HeaderTree& header() { return header_; }
    FileImage& fragmentHead() { return fragmentHead_; }
    QlixKZMIOStream& file() { return *file_; }
    BoxContext contextOf(QlixKZMStream& stream) const { return {&stream, allocator_}; }
    /// For the boxes around a fragment's data, all gone once the fragment is closed.
    BoxContext fragmentContext() { return {&fragmentHead_, &fragmentHeap_}; }

    std::uint32_t addTrack(const KZMTrackInfo& info, const KZMTrackParams& params,
                           std::uint32_t sampleTableCapacity,
                           const std::vector<std::uint32_t>& hintedTracks);
    /// Checks a sample against its track. Throws wrongHandler, emptySample, badArgument.
    static void check(const TrackState& track, const KZMSample& sample, const SampleBlock& block);
    static PendingSample pendingOf(const KZMSample& sample, SampleBlock block);
    /// Takes a sample at `time`, in ticks of the track.
    void take(TrackState& track, std::int64_t time, PendingSample& sample);
    /// Ends the growth of the headers, if that is still to be done.
    void placeHeader();
    void closeFragment();

    /// Run before and behind the closing of a fragment; `hasData` tells whether it has samples.
    virtual void beginClosing(bool hasData);
    virtual void endClosing(bool hasData);
    /// Lengthens the last samples of tracks that must not end before others; answers whether any
    /// grew.
    virtual bool alignTracks() { return false; }

    std::uint64_t nextOffset_ = 0;  // where the next box goes
    bool writesIndex_ = true;       // an `mfra` ends the file
    bool fragmentOpen_ = true;
    bool buffersData_ = false;  // samples stay in memory until their fragment is closed
    Mode mode_ = Mode::plain;
    bool tracksReserved_ = false;  // nothing sets it
    BoxPtrOf<MdatBox> mdat_;
    std::uint64_t mdatOffset_ = 0;

private:
    void addToFragment(TrackState& track, std::uint64_t time, PendingSample& sample);
    /// `baseOffset` is what the offsets of its samples count from.
    void beginFragment(std::uint64_t baseOffset);
    void addToMoof(TrackState& track, std::uint64_t time, const PendingSample& sample);
    void addToTables(TrackState& track, std::uint64_t time, const PendingSample& sample);
    void patchLastDuration(const TrackState& track, std::uint64_t time);
    void settleEdits();
    void settleDurations();
    void writeFragment();
    void writeData();
    void writeIndex();
    void finish();
    void dropFile();

    Allocator* allocator_;  // outlives the writer; may be null
    WriterConfiguration configuration_;
    std::unique_ptr<QlixKZMIOStream> file_;
    HeaderTree header_;
    FileImage fragmentHead_;     // what stands around the data of the last fragment
    FragmentHeap fragmentHeap_;  // of the boxes in it
    State state_ = State::open;
    std::uint32_t sequenceNumber_ = 0;  // of the last `moof`
    std::vector<TrackState> tracks_;
    std::unique_ptr<OpenFragment> fragment_;
};

}  // namespace qlix::kzm::impl
