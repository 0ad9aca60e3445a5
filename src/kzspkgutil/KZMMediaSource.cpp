#include "kzspkgutil/KZMMediaSource.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include <boost/smart_ptr/make_shared.hpp>

#include "kzs/base/ByteOrder.h"
#include "kzspkgutil/DescriptorReader.h"
#include "kzspkgutil/KZMSampleIterator.h"
#include "kzspkgutil/model/KZSPkgUtilException.h"
#include "kzspkgutil/model/KZSTrackIterator.h"

namespace torvo::kzspkgutil {
namespace {

using kzs::fourCc;

// `opus` is not among them, though its samples could be made into tags.
constexpr std::array<std::uint32_t, 21> kSupportedFormats = {
    fourCc("tx3g"), fourCc("amf0"), fourCc("amf3"), fourCc("H264"), fourCc("h264"), fourCc("avc1"),
    fourCc("mp4v"), fourCc("H263"), fourCc("VP6F"), fourCc("VP6A"), fourCc(".mp3"), fourCc("mp4a"),
    fourCc("nmos"), fourCc("spex"), fourCc("ac-3"), fourCc("ec-3"), fourCc("dtsc"), fourCc("dtsh"),
    fourCc("dtsl"), fourCc("dtse"), fourCc("text")};

constexpr std::array<std::uint32_t, 3> kHandlers = {fourCc("vide"), fourCc("soun"), fourCc("meta")};

bool isSupported(std::uint32_t format) {
    return std::find(kSupportedFormats.begin(), kSupportedFormats.end(), format) !=
           kSupportedFormats.end();
}

// On purpose: only the first description decides; those behind it may be of any format.
// Pinned by KZMMediaSourceTest.GoesByTheFirstDescriptionAlone.
bool isSupported(const qlix::kzm::Track& track) {
    return track.descriptionCount() > 0 && isSupported(track.description(0).format);
}

boost::shared_ptr<KZSTrack> makeTrack(const qlix::kzm::Track& source) {
    const qlix::kzm::TrackRecord& info = source.info();
    auto track = boost::make_shared<KZSTrack>();
    track->handler = info.handler;
    track->language.assign(info.language, std::find(info.language, info.language + 3, '\0'));
    track->trackId = info.trackId;
    track->duration = info.duration;  // in the track's own timescale already
    track->width = info.width;
    track->height = info.height;
    track->volume = info.volume;
    track->timescale = info.timescale;
    track->trackFlags = info.flags;
    track->descriptionCount = info.descriptionCount;
    track->emptyEditCount = info.emptyEditCount;
    track->largestDescriptionSize = info.largestDataLength;
    for (std::size_t i = 0; i < source.descriptionCount(); ++i) {
        track->descriptors.push_back(readDescriptor(source.description(i)));
    }
    track->sampleCount = source.sampleCount();
    return track;
}

}  // namespace

KZMMediaSource::KZMMediaSource(IPackagerContext& context, const std::string& path,
                               std::uint32_t openFlags, bool ignoreEdits)
    : context_(context),
      stream_(path, openFlags),
      reader_(stream_, &warnings_, &allocator_, ignoreEdits) {
    readProperties();
    selectTracks();
    if (tracks_.empty()) throw NoSupportedTracksException(path);
}

void KZMMediaSource::readProperties() {
    const qlix::kzm::DocInfo info = reader_.docInfo();
    properties_.isFragmented = info.fragmented;
    properties_.duration = info.duration;
    properties_.rate = info.rate;
    properties_.volume = info.volume;
    properties_.timescale = info.timescale;
}

void KZMMediaSource::selectTracks() {
    std::array<bool, kHandlers.size()> isTaken = {};
    for (const qlix::kzm::Track& track : reader_.tracks()) {
        // On purpose: the format is looked at even when there is a track of each kind already.
        // No test can tell: none is taken any more either way.
        if (!isSupported(track)) continue;
        if (std::find(isTaken.begin(), isTaken.end(), false) == isTaken.end()) break;
        const auto* const handler =
            std::find(kHandlers.begin(), kHandlers.end(), track.info().handler);
        if (handler == kHandlers.end()) continue;
        bool& isKindTaken = isTaken.at(static_cast<std::size_t>(handler - kHandlers.begin()));
        if (isKindTaken) continue;
        selected_.push_back(track);
        tracks_.push_back(makeTrack(track));
        isKindTaken = true;
    }
}

boost::shared_ptr<ITrackIterator> KZMMediaSource::getTracks() const {
    return boost::make_shared<KZSTrackIterator>(tracks_);
}

boost::shared_ptr<ISampleIterator> KZMMediaSource::getSampleIterator() {
    const qlix::kzm::MovieTime start = {0, 1000};
    return boost::make_shared<KZMSampleIterator>(
        context_, reader_, reader_.createIterator(start, reader_.wholeEnd(), selected_));
}

}  // namespace torvo::kzspkgutil
