#include "support/Presentation.h"

#include <stdexcept>

#include "support/ByteCursor.h"
#include "support/TempDir.h"

namespace kz::test {
namespace {

struct BoxRange {
    std::string type;
    std::size_t start = 0;
    std::size_t body = 0;
    std::size_t end = 0;
};

BoxRange readHeader(ByteCursor& in) {
    BoxRange box;
    box.start = in.position();
    std::uint64_t size = in.u32();
    box.type = in.text(4);
    if (size == 1) size = in.u64();
    box.body = in.position();
    if (size < box.body - box.start || size > in.left() + (box.body - box.start)) {
        throw std::runtime_error("box " + box.type + " has a wrong size");
    }
    box.end = box.start + size;
    return box;
}

std::vector<BoxRange> boxesIn(const Bytes& file, std::size_t start, std::size_t end) {
    ByteCursor in(file, start, end);
    std::vector<BoxRange> boxes;
    while (in.left() > 0) {
        boxes.push_back(readHeader(in));
        in.seek(boxes.back().end);
    }
    return boxes;
}

BoxRange only(const Bytes& file, const BoxRange& parent, const std::string& type) {
    for (const BoxRange& box : boxesIn(file, parent.body, parent.end)) {
        if (box.type == type) return box;
    }
    throw std::runtime_error("no " + type + " in " + parent.type);
}

ByteCursor bodyOf(const Bytes& file, const BoxRange& box) {
    return ByteCursor(file, box.body, box.end);
}

std::vector<EditRow> readEdits(const Bytes& file, const BoxRange& elst) {
    ByteCursor in = bodyOf(file, elst);
    if (in.u32() != 0x01000000) throw std::runtime_error("elst is not of version 1");
    std::vector<EditRow> rows;
    for (auto count = in.u32(); count > 0; --count) {
        EditRow row;
        row.duration = in.u64();
        row.mediaTime = static_cast<std::int64_t>(in.u64());
        if (in.u32() != 0x00010000) throw std::runtime_error("elst has a rate other than 1");
        rows.push_back(row);
    }
    while (in.left() > 0) {
        if (in.u8() != 0) throw std::runtime_error("elst has bytes behind its rows");
    }
    return rows;
}

void readDescriptions(const Bytes& file, const BoxRange& stbl, PackedTrack& track) {
    const BoxRange stsd = only(file, stbl, "stsd");
    track.descriptions = file.slice(stsd.start, stsd.end - stsd.start);
    ByteCursor in = bodyOf(file, stsd);
    in.skip(4);
    for (auto count = in.u32(); count > 0; --count) {
        const BoxRange entry = readHeader(in);
        track.descriptionFormats.push_back(entry.type);
        in.seek(entry.end);
    }
}

PackedTrack readTrack(const Bytes& file, const BoxRange& trak) {
    PackedTrack track;
    ByteCursor tkhd = bodyOf(file, only(file, trak, "tkhd"));
    tkhd.skip(4 + 16);
    track.id = static_cast<std::uint32_t>(tkhd.u32());
    tkhd.skip(4);
    track.headerDuration = tkhd.u64();
    const BoxRange mdia = only(file, trak, "mdia");
    ByteCursor mdhd = bodyOf(file, only(file, mdia, "mdhd"));
    mdhd.skip(4 + 16);
    track.timescale = static_cast<std::uint32_t>(mdhd.u32());
    track.mediaDuration = mdhd.u64();
    ByteCursor hdlr = bodyOf(file, only(file, mdia, "hdlr"));
    hdlr.skip(8);
    track.handler = hdlr.text(4);
    readDescriptions(file, only(file, only(file, mdia, "minf"), "stbl"), track);
    track.edits = readEdits(file, only(file, only(file, trak, "edts"), "elst"));
    if (track.handler == "hint") {
        ByteCursor hint = bodyOf(file, only(file, only(file, trak, "tref"), "hint"));
        while (hint.left() > 0)
            track.hintedTracks.push_back(static_cast<std::uint32_t>(hint.u32()));
    }
    return track;
}

void readMovie(const BoxRange& moov, Segment& segment) {
    ByteCursor mvhd = bodyOf(segment.file, only(segment.file, moov, "mvhd"));
    if (mvhd.u32() != 0x01000000) throw std::runtime_error("mvhd is not of version 1");
    mvhd.skip(16);
    segment.movieTimescale = static_cast<std::uint32_t>(mvhd.u32());
    segment.movieDuration = mvhd.u64();
    for (const BoxRange& box : boxesIn(segment.file, moov.body, moov.end)) {
        if (box.type == "trak") segment.tracks.push_back(readTrack(segment.file, box));
    }
}

void readRun(const Bytes& file, const BoxRange& trun, std::uint64_t base, std::uint64_t& time,
             std::vector<PackedSample>& samples) {
    ByteCursor in = bodyOf(file, trun);
    if (in.u32() != 0x00000F01) throw std::runtime_error("trun has other flags than 0xF01");
    const std::uint64_t count = in.u32();
    std::uint64_t offset = base + in.u32();
    for (std::uint64_t i = 0; i < count; ++i) {
        PackedSample sample;
        sample.decodeTime = time;
        sample.duration = static_cast<std::uint32_t>(in.u32());
        sample.size = static_cast<std::uint32_t>(in.u32());
        sample.flags = static_cast<std::uint32_t>(in.u32());
        sample.compositionOffset = static_cast<std::int32_t>(in.u32());
        sample.offset = offset;
        offset += sample.size;
        time += sample.duration;
        samples.push_back(sample);
    }
    if (in.left() != 0) throw std::runtime_error("trun has bytes behind its rows");
}

void readTraf(const Bytes& file, const BoxRange& traf,
              std::map<std::uint32_t, std::uint64_t>& times, PackedFragment& fragment) {
    ByteCursor tfhd = bodyOf(file, only(file, traf, "tfhd"));
    if (tfhd.u32() != 3) throw std::runtime_error("tfhd has other flags than 3");
    const auto track = static_cast<std::uint32_t>(tfhd.u32());
    const std::uint64_t base = tfhd.u64();
    if (base != fragment.dataStart)
        throw std::runtime_error("tfhd base is not the mdat's first byte");
    for (const BoxRange& box : boxesIn(file, traf.body, traf.end)) {
        if (box.type != "trun") continue;
        ++fragment.runs[track];
        readRun(file, box, base, times[track], fragment.samples[track]);
    }
}

}  // namespace

const PackedTrack* Segment::track(const std::string& handler) const {
    for (const PackedTrack& candidate : tracks) {
        if (candidate.handler == handler) return &candidate;
    }
    return nullptr;
}

Segment readSegment(Bytes file) {
    Segment segment;
    segment.file = std::move(file);
    const std::vector<BoxRange> boxes = boxesIn(segment.file, 0, segment.file.size());
    if (boxes.size() < 2 || boxes[0].type != "ftyp" || boxes[1].type != "moov") {
        throw std::runtime_error("a segment begins with ftyp and moov");
    }
    readMovie(boxes[1], segment);
    std::map<std::uint32_t, std::uint64_t> times;
    for (std::size_t i = 2; i < boxes.size();) {
        PackedFragment fragment;
        const auto take = [&](const std::string& type) -> const BoxRange& {
            if (i >= boxes.size() || boxes[i].type != type) {
                throw std::runtime_error("a fragment lacks its " + type);
            }
            return boxes[i++];
        };
        const BoxRange& afra = take("afra");
        fragment.offset = afra.start;
        fragment.afra = readAfraBox(segment.file.slice(afra.start, afra.end - afra.start));
        if (i < boxes.size() && boxes[i].type == "abst") {
            const BoxRange& abst = boxes[i++];
            fragment.bootstrap = segment.file.slice(abst.body + 4, abst.end - abst.body - 4);
        }
        const BoxRange& moof = take("moof");
        const BoxRange& mdat = take("mdat");
        if (mdat.body != mdat.start + 16) throw std::runtime_error("mdat is not of the large form");
        fragment.dataStart = mdat.body;
        fragment.dataEnd = mdat.end;
        ByteCursor mfhd = bodyOf(segment.file, only(segment.file, moof, "mfhd"));
        mfhd.skip(4);
        fragment.sequenceNumber = static_cast<std::uint32_t>(mfhd.u32());
        for (const BoxRange& box : boxesIn(segment.file, moof.body, moof.end)) {
            if (box.type == "traf") readTraf(segment.file, box, times, fragment);
        }
        segment.fragments.push_back(fragment);
    }
    return segment;
}

Afra readAfraBox(const Bytes& box) {
    ByteCursor in(box);
    const BoxRange header = readHeader(in);
    if (header.type != "afra" || in.u32() != 0) throw std::runtime_error("not an afra box");
    Afra afra;
    afra.bits = static_cast<int>(in.u8());
    if ((afra.bits & 0xC0) != 0xC0) throw std::runtime_error("afra has short ids or offsets");
    afra.timescale = static_cast<std::uint32_t>(in.u32());
    for (auto count = in.u32(); count > 0; --count) {
        AfraRow row;
        row.time = in.u64();
        row.offset = in.u64();
        afra.local.push_back(row);
    }
    if ((afra.bits & 0x20) != 0) {
        for (auto count = in.u32(); count > 0; --count) {
            IndexRow row;
            row.time = in.u64();
            row.segment = static_cast<std::uint32_t>(in.u32());
            row.fragment = static_cast<std::uint32_t>(in.u32());
            row.afraOffset = in.u64();
            row.offsetFromAfra = in.u64();
            afra.global.push_back(row);
        }
    }
    if (in.left() != 0) throw std::runtime_error("afra has bytes behind its rows");
    return afra;
}

namespace {

void skipTexts(ByteCursor& in) {
    for (auto count = in.u8(); count > 0; --count) in.zeroEnded();
}

}  // namespace

Abst readAbstPayload(const Bytes& payload) {
    ByteCursor in(payload);
    Abst abst;
    abst.version = static_cast<std::uint32_t>(in.u32());
    abst.bits = static_cast<int>(in.u8());
    abst.timescale = static_cast<std::uint32_t>(in.u32());
    abst.currentMediaTime = in.u64();
    in.skip(8);
    in.zeroEnded();
    skipTexts(in);
    skipTexts(in);
    in.zeroEnded();
    in.zeroEnded();
    if (in.u8() != 1) throw std::runtime_error("abst has not one segment run table");
    const BoxRange asrt = readHeader(in);
    if (asrt.type != "asrt" || in.u32() != 0) throw std::runtime_error("no asrt");
    skipTexts(in);
    for (auto count = in.u32(); count > 0; --count) {
        SegmentRun run;
        run.first = static_cast<std::uint32_t>(in.u32());
        run.fragments = static_cast<std::uint32_t>(in.u32());
        abst.segments.push_back(run);
    }
    if (in.position() != asrt.end) throw std::runtime_error("asrt has a wrong size");
    if (in.u8() != 1) throw std::runtime_error("abst has not one fragment run table");
    const BoxRange afrt = readHeader(in);
    if (afrt.type != "afrt" || in.u32() != 0) throw std::runtime_error("no afrt");
    if (in.u32() != 1000) throw std::runtime_error("afrt has another timescale than 1000");
    skipTexts(in);
    for (auto count = in.u32(); count > 0; --count) {
        FragmentRun run;
        run.first = static_cast<std::uint32_t>(in.u32());
        run.time = in.u64();
        run.duration = static_cast<std::uint32_t>(in.u32());
        if (run.duration == 0) run.discontinuity = static_cast<int>(in.u8());
        abst.fragments.push_back(run);
    }
    if (in.position() != afrt.end || in.left() != 0) {
        throw std::runtime_error("abst has a wrong size");
    }
    return abst;
}

Abst readAbstBox(const Bytes& box) {
    ByteCursor in(box);
    const BoxRange header = readHeader(in);
    if (header.type != "abst" || in.u32() != 0 || header.end != box.size()) {
        throw std::runtime_error("not one abst box");
    }
    return readAbstPayload(box.slice(in.position(), in.left()));
}

Presentation readPresentation(const std::string& folder, const std::string& baseName) {
    Presentation all;
    const std::string stem = folder + "/" + baseName;
    for (int n = 1; fileExists(stem + "Seg" + std::to_string(n) + ".kzs"); ++n) {
        const std::string segment = stem + "Seg" + std::to_string(n);
        all.segments.push_back(readSegment(readFile(segment + ".kzs")));
        if (fileExists(segment + ".kzx"))
            all.indexes.push_back(readAfraBox(readFile(segment + ".kzx")));
    }
    all.manifest = readFile(stem + ".kzd").str();
    if (fileExists(stem + ".bootstrap")) all.bootstrap = readFile(stem + ".bootstrap");
    return all;
}

std::vector<Bytes> tagImages(const Presentation& presentation) {
    std::vector<Bytes> images;
    for (const Segment& segment : presentation.segments) {
        const PackedTrack* hint = segment.track("hint");
        for (const PackedFragment& fragment : segment.fragments) {
            const auto samples = fragment.samples.find(hint->id);
            if (samples == fragment.samples.end()) continue;
            for (const PackedSample& sample : samples->second) {
                images.push_back(segment.file.slice(sample.offset, sample.size));
            }
        }
    }
    return images;
}

}  // namespace kz::test
