#include "support/ExpectedSegment.h"

#include <map>

#include "support/IsoBuilder.h"

namespace kz::test {
namespace {

constexpr std::size_t kEditRows = 2001;

Bytes matrix() {
    return u32(0x10000) + u32(0) + u32(0) + u32(0) + u32(0x10000) + u32(0) + u32(0) + u32(0) +
           u32(0x40000000);
}

Bytes movieHeader(std::uint64_t duration, std::size_t trackCount) {
    return fullBox("mvhd", 1, 0, u64(0), u64(0), u32(1000), u64(duration), u32(0x10000), u16(0x100),
                   fill(10, 0), matrix(), fill(24, 0), u32(trackCount + 1));
}

Bytes trackHeader(std::uint32_t flags, std::size_t id, std::uint64_t duration, std::uint32_t volume,
                  std::uint32_t width, std::uint32_t height) {
    return fullBox("tkhd", 1, flags, u64(0), u64(0), u32(id), u32(0), u64(duration), u64(0), u16(0),
                   u16(0), u16(volume), u16(0), matrix(), u32(width << 16), u32(height << 16));
}

Bytes editList(const std::vector<ExpectedEdit>& edits) {
    Bytes rows;
    for (const ExpectedEdit& edit : edits) {
        rows += u64(edit.duration) + u64(static_cast<std::uint64_t>(edit.mediaTime)) + u32(0x10000);
    }
    return box("edts", fullBox("elst", 1, 0, u32(edits.size()), rows,
                               fill((kEditRows - edits.size()) * 20, 0)));
}

Bytes sampleTables(const Bytes& descriptions) {
    return box("stbl", descriptions, fullBox("stts", 0, 0, u32(0)), fullBox("stsc", 0, 0, u32(0)),
               fullBox("stsz", 0, 0, u32(0), u32(0)), fullBox("co64", 0, 0, u32(0)),
               fullBox("ctts", 0, 0, u32(0)), fullBox("stss", 0, 0, u32(0)));
}

Bytes media(const std::string& handler, const std::string& name, std::uint64_t duration,
            const Bytes& mediaHeader, const Bytes& descriptions) {
    // "eng": three times five bits, each letter less 0x60.
    const Bytes language = u16(5 << 10 | 14 << 5 | 7);
    const Bytes reference =
        box("dinf", fullBox("dref", 0, 0, u32(1), fullBox("url ", 0, 1, Bytes())));
    return box("mdia",
               fullBox("mdhd", 1, 0, u64(0), u64(0), u32(1000), u64(duration), language, u16(0)),
               fullBox("hdlr", 0, 0, u32(0), text(handler), fill(12, 0), text(name), u8(0)),
               box("minf", mediaHeader, reference, sampleTables(descriptions)));
}

Bytes mediaTrack(const ExpectedMediaTrack& track, std::size_t id, const ExpectedTrackTimes& times) {
    const bool isVideo = track.handler == "vide";
    const Bytes header =
        isVideo ? fullBox("vmhd", 0, 1, fill(8, 0)) : fullBox("smhd", 0, 0, fill(4, 0));
    // Room for one entry without codec data is reserved; the entry fills it.
    const Bytes descriptions = fullBox("stsd", 0, 0, u32(1), track.description);
    return box("trak", trackHeader(1, id, times.trackDuration, 0x100, track.width, track.height),
               media(track.handler, "MainConcept", times.mediaDuration, header, descriptions),
               editList(times.edits));
}

Bytes hintTrack(std::size_t id, const ExpectedTrackTimes& times) {
    Bytes references;
    for (std::size_t other = 1; other < id; ++other) references += u32(other);
    const Bytes packets = fullBox("amhp", 0, 0, u8(1), raw({1, 0, 4}));
    const Bytes entry = box("rtmp", fill(6, 0), u16(1), u16(1), u16(1), u16(500), packets);
    // 1024 + 6 bytes and 16 for an entry are reserved; what the entry leaves is a skip box.
    const Bytes descriptions =
        fullBox("stsd", 0, 0, u32(1), entry, box("skip", fill(1046 - entry.size() - 8, 0)));
    return box("trak", trackHeader(0, id, times.trackDuration, 0, 0, 0),
               box("tref", box("hint", references)),
               media("hint", "Varnholt Systems Inc. Hint Handler", times.mediaDuration,
                     fullBox("hmhd", 0, 0, fill(16, 0)), descriptions),
               editList(times.edits));
}

Bytes movie(const std::vector<ExpectedMediaTrack>& tracks,
            const std::vector<ExpectedTrackTimes>& times, std::uint64_t duration) {
    Bytes body = movieHeader(duration, tracks.size() + 1);
    Bytes extends = fullBox("mehd", 1, 0, u64(duration));
    for (std::size_t i = 0; i < tracks.size(); ++i) body += mediaTrack(tracks[i], i + 1, times[i]);
    body += hintTrack(tracks.size() + 1, times[tracks.size()]);
    for (std::size_t id = 1; id <= tracks.size() + 1; ++id) {
        extends += fullBox("trex", 0, 0, u32(id), u32(1), u32(1), u32(1), u32(1));
    }
    return box("moov", body, box("mvex", extends));
}

/// A row of a track run on its way into the file.
struct Row {
    std::uint64_t timeMs = 0;
    std::uint32_t size = 0;
    bool isSync = false;
    std::int32_t compositionOffset = 0;
    std::uint64_t offset = 0;  ///< from the first data byte
};

using Rows = std::vector<Row>;

/// The rows of one track, by fragment.
std::vector<Rows> rowsOf(const std::vector<ExpectedFragment>& fragments, std::size_t track,
                         bool isHint) {
    std::vector<Rows> all;
    for (const ExpectedFragment& fragment : fragments) {
        Rows rows;
        std::uint64_t at = 0;
        for (const ExpectedTag& tag : fragment.tags) {
            Row row;
            row.timeMs = tag.timeMs;
            row.isSync = tag.isSync;
            row.compositionOffset = tag.compositionOffset;
            row.offset = isHint ? at : at + tag.dataOffset;
            row.size = static_cast<std::uint32_t>(isHint ? tag.image.size()
                                                         : tag.image.size() - 4 - tag.dataOffset);
            if (isHint || tag.track == static_cast<int>(track)) rows.push_back(row);
            at += tag.image.size();
        }
        all.push_back(rows);
    }
    return all;
}

Bytes runsOf(const Rows& rows, const std::vector<std::uint64_t>& durations) {
    Bytes runs;
    for (std::size_t i = 0; i < rows.size();) {
        const std::size_t first = i;
        Bytes samples;
        do {
            samples += u32(durations[i]) + u32(rows[i].size) +
                       u32(rows[i].isSync ? 0x02000000 : 0x01010000) +
                       u32(static_cast<std::uint32_t>(rows[i].compositionOffset));
            ++i;
        } while (i < rows.size() && rows[i].offset == rows[i - 1].offset + rows[i - 1].size);
        runs += fullBox("trun", 0, 0xF01, u32(i - first), u32(rows[first].offset), samples);
    }
    return runs;
}

/// How long each row lasts: until the track's next one, the very last one for 1.
std::vector<std::vector<std::uint64_t>> durationsOf(const std::vector<Rows>& all) {
    std::vector<std::vector<std::uint64_t>> durations(all.size());
    std::uint64_t next = 0;
    bool hasNext = false;
    for (std::size_t f = all.size(); f-- > 0;) {
        durations[f].resize(all[f].size());
        for (std::size_t i = all[f].size(); i-- > 0;) {
            durations[f][i] = hasNext ? next - all[f][i].timeMs : 1;
            next = all[f][i].timeMs;
            hasNext = true;
        }
    }
    return durations;
}

}  // namespace

Bytes expectedVideoEntry(const std::string& format, std::uint32_t width, std::uint32_t height,
                         const std::string& compressorName) {
    const Bytes name = compressorName.empty()
                           ? fill(32, 0)
                           : u8(10) + text(compressorName) + fill(31 - compressorName.size(), 0);
    return box(format, fill(6, 0), u16(1), fill(16, 0), u16(width), u16(height), u32(72 << 16),
               u32(72 << 16), u32(0), u16(1), name, u16(24), u16(0xFFFF));
}

Bytes expectedAudioEntry(const std::string& format, std::uint32_t channels, std::uint32_t bits,
                         std::uint32_t rate) {
    return box(format, fill(6, 0), u16(1), fill(8, 0), u16(channels), u16(bits), u32(0),
               u32(rate << 16));
}

Bytes expectedSegment(const std::vector<ExpectedMediaTrack>& tracks,
                      const std::vector<ExpectedTrackTimes>& times, std::uint64_t movieDuration,
                      const std::vector<ExpectedFragment>& fragments) {
    Bytes file = box("ftyp", text("kzm "), u32(1), text("isommp42m4v kzm "));
    file += movie(tracks, times, movieDuration);
    std::vector<std::vector<Rows>> rows;
    std::vector<std::vector<std::vector<std::uint64_t>>> durations;
    for (std::size_t id = 1; id <= tracks.size() + 1; ++id) {
        rows.push_back(rowsOf(fragments, id, id == tracks.size() + 1));
        durations.push_back(durationsOf(rows.back()));
    }
    for (std::size_t f = 0; f < fragments.size(); ++f) {
        const auto trafs = [&](std::uint64_t base) {
            Bytes out;
            for (std::size_t t = 0; t < rows.size(); ++t) {
                if (rows[t][f].empty()) continue;
                out += box("traf", fullBox("tfhd", 0, 3, u32(t + 1), u64(base), u32(1)),
                           runsOf(rows[t][f], durations[t][f]));
            }
            return out;
        };
        const auto fragmentHeader = [&](std::uint64_t base) {
            return box("moof", fullBox("mfhd", 0, 0, u32(f + 1)), trafs(base));
        };
        std::size_t indexed = 0;
        Bytes data;
        for (const ExpectedTag& tag : fragments[f].tags) {
            indexed += tag.isIndexed ? 1 : 0;
            data += tag.image;
        }
        const std::uint64_t start = file.size();
        const std::uint64_t moofAt = start + 21 + 16 * indexed + 12 + fragments[f].bootstrap.size();
        const std::uint64_t dataAt = moofAt + fragmentHeader(0).size() + 16;
        Bytes index;
        std::uint64_t at = dataAt;
        for (const ExpectedTag& tag : fragments[f].tags) {
            if (tag.isIndexed) index += u64(tag.timeMs) + u64(at - start);
            at += tag.image.size();
        }
        file += fullBox("afra", 0, 0, u8(0xC0), u32(1000), u32(indexed), index);
        file += fullBox("abst", 0, 0, fragments[f].bootstrap);
        file += fragmentHeader(dataAt);
        file += largeBox("mdat", data);
    }
    return file;
}

Bytes expectedBootstrap(std::uint32_t version, std::uint64_t currentTime,
                        const std::vector<std::pair<std::uint32_t, std::uint32_t>>& segments,
                        const std::vector<ExpectedRun>& runs) {
    Bytes segmentRows;
    for (const auto& [first, count] : segments) segmentRows += u32(first) + u32(count);
    Bytes fragmentRows;
    for (const ExpectedRun& run : runs) {
        fragmentRows += u32(run.first) + u64(run.time) + u32(run.duration);
        if (run.duration == 0) fragmentRows += u8(static_cast<std::uint64_t>(run.discontinuity));
    }
    return u32(version) + u8(0) + u32(1000) + u64(currentTime) + u64(0) + u8(0) + u8(0) + u8(0) +
           u8(0) + u8(0) + u8(1) + fullBox("asrt", 0, 0, u8(0), u32(segments.size()), segmentRows) +
           u8(1) + fullBox("afrt", 0, 0, u32(1000), u8(0), u32(runs.size()), fragmentRows);
}

Bytes withoutDates(Bytes segment) {
    for (const char* type : {"mvhd", "tkhd", "mdhd"}) {
        const Bytes code = text(type);
        for (std::size_t at = 0; at + 24 <= segment.size(); ++at) {
            // Boxes of these types stand in the header alone, in front of all media.
            if (segment.slice(at, 4) == text("mvex")) break;
            if (segment.slice(at, 4) == code) segment = segment.patched(at + 8, fill(16, 0));
        }
    }
    return segment;
}

}  // namespace kz::test
