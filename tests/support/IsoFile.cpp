#include "support/IsoFile.h"

#include <algorithm>

#include "support/IsoBuilder.h"

namespace kz::test {
namespace {

constexpr std::uint32_t kSyncFlags = 0x02000000;
constexpr std::uint32_t kOtherFlags = 0x01010000;

Bytes word(std::uint8_t version, std::uint64_t value) {
    return version == 1 ? u64(value) : u32(value);
}

// Bytes of rows with their count in front.
class Rows {
public:
    void add(const Bytes& row) {
        ++count_;
        rows_ += row;
    }
    Bytes bytes() const { return u32(count_) + rows_; }

private:
    std::uint32_t count_ = 0;
    Bytes rows_;
};

// The chunks of one track: the samples in each and where each lies.
struct Chunks {
    std::vector<std::vector<const IsoSample*>> samples;
    std::vector<std::uint64_t> offsets;
};

// A chunk holds samples of one description only.
Chunks chunksOf(const IsoTrack& track) {
    Chunks chunks;
    for (const IsoSample& sample : track.samples) {
        const bool fits = !chunks.samples.empty() &&
                          chunks.samples.back().size() < track.samplesPerChunk &&
                          chunks.samples.back().front()->description == sample.description;
        if (!fits) chunks.samples.emplace_back();
        chunks.samples.back().push_back(&sample);
    }
    chunks.offsets.resize(chunks.samples.size());
    return chunks;
}

// Chunks of the tracks in turn.
Bytes mediaData(std::vector<Chunks>& tracks, std::uint64_t start) {
    Bytes data;
    std::size_t most = 0;
    for (const Chunks& track : tracks) most = std::max(most, track.samples.size());
    for (std::size_t i = 0; i < most; ++i) {
        for (Chunks& track : tracks) {
            if (i >= track.samples.size()) continue;
            track.offsets[i] = start + data.size();
            for (const IsoSample* sample : track.samples[i]) data += sample->data;
        }
    }
    return data;
}

Bytes stts(const IsoTrack& track) {
    Rows rows;
    for (std::size_t i = 0; i < track.samples.size();) {
        std::uint32_t count = 0;
        const std::uint32_t duration = track.samples[i].duration;
        for (; i < track.samples.size() && track.samples[i].duration == duration; ++i) ++count;
        rows.add(u32(count) + u32(duration));
    }
    return fullBox("stts", 0, 0, rows.bytes());
}

Bytes ctts(const IsoTrack& track) {
    Rows rows;
    for (const IsoSample& sample : track.samples) rows.add(u32(1) + u32(sample.compositionOffset));
    return fullBox("ctts", 0, 0, rows.bytes());
}

Bytes stsc(const Chunks& chunks) {
    Rows rows;
    for (std::size_t i = 0; i < chunks.samples.size(); ++i) {
        const auto& chunk = chunks.samples[i];
        if (i > 0 && chunks.samples[i - 1].size() == chunk.size() &&
            chunks.samples[i - 1].front()->description == chunk.front()->description) {
            continue;
        }
        rows.add(u32(i + 1) + u32(chunk.size()) + u32(chunk.front()->description));
    }
    return fullBox("stsc", 0, 0, rows.bytes());
}

Bytes stsz(const IsoTrack& track) {
    if (track.fixedSize) {
        return fullBox("stsz", 0, 0, u32(*track.fixedSize), u32(track.samples.size()));
    }
    Rows rows;
    for (const IsoSample& sample : track.samples) rows.add(u32(sample.data.size()));
    return fullBox("stsz", 0, 0, u32(0), rows.bytes());
}

Bytes chunkOffsets(const Chunks& chunks, bool isLarge) {
    Rows rows;
    for (const std::uint64_t offset : chunks.offsets) {
        rows.add(isLarge ? u64(offset) : u32(offset));
    }
    return fullBox(isLarge ? "co64" : "stco", 0, 0, rows.bytes());
}

Bytes stss(const IsoTrack& track) {
    Rows rows;
    for (std::size_t i = 0; i < track.samples.size(); ++i) {
        if (track.samples[i].isSync) rows.add(u32(i + 1));
    }
    return fullBox("stss", 0, 0, rows.bytes());
}

Bytes sdtp(const IsoTrack& track) {
    Bytes bytes;
    for (const IsoSample& sample : track.samples) bytes += u8(sample.dependency);
    return fullBox("sdtp", 0, 0, bytes);
}

Bytes stsd(const IsoTrack& track) {
    Rows rows;
    for (const Bytes& entry : track.entries) rows.add(entry);
    return fullBox("stsd", 0, 0, rows.bytes());
}

Bytes fullTables(const IsoTrack& track, const Chunks& chunks) {
    Bytes tables = stsd(track) + stts(track) + stsc(chunks) + stsz(track) +
                   chunkOffsets(chunks, track.hasLargeOffsets);
    if (track.hasComposition) tables += ctts(track);
    if (track.hasSync) tables += stss(track);
    if (track.hasDependencies) tables += sdtp(track);
    return box("stbl", tables, track.moreTables);
}

Bytes emptyTables(const IsoTrack& track) {
    return box("stbl", stsd(track), fullBox("stts", 0, 0, u32(0)), fullBox("stsc", 0, 0, u32(0)),
               fullBox("stsz", 0, 0, u64(0)), fullBox("stco", 0, 0, u32(0)), track.moreTables);
}

Bytes edts(const IsoTrack& track, std::uint8_t version) {
    if (!track.edits) return {};
    Rows rows;
    for (const IsoEdit& edit : *track.edits) {
        rows.add(word(version, edit.duration) +
                 word(version, static_cast<std::uint64_t>(edit.mediaTime)) + u32(0x10000));
    }
    return box("edts", fullBox("elst", version, 0, rows.bytes()));
}

Bytes trak(const IsoFile& file, const IsoTrack& track, const Bytes& tables) {
    const std::uint8_t v = file.version;
    const Bytes dates = word(v, 0) + word(v, 0);
    const bool isSound = track.handler == "soun";
    const Bytes tkhd =
        fullBox("tkhd", v, 7, dates, u32(track.id), u32(0), word(v, file.movieDuration), u64(0),
                u32(0), u16(isSound ? 0x100 : 0), u16(0), fill(36, 0), u32(0), u32(0));
    const Bytes mdhd =
        fullBox("mdhd", v, 0, dates, u32(track.timescale), word(v, 0), u16(0x55C4), u16(0));
    const Bytes hdlr =
        fullBox("hdlr", 0, 0, u32(0), text(track.handler), fill(12, 0), text("name"), u8(0));
    const Bytes dinf = box("dinf", fullBox("dref", 0, 0, u32(1), fullBox("url ", 0, 1)));
    return box("trak", tkhd, edts(track, v), box("mdia", mdhd, hdlr, box("minf", dinf, tables)));
}

Bytes mvhd(const IsoFile& file) {
    const std::uint8_t v = file.version;
    return fullBox("mvhd", v, 0, word(v, 0), word(v, 0), u32(file.movieTimescale),
                   word(v, file.movieDuration), u32(0x10000), u16(0x100), u16(0), u64(0),
                   fill(36, 0), fill(24, 0), u32(99));
}

Bytes plainMoov(const IsoFile& file, const std::vector<Chunks>& chunks) {
    Bytes traks;
    for (std::size_t i = 0; i < file.tracks.size(); ++i) {
        traks += trak(file, file.tracks[i], fullTables(file.tracks[i], chunks[i]));
    }
    return box("moov", mvhd(file), traks);
}

Bytes ftyp() { return box("ftyp", text("isom"), u32(1), text("isommp42")); }

Bytes plainFile(const IsoFile& file) {
    std::vector<Chunks> chunks;
    for (const IsoTrack& track : file.tracks) chunks.push_back(chunksOf(track));
    const std::uint64_t before = ftyp().size();
    if (!file.isMoovFirst) {
        const Bytes data = mediaData(chunks, before + 8);
        return ftyp() + box("mdat", data) + plainMoov(file, chunks);
    }
    // The size of the tables doesn't depend on the offsets in them.
    const std::uint64_t moovSize = plainMoov(file, chunks).size();
    const Bytes data = mediaData(chunks, before + moovSize + 8);
    return ftyp() + plainMoov(file, chunks) + box("mdat", data);
}

// The tracks with only the samples that stand in front of the fragments.
std::vector<IsoTrack> tracksInTables(const IsoFile& file) {
    std::vector<IsoTrack> tracks = file.tracks;
    for (IsoTrack& track : tracks) {
        track.samples.resize(std::min<std::size_t>(track.samples.size(), file.samplesInTables));
    }
    return tracks;
}

Bytes fragmentedMoov(const IsoFile& file, const std::vector<IsoTrack>& inTables,
                     const std::vector<Chunks>& chunks) {
    Bytes traks;
    Bytes extends;
    if (file.fragmentDuration) extends += fullBox("mehd", 1, 0, u64(*file.fragmentDuration));
    for (std::size_t i = 0; i < file.tracks.size(); ++i) {
        const IsoTrack& track = file.tracks[i];
        const bool hasTables = !inTables[i].samples.empty();
        traks +=
            trak(file, track, hasTables ? fullTables(inTables[i], chunks[i]) : emptyTables(track));
        const std::uint32_t duration = track.samples.empty() ? 0 : track.samples[0].duration;
        extends += fullBox("trex", 0, 0, u32(track.id), u32(1), u32(duration), u32(0), u32(0));
    }
    return box("moov", mvhd(file), traks, box("mvex", extends));
}

// A stretch of one track in a fragment.
struct Stretch {
    const IsoTrack* track;
    std::size_t first;
    std::size_t end;
};

Bytes trun(const IsoFile& file, const Stretch& run, std::uint64_t dataOffset) {
    Bytes rows;
    for (std::size_t i = run.first; i < run.end; ++i) {
        const IsoSample& sample = run.track->samples[i];
        if (!file.usesTrackDefaults) rows += u32(sample.duration);
        rows += u32(sample.data.size()) + u32(sample.isSync ? kSyncFlags : kOtherFlags) +
                u32(sample.compositionOffset);
    }
    const std::uint32_t flags = file.usesTrackDefaults ? 0xE01 : 0xF01;
    return fullBox("trun", 0, flags, u32(run.end - run.first), u32(dataOffset), rows);
}

// `dataOffset` counts from the base and moves behind the data of the stretch.
Bytes traf(const IsoFile& file, const Stretch& stretch, std::uint64_t base,
           std::uint64_t& dataOffset) {
    std::uint32_t flags = 2;
    if (file.base == IsoBase::kFileOffset) flags |= 1;
    if (file.base == IsoBase::kMoof) flags |= 0x020000;
    const Bytes offset = file.base == IsoBase::kFileOffset ? u64(base) : Bytes();
    Bytes out = fullBox("tfhd", 0, flags, u32(stretch.track->id), offset,
                        u32(stretch.track->samples[stretch.first].description));
    for (std::size_t first = stretch.first; first < stretch.end;) {
        const std::size_t end = std::min<std::size_t>(first + file.samplesPerRun, stretch.end);
        out += trun(file, {stretch.track, first, end}, dataOffset);
        for (; first < end; ++first) dataOffset += stretch.track->samples[first].data.size();
    }
    return box("traf", out);
}

Bytes moof(const IsoFile& file, const std::vector<Stretch>& stretches, std::uint32_t number,
           std::uint64_t position, std::uint64_t ownSize) {
    // From the moof, or in the file: the data stands behind the moof and the header of the mdat.
    std::uint64_t dataOffset = ownSize + 8;
    Bytes trafs;
    for (const Stretch& stretch : stretches) {
        trafs += traf(file, stretch, position, dataOffset);
        // Without a base the next one counts from the end of this one's data.
        if (file.base == IsoBase::kImplied) dataOffset = 0;
    }
    return box("moof", fullBox("mfhd", 0, 0, u32(number)), trafs);
}

// Samples of one description, so that a traf can name it.
std::vector<Stretch> stretchesFrom(const IsoFile& file, std::vector<std::size_t>& next) {
    std::vector<Stretch> stretches;
    for (std::size_t i = 0; i < file.tracks.size(); ++i) {
        const auto& samples = file.tracks[i].samples;
        std::size_t end = next[i];
        while (end < samples.size() && end - next[i] < file.samplesPerFragment &&
               samples[end].description == samples[next[i]].description) {
            ++end;
        }
        if (end > next[i]) stretches.push_back({&file.tracks[i], next[i], end});
        next[i] = end;
    }
    return stretches;
}

// All in front of the fragments.
Bytes fragmentedHead(const IsoFile& file) {
    const std::vector<IsoTrack> inTables = tracksInTables(file);
    std::vector<Chunks> chunks;
    for (const IsoTrack& track : inTables) chunks.push_back(chunksOf(track));
    const std::uint64_t moovSize = fragmentedMoov(file, inTables, chunks).size();
    const Bytes data = mediaData(chunks, ftyp().size() + moovSize + 8);
    const Bytes head = ftyp() + fragmentedMoov(file, inTables, chunks);
    return file.samplesInTables == 0 ? head : head + box("mdat", data);
}

Bytes fragmentedFile(const IsoFile& file) {
    Bytes out = fragmentedHead(file);
    std::vector<std::size_t> next;
    for (const IsoTrack& track : tracksInTables(file)) next.push_back(track.samples.size());
    for (std::uint32_t number = 1;; ++number) {
        const std::vector<Stretch> stretches = stretchesFrom(file, next);
        if (stretches.empty()) return out;
        const std::uint64_t size = moof(file, stretches, number, 0, 0).size();
        Bytes data;
        for (const Stretch& stretch : stretches) {
            for (std::size_t i = stretch.first; i < stretch.end; ++i) {
                data += stretch.track->samples[i].data;
            }
        }
        out += moof(file, stretches, number, out.size(), size) + box("mdat", data);
    }
}

}  // namespace

Bytes IsoFile::build() const {
    return samplesPerFragment == 0 ? plainFile(*this) : fragmentedFile(*this);
}

Bytes isoVideoEntry(const std::string& format, unsigned width, unsigned height,
                    const Bytes& codecData) {
    return box(format, fill(6, 0), u16(1), fill(16, 0), u16(width), u16(height), u32(0x480000),
               u32(0x480000), u32(0), u16(1), fill(32, 0), u16(24), u16(0xFFFF), codecData);
}

Bytes isoAudioEntry(const std::string& format, unsigned channels, unsigned rate,
                    const Bytes& codecData) {
    return box(format, fill(6, 0), u16(1), u64(0), u16(channels), u16(16), u32(0), u16(rate),
               u16(0), codecData);
}

std::vector<IsoSample> isoSamples(unsigned count, std::uint32_t duration, unsigned syncEvery,
                                  unsigned seed) {
    std::vector<IsoSample> samples(count);
    for (unsigned i = 0; i < count; ++i) {
        samples[i].data = pattern(5 + (i * 7 + seed) % 11, seed * 100 + i);
        samples[i].duration = duration;
        samples[i].isSync = i % syncEvery == 0;
    }
    return samples;
}

IsoTrack isoVideoTrack(std::uint32_t id, unsigned count, std::uint32_t duration,
                       unsigned syncEvery) {
    IsoTrack track;
    track.id = id;
    track.entries = {isoVideoEntry("avc1", 320, 180)};
    track.samples = isoSamples(count, duration, syncEvery, id);
    return track;
}

IsoTrack isoAudioTrack(std::uint32_t id, unsigned count, std::uint32_t duration) {
    IsoTrack track;
    track.id = id;
    track.handler = "soun";
    track.entries = {isoAudioEntry("mp4a", 2, 44100)};
    track.samples = isoSamples(count, duration, 1, id);
    return track;
}

}  // namespace kz::test
