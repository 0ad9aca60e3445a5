#include "kzm/WriterHarness.h"

#include <ostream>
#include <stdexcept>

namespace kz::test {

using qlix::kzm::KZMSample;
using qlix::kzm::KZMTrackInfo;
using qlix::kzm::KZMTrackParams;
using qlix::kzm::SampleData;
using qlix::kzm::TrackHandle;

namespace {

std::uint32_t codeOf(std::string_view letters) {
    if (letters.size() != 4) throw std::logic_error("a code has four letters");
    return torvo::kzs::loadU32(reinterpret_cast<const std::uint8_t*>(letters.data()));
}

qlix::kzm::WriterConfiguration configurationOf(const SegmentDriver::Options& options) {
    qlix::kzm::WriterConfiguration out;
    out.timescale = options.movieTimescale;
    out.duration = 777;
    return out;
}

/// Bytes of a box in front of its children.
std::size_t headerSizeOf(const std::string& type) {
    if (type == "stsd") return 16;
    return 8;
}

}  // namespace

std::uint32_t u32At(const Bytes& file, std::size_t offset) {
    return torvo::kzs::loadU32(file.slice(offset, 4).data());
}

std::uint64_t u64At(const Bytes& file, std::size_t offset) {
    return torvo::kzs::loadU64(file.slice(offset, 8).data());
}

std::vector<BoxSpan> boxesIn(const Bytes& file, std::size_t offset, std::size_t end) {
    std::vector<BoxSpan> out;
    while (offset < end) {
        BoxSpan span;
        span.offset = offset;
        span.size = u32At(file, offset);
        span.type = file.slice(offset + 4, 4).str();
        if (span.size == 1) span.size = static_cast<std::size_t>(u64At(file, offset + 8));
        if (span.size < 8 || span.end() > end) throw std::logic_error("box sizes don't fit");
        out.push_back(span);
        offset = span.end();
    }
    return out;
}

BoxSpan boxAt(const Bytes& file, std::string_view path) {
    BoxSpan at{"", 0, file.size()};
    while (!path.empty()) {
        const std::string_view step = path.substr(0, path.find('/'));
        path.remove_prefix(std::min(path.size(), step.size() + 1));
        const std::string type(step.substr(0, 4));
        std::size_t index = 0;
        if (step.size() > 4) index = std::stoul(std::string(step.substr(5)));
        const std::size_t begin = at.type.empty() ? 0 : at.offset + headerSizeOf(at.type);
        bool found = false;
        for (const BoxSpan& each : boxesIn(file, begin, at.end())) {
            if (each.type != type || index-- > 0) continue;
            at = each;
            found = true;
            break;
        }
        if (!found) throw std::logic_error("no box " + type);
    }
    return at;
}

std::vector<std::string> topTypes(const Bytes& file) {
    std::vector<std::string> out;
    for (const BoxSpan& each : boxesIn(file, 0, file.size())) out.push_back(each.type);
    return out;
}

bool operator==(const EditListRow& left, const EditListRow& right) {
    return left.duration == right.duration && left.mediaTime == right.mediaTime;
}

std::ostream& operator<<(std::ostream& out, const EditListRow& row) {
    return out << '(' << row.duration << ", " << row.mediaTime << ')';
}

bool operator==(const RunListRow& left, const RunListRow& right) {
    return left.duration == right.duration && left.size == right.size &&
           left.flags == right.flags && left.compositionOffset == right.compositionOffset;
}

std::ostream& operator<<(std::ostream& out, const RunListRow& row) {
    return out << '(' << row.duration << ", " << row.size << ", 0x" << std::hex << row.flags
               << std::dec << ", " << row.compositionOffset << ')';
}

std::vector<EditListRow> editsOf(const Bytes& file, std::size_t track) {
    const BoxSpan list = boxAt(file, "moov/trak[" + std::to_string(track) + "]/edts/elst");
    std::vector<EditListRow> out;
    std::size_t at = list.offset + 16;
    for (std::uint32_t left = u32At(file, list.offset + 12); left > 0; --left, at += 20) {
        out.push_back({u64At(file, at), static_cast<std::int64_t>(u64At(file, at + 8))});
        if (u32At(file, at + 16) != 0x00010000) throw std::logic_error("rate isn't 1");
    }
    return out;
}

std::vector<RunListRow> rowsOf(const Bytes& file, std::size_t fragment, std::uint32_t trackId) {
    const BoxSpan moof = boxAt(file, "moof[" + std::to_string(fragment) + "]");
    std::vector<RunListRow> out;
    for (const BoxSpan& traf : boxesIn(file, moof.offset + 8, moof.end())) {
        if (traf.type != "traf" || u32At(file, traf.offset + 20) != trackId) continue;
        for (const BoxSpan& run : boxesIn(file, traf.offset + 8, traf.end())) {
            if (run.type != "trun") continue;
            for (std::size_t at = run.offset + 20; at < run.end(); at += 16) {
                out.push_back({u32At(file, at), u32At(file, at + 4), u32At(file, at + 8),
                               u32At(file, at + 12)});
            }
        }
    }
    return out;
}

SampleData SamplePool::data(const Bytes& bytes) {
    tags_.push_back({this, kept_.size()});
    kept_.push_back(bytes);
    return {kept_.back().data(), &tags_.back(), &SamplePool::onRelease};
}

void SamplePool::onRelease(void* context) {
    const auto* tag = static_cast<Tag*>(context);
    tag->pool->released.push_back(tag->number);
}

KZMTrackInfo trackInfo(std::string_view handler, std::uint32_t timescale) {
    KZMTrackInfo out;
    out.handler = codeOf(handler);
    out.timescale = timescale;
    out.handlerName = "name";
    out.handlerNameLength = 5;
    return out;
}

KZMTrackParams trackParams(std::uint32_t edits) {
    KZMTrackParams out;
    out.initialEntries = 1;
    out.maxEdits = edits;
    out.descriptionSpace = 16;
    return out;
}

KZMSample sampleOf(std::string_view handler, std::uint64_t time, std::uint32_t timescale,
                   std::uint32_t size, std::uint32_t kind) {
    KZMSample out;
    out.handler = codeOf(handler);
    out.time = time;
    out.timescale = timescale;
    out.size = size;
    out.kind = kind;
    return out;
}

SegmentDriver::SegmentDriver(const Options& options)
    : writer(stream, configurationOf(options), nullptr), timeOrigin_(options.timeOrigin) {
    KZMTrackParams params = trackParams(options.maxEdits);
    params.initialEntries = options.descriptionSlots;
    videoTrack = writer.addTrack(trackInfo("vide", options.videoTimescale), params, "name", 5);
    audioTrack = writer.addTrack(trackInfo("soun", 1000), params, "name", 5);
    const TrackHandle media[] = {videoTrack, audioTrack};
    hintTrack =
        writer.addHintTrack(trackInfo("hint", options.hintTimescale), params, "name", 5, media, 2);
    if (!options.describe) return;
    describe(videoTrack, "vide");
    describe(audioTrack, "soun");
    describe(hintTrack, "hint");
}

void SegmentDriver::describe(const TrackHandle& track, std::string_view handler) {
    if (handler == "vide") {
        qlix::kzm::VideoSampleDescriptor description;
        description.handler = codeOf("vide");
        description.format = codeOf("VP6F");
        writer.addSampleDescription(track, description, {});
    } else if (handler == "soun") {
        qlix::kzm::AudioSampleDescriptor description;
        description.handler = codeOf("soun");
        description.format = codeOf(".mp3");
        writer.addSampleDescription(track, description, {});
    } else {
        qlix::kzm::RtmpSampleDescriptor description;
        description.handler = codeOf("hint");
        description.format = codeOf("rtmp");
        writer.addSampleDescription(track, description, u32(12) + text("amto") + u32(timeOrigin_));
    }
}

void SegmentDriver::hinted(const TrackHandle& media, std::uint64_t time, const Bytes& bytes,
                           std::uint32_t kind, bool entry) {
    const auto size = static_cast<std::uint32_t>(bytes.size());
    writer.writeHintedSample(hintTrack, media, sampleOf("hint", time, 1000, size, kind), {0, size},
                             pool.data(bytes), entry);
}

void SegmentDriver::video(std::uint64_t time, const Bytes& bytes, std::uint32_t kind, bool entry) {
    hinted(videoTrack, time, bytes, kind, entry);
}

void SegmentDriver::audio(std::uint64_t time, const Bytes& bytes, bool entry) {
    hinted(audioTrack, time, bytes, 0, entry);
}

void SegmentDriver::hintOnly(std::uint64_t time, const Bytes& bytes, bool entry) {
    writer.writeSample(hintTrack,
                       sampleOf("hint", time, 1000, static_cast<std::uint32_t>(bytes.size()), 1),
                       pool.data(bytes), entry);
}

void SegmentDriver::marker(const TrackHandle& track, std::string_view handler, std::uint64_t time) {
    writer.writeSample(track, sampleOf(handler, time, 1000, 0, qlix::kzm::kEndOfEditMarker), {},
                       false);
}

void SegmentDriver::bootstrap(const Bytes& bytes) {
    const SampleData data = pool.data(bytes);
    writer.setBootstrap(data.data, bytes.size(), data.context, data.release);
}

}  // namespace kz::test
