#include "kzm/Reader.h"

#include <utility>

#include "kzm/impl/FlatCall.h"
#include "kzm/impl/KZMTrack.h"
#include "kzm/impl/Reader.h"
#include "kzs/base/ByteOrder.h"

namespace qlix::kzm {
namespace {

using impl::flat;

impl::ScaledTime scaled(const MovieTime& time) { return {time.value, time.timescale}; }

std::vector<Track> handlesOf(std::vector<std::shared_ptr<const impl::KZMTrack>> tracks) {
    std::vector<Track> handles;
    handles.reserve(tracks.size());
    for (auto& track : tracks) handles.emplace_back(std::move(track));
    return handles;
}

struct OpenForNow {
    explicit OpenForNow(QlixIStream& opened) : stream(opened) { stream.open(); }
    ~OpenForNow() {
        try {
            stream.close();
        } catch (...) {
        }
    }
    OpenForNow(const OpenForNow&) = delete;
    OpenForNow& operator=(const OpenForNow&) = delete;

    QlixIStream& stream;
};

}  // namespace

std::uint32_t peekType(QlixIStream& stream) {
    constexpr std::uint64_t kHead = 8;
    std::uint8_t head[kHead];
    const OpenForNow opened(stream);
    std::uint64_t got = 0;
    while (got < kHead) {
        const std::uint64_t more = stream.read(head + got, kHead - got);
        // On purpose: no failure. Pinned by PeekTypeTest.AnswersZeroForFewerThanEightBytes.
        if (more == 0) return 0;
        got += more;
    }
    return torvo::kzs::loadU32(head + 4);
}

Reader::Reader(QlixIStream& stream, WarningHandler* handler, Allocator* allocator, bool ignoreEdits)
    : reader_(flat([&] {
          return std::make_shared<impl::Reader>(stream, handler, allocator, ignoreEdits);
      })) {}

DocInfo Reader::docInfo() const {
    return flat([this] { return reader_->docInfo(); });
}

std::vector<Track> Reader::tracks(const std::vector<std::uint32_t>& handlers) const {
    return flat([&] { return handlesOf(reader_->tracks(handlers)); });
}

std::shared_ptr<SampleIterator> Reader::createIterator(
    const MovieTime& start, const MovieTime& end,
    const std::vector<std::uint32_t>& handlers) const {
    return flat([&] {
        return reader_->createIterator(scaled(start), scaled(end), reader_->selected(handlers));
    });
}

std::shared_ptr<SampleIterator> Reader::createIterator(const MovieTime& start, const MovieTime& end,
                                                       const std::vector<Track>& selection) const {
    return flat([&] {
        std::vector<std::shared_ptr<const impl::KZMTrack>> tracks;
        for (const Track& track : selection) {
            if (!track) raise(ErrorCode::badArgument);
            tracks.push_back(track.handle());
        }
        if (tracks.empty()) tracks = reader_->selected({});
        return reader_->createIterator(scaled(start), scaled(end), tracks);
    });
}

MovieTime Reader::wholeEnd() const {
    return flat([this] {
        const impl::ScaledTime end = reader_->wholeEnd();
        return MovieTime{end.value, end.timescale};
    });
}

void Reader::sampleData(const Sample& sample, std::uint8_t* buffer) const {
    flat([&] { reader_->sampleData(sample, buffer); });
}

}  // namespace qlix::kzm
