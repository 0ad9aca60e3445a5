#include "kzm/impl/Reader.h"

#include <algorithm>
#include <limits>

#include "kzm/ErrorCode.h"
#include "kzm/WarningHandler.h"
#include "kzm/impl/DocIterator.h"
#include "kzm/impl/KZMTrack.h"
#include "kzm/impl/MehdBox.h"
#include "kzm/impl/MoovBox.h"

namespace qlix::kzm::impl {
namespace {

bool askHandler(void* handler, std::uint32_t code) {
    return static_cast<WarningHandler*>(handler)->warn(code);
}

}  // namespace

Reader::OpenStream::OpenStream(QlixKZMIStream& stream) : stream_(stream) { stream_.open(); }

Reader::OpenStream::~OpenStream() {
    try {
        stream_.close();
    } catch (...) {
        // Nothing that was read is wrong for it.
    }
}

Reader::Reader(QlixIStream& stream, WarningHandler* handler, Allocator* allocator, bool ignoreEdits,
               BoxFactory* factory)
    : stream_(&stream),
      openStream_(stream_),
      document_(BoxContext{&stream_, allocator}, factory),
      cache_(stream_),
      ignoreEdits_(ignoreEdits) {
    if (handler != nullptr) stream_.setWarningCallback(&askHandler, handler);
    document_.findMovie();
    cache_.setBase(document_.firstMediaData());
}

DocInfo Reader::docInfo() const {
    const MovieHeader& movie = document_.movieHeader().movie();
    DocInfo info;
    info.fragmented = document_.moov().isFragmented();
    info.creationDate = movie.creationDate;
    info.modificationDate = movie.modificationDate;
    info.rate = static_cast<float>(movie.rate);
    info.volume = static_cast<float>(movie.volume);
    info.timescale = movie.timescale;
    info.duration = beginsInTables() ? durationOfFragments() : movie.duration;
    return info;
}

/// Then the movie header tells of the tables alone: it was written before there were fragments.
bool Reader::beginsInTables() const {
    const auto& tracks = document_.tracks();
    return std::any_of(tracks.begin(), tracks.end(),
                       [](const auto& track) { return track->beginsInTables(); });
}

/// Of the whole movie in its ticks; 0 where a fragmented movie doesn't tell.
std::uint64_t Reader::durationOfFragments() const {
    const MvexBox* mvex = document_.moov().mvex();
    return mvex != nullptr && mvex->mehd() != nullptr ? mvex->mehd()->duration() : 0;
}

std::vector<std::shared_ptr<const KZMTrack>> Reader::tracks(
    const std::vector<std::uint32_t>& handlers) const {
    if (handlers.empty()) return document_.tracks();
    std::vector<std::shared_ptr<const KZMTrack>> found;
    for (const auto& track : document_.tracks()) {
        const std::uint32_t handler = track->record().handler;
        if (std::find(handlers.begin(), handlers.end(), handler) != handlers.end()) {
            found.push_back(track);
        }
    }
    return found;
}

std::vector<std::shared_ptr<const KZMTrack>> Reader::selected(
    const std::vector<std::uint32_t>& handlers) const {
    std::vector<std::shared_ptr<const KZMTrack>> found = tracks(handlers);
    const auto rank = [&](const std::shared_ptr<const KZMTrack>& track) {
        return std::find(handlers.begin(), handlers.end(), track->record().handler);
    };
    std::stable_sort(found.begin(), found.end(),
                     [&](const auto& left, const auto& right) { return rank(left) < rank(right); });
    return found;
}

std::shared_ptr<SampleIterator> Reader::createIterator(
    const ScaledTime& start, const ScaledTime& end,
    const std::vector<std::shared_ptr<const KZMTrack>>& tracks) {
    if (start.timescale == 0 || end.timescale == 0) raise(ErrorCode::noTimescale);
    return std::make_shared<DocIterator>(shared_from_this(), tracks, TimeRange{start, end});
}

ScaledTime Reader::wholeEnd() const {
    const MovieHeader& movie = document_.movieHeader().movie();
    const bool tellsAll =
        document_.moov().mvex() == nullptr || (movie.duration != 0 && !beginsInTables());
    if (tellsAll) return {movie.duration, movie.timescale};
    const std::uint64_t ofFragments = durationOfFragments();
    return {ofFragments != 0 ? ofFragments : std::numeric_limits<std::uint64_t>::max(),
            movie.timescale};
}

void Reader::sampleData(const Sample& sample, std::uint8_t* buffer) {
    cache_.read(sample.fileOffset, buffer, sample.size);
}

}  // namespace qlix::kzm::impl
