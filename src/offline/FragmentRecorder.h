#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "kzs/AfraIndex.h"
#include "kzs/FragmentEvent.h"
#include "kzspkgutil/model/IMediaWriter.h"
#include "offline/IndexFile.h"

namespace torvo::kzs {
struct Rendition;
}

namespace torvo::offline {

class ISegmenter;

/// Turns the events of a fragmenter into output: fragments, the bootstrap of the rendition, the
/// index and its files. Holds the messages that wait for their fragment.
///
/// A fragment is written in this order: it is registered in the bootstrap, so that the copy in
/// front of its data has it already; its data is written; its index entry is made, the index file
/// written; then the segment may change. Throws InvalidAfraException where fragment numbers fall
/// back, std::ios_base::failure for index files, std::length_error where a leap in time would
/// need too many index entries, and what the writer throws.
class FragmentRecorder {
public:
    /// Writer, segmenter and rendition outlive the recorder. `fragmentDuration` is in
    /// milliseconds, as for the fragmenter.
    FragmentRecorder(kzspkgutil::IMediaWriter& writer, ISegmenter& segmenter,
                     kzs::Rendition& rendition, std::uint32_t fragmentDuration,
                     const std::string& outputPath, const std::string& baseName);

    /// Acts on the event that the sample at `sampleTime` brought. The sample's own message is to
    /// be kept afterwards, so that it starts the next fragment. Returns true when a fragment was
    /// written: the points at which a run may end early.
    bool handleEvent(const kzs::FragmentEvent& event, const kzs::Timestamp& sampleTime);
    void keep(kzspkgutil::TCMessage message) { pending_.push_back(std::move(message)); }

    /// Acts on the event of the end of the input. `lastTime` is that of its last sample.
    void handleEnd(const kzs::FragmentEvent& event, const kzs::Timestamp& lastTime);
    void dropPending() { pending_.clear(); }
    /// Writes the index as the file of the current segment, for the last time.
    void finishIndexFile();

    /// What waits for its fragment. What was written at the end of the input is still there,
    /// without its bytes.
    const kzspkgutil::MessageList& pending() const { return pending_; }
    const kzs::AfraIndex& index() const { return index_; }
    std::uint64_t fragmentsWritten() const { return fragmentsWritten_; }
    /// Of all messages kept so far, written or not.
    std::uint64_t bytesKept() const;

private:
    void startSpan(const kzs::FragmentEvent& event, const kzs::Timestamp& currentTime);
    void endSpan(const kzs::FragmentEvent& event);
    kzs::FragmentEvent tailBehindLastCut(const kzs::Timestamp& lastTime) const;

    void registerFragment(const kzs::FragmentEvent& event, const kzs::Timestamp& currentTime,
                          bool isLast);
    void writeFragment(const kzs::FragmentEvent& event, const kzs::Timestamp& currentTime,
                       bool isLast);
    void writeKeptFragment(const kzs::Timestamp& cutTime);
    void recordGap(const kzs::FragmentEvent& event);
    std::uint64_t writePending(const kzs::Timestamp& cutTime);
    void writeIndexFile();
    void appendEntry(const kzs::FragmentEvent& event, std::uint64_t afraOffset);
    /// All that wait; those that a cut drops hand over their bytes.
    void gatherOutgoing(const kzs::Timestamp& cutTime);
    /// The first that a cut leaves in the list.
    kzspkgutil::MessageList::iterator firstKeptAt(const kzs::Timestamp& cutTime);
    void prunePending(const kzs::Timestamp& cutTime);

    kzspkgutil::IMediaWriter& writer_;  // outlives the recorder
    ISegmenter& segmenter_;             // outlives the recorder
    kzs::Rendition& rendition_;         // outlives the recorder
    std::uint32_t fragmentDuration_;    // ms
    kzs::AfraIndex index_;
    IndexFile indexFile_;
    kzspkgutil::MessageList pending_;
    kzspkgutil::MessageList outgoing_;  // empty between two fragments, kept for its room
    std::uint64_t fragmentsWritten_ = 0;
    std::uint64_t prunedBytes_ = 0;
    kzs::FragmentEvent keptEvent_;           // the last SpanStart
    std::optional<kzs::Timestamp> lastCut_;  // the end of the last event that closed something
};

/// The bootstrap bytes for the front of a fragment, from the version field on, behind one zero
/// byte that is not part of them.
std::string primedBootstrap(const kzs::Rendition& rendition);

}  // namespace torvo::offline
