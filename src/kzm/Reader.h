#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "kzm/DateRecord.h"
#include "kzm/Exception.h"
#include "kzm/QlixIStream.h"
#include "kzm/Sample.h"
#include "kzm/Track.h"

namespace qlix::kzm {

class Allocator;
class WarningHandler;

namespace impl {
class Reader;
}

/// The code of the first box of a stream; 0 when the stream has fewer than 8 bytes.
///
/// Opens the stream and closes it again. Throws what the stream throws.
std::uint32_t peekType(QlixIStream& stream);

/// A time and the ticks a second that it counts.
struct MovieTime {
    std::uint64_t value = 0;
    std::uint32_t timescale = 1000;
};

/// What a document says about the whole movie.
struct DocInfo {
    std::uint32_t recordSize = 48;  ///< length of the record in its packed form
    bool fragmented = false;        ///< samples stand in fragments
    DateRecord creationDate;
    DateRecord modificationDate;
    float rate = 1.0F;            ///< 1 is normal speed
    float volume = 1.0F;          ///< 1 is full volume
    std::uint32_t timescale = 0;  ///< ticks a second
    std::uint64_t duration = 0;   ///< ticks; 0 in many fragmented files
};

/// A document that is open for reading: a cheap handle, closed with the last one and the last
/// iterator made from it.
///
/// Every failure is an Exception; memory that runs out is one too.
class Reader {
public:
    /// Opens `stream`, holding a reference on it, and reads up to the movie. `handler` (null
    /// tolerates every warning) and `allocator` (null: the global heap) outlive the document.
    /// With `ignoreEdits` edit lists don't count. Throws noMovie for a file without a movie,
    /// noTimescale where a timescale is 0, and whatever the structure of the file deserves.
    Reader(QlixIStream& stream, WarningHandler* handler, Allocator* allocator, bool ignoreEdits);

    /// Throws noMovieHeader.
    DocInfo docInfo() const;
    /// The tracks whose handler is in `handlers`, or all if that is empty, in file order.
    std::vector<Track> tracks(const std::vector<std::uint32_t>& handlers = {}) const;

    /// Samples of decode times in [start, end), interleaved by time; of equal times the one of
    /// the track that comes first in the selection. With edit lists the times are those of the
    /// presentation, and pauses come as markers.
    ///
    /// The order of a selection by handlers is that of the list, within a handler that of the
    /// file; an empty list, of handlers or of tracks, takes all tracks. Throws noSampleTables.
    std::shared_ptr<SampleIterator> createIterator(
        const MovieTime& start, const MovieTime& end,
        const std::vector<std::uint32_t>& handlers) const;
    std::shared_ptr<SampleIterator> createIterator(const MovieTime& start, const MovieTime& end,
                                                   const std::vector<Track>& selection) const;

    /// The end to ask for to get everything: the movie's duration. A fragmented movie that gives
    /// none, or that of samples in front of its fragments, ends where its fragments' header says,
    /// or else never.
    MovieTime wholeEnd() const;

    /// Reads the bytes of a sample into `buffer`, which has room for them. Throws
    /// sampleUnreadable where they don't lie in the file's media data in full.
    void sampleData(const Sample& sample, std::uint8_t* buffer) const;

private:
    std::shared_ptr<impl::Reader> reader_;
};

}  // namespace qlix::kzm
