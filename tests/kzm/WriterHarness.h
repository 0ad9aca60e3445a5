#pragma once

#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include "kzm/ErrorCode.h"
#include "kzm/KZSWriter.h"
#include "kzm/SampleDescriptor.h"
#include "kzm/Writer.h"
#include "kzs/base/ByteOrder.h"
#include "support/Bytes.h"
#include "support/MemoryStream.h"
#include "support/ThrownCode.h"

namespace kz::test {

/// Where a box stands in a file.
struct BoxSpan {
    std::string type;
    std::size_t offset = 0;
    std::size_t size = 0;

    std::size_t end() const { return offset + size; }
};

/// The boxes that follow each other from `offset` to `end`.
std::vector<BoxSpan> boxesIn(const Bytes& file, std::size_t offset, std::size_t end);
/// The box at the end of a path of codes from the top, `[n]` for the n-th of a code, from 0:
/// "moov/trak[1]/edts/elst". Throws std::logic_error when there is none.
BoxSpan boxAt(const Bytes& file, std::string_view path);
/// The types of the boxes at the top.
std::vector<std::string> topTypes(const Bytes& file);

std::uint32_t u32At(const Bytes& file, std::size_t offset);
std::uint64_t u64At(const Bytes& file, std::size_t offset);

/// A row of an edit list.
struct EditListRow {
    std::uint64_t duration;
    std::int64_t mediaTime;
};
bool operator==(const EditListRow& left, const EditListRow& right);
std::ostream& operator<<(std::ostream& out, const EditListRow& row);

/// A row of a `trun`.
struct RunListRow {
    std::uint32_t duration;
    std::uint32_t size;
    std::uint32_t flags;
    std::uint32_t compositionOffset;
};
bool operator==(const RunListRow& left, const RunListRow& right);
std::ostream& operator<<(std::ostream& out, const RunListRow& row);

/// Rows that the edit list of a track counts; tracks count from 0.
std::vector<EditListRow> editsOf(const Bytes& file, std::size_t track);
/// Rows of all runs of the track with an id in the `moof` that comes as the n-th, from 0; empty
/// without a `traf`.
std::vector<RunListRow> rowsOf(const Bytes& file, std::size_t fragment, std::uint32_t trackId);

/// A file in memory that notes what is written to it.
class RecordingStream : public MemoryStream {
public:
    struct Write {
        std::uint64_t position;
        std::uint64_t size;
        const void* bytes;
    };

    std::uint64_t write(const void* buffer, std::uint64_t wanted) override {
        log.push_back({position, wanted, buffer});
        return MemoryStream::write(buffer, wanted);
    }

    std::vector<Write> log;
};

/// Gives samples out and counts those that came back.
class SamplePool {
public:
    qlix::kzm::SampleData data(const Bytes& bytes);

    std::size_t given() const { return kept_.size(); }
    std::vector<std::size_t> released;  ///< numbers of the samples, from 0, as they came back

private:
    struct Tag {
        SamplePool* pool;
        std::size_t number;
    };
    static void onRelease(void* context);

    std::deque<Bytes> kept_;
    std::deque<Tag> tags_;
};

qlix::kzm::KZMTrackInfo trackInfo(std::string_view handler, std::uint32_t timescale);
/// Room for `edits` pauses and one description of 16 bytes of codec data.
qlix::kzm::KZMTrackParams trackParams(std::uint32_t edits);
qlix::kzm::KZMSample sampleOf(std::string_view handler, std::uint64_t time, std::uint32_t timescale,
                              std::uint32_t size, std::uint32_t kind = 0);

/// A segment writer over a file in memory, with a video track 1, an audio track 2 and the hint
/// track 3, all of timescale 1000 unless told, each with a description.
class SegmentDriver {
public:
    struct Options {
        std::uint32_t movieTimescale = 1000;
        std::uint32_t videoTimescale = 1000;
        std::uint32_t hintTimescale = 1000;
        std::uint32_t maxEdits = 5;
        std::uint32_t timeOrigin = 0;
        std::uint32_t descriptionSlots = 1;
        bool describe = true;
    };

    explicit SegmentDriver(const Options& options);
    SegmentDriver() : SegmentDriver(Options()) {}

    /// A whole hint sample that is a media sample too; times at 1000.
    void video(std::uint64_t time, const Bytes& bytes, std::uint32_t kind = 0, bool entry = false);
    void audio(std::uint64_t time, const Bytes& bytes, bool entry = false);
    void hintOnly(std::uint64_t time, const Bytes& bytes, bool entry = false);
    void marker(const qlix::kzm::TrackHandle& track, std::string_view handler, std::uint64_t time);
    void bootstrap(const Bytes& bytes);
    /// A description for a media track or the hint track; the hint track's settles the origin.
    void describe(const qlix::kzm::TrackHandle& track, std::string_view handler);

    const Bytes& file() const { return stream.content; }

    SamplePool pool;  // outlives the writer, which gives samples back when it goes
    RecordingStream stream;
    qlix::kzm::KZSWriter writer;
    qlix::kzm::TrackHandle videoTrack;
    qlix::kzm::TrackHandle audioTrack;
    qlix::kzm::TrackHandle hintTrack;

private:
    void hinted(const qlix::kzm::TrackHandle& media, std::uint64_t time, const Bytes& bytes,
                std::uint32_t kind, bool entry);

    std::uint32_t timeOrigin_;
};

}  // namespace kz::test
