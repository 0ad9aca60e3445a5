#include "KzmFileBuilder.h"

#include "support/IsoBuilder.h"

namespace torvo::kzspkgutil::test {

using namespace kz::test;

Bytes videoEntry(const std::string& format, const Bytes& codecData, int width, int height) {
    return box(format, fill(6, 0), u16(1), fill(16, 0), u16(static_cast<unsigned>(width)),
               u16(static_cast<unsigned>(height)), u32(0x480000), u32(0x480000), u32(0), u16(1),
               fill(32, 0), u16(24), u16(0xFFFF), codecData);
}

Bytes audioEntry(const std::string& format, const Bytes& codecData, int rate, int channels,
                 int sampleSize) {
    return box(format, fill(6, 0), u16(1), fill(8, 0), u16(static_cast<unsigned>(channels)),
               u16(static_cast<unsigned>(sampleSize)), u32(0),
               u32(static_cast<std::uint64_t>(rate) << 16), codecData);
}

Bytes plainEntry(const std::string& format, const Bytes& data) {
    return box(format, fill(6, 0), u16(1), data);
}

namespace {

std::uint32_t durationOf(const KzmTrack& track) {
    std::uint32_t ticks = 0;
    for (const KzmSample& sample : track.samples) ticks += sample.delta;
    return ticks;
}

std::uint64_t packedLanguage(const std::string& letters) {
    std::uint64_t packed = 0;
    for (const char letter : letters) packed = packed * 32 + static_cast<unsigned>(letter - 0x60);
    return packed;
}

Bytes join(const std::vector<Bytes>& parts) {
    Bytes all;
    for (const Bytes& part : parts) all += part;
    return all;
}

/// A table of one row a sample, with its count in front.
template <typename Row>
Bytes rows(const KzmTrack& track, Row row) {
    Bytes all = u32(track.samples.size());
    for (std::size_t i = 0; i < track.samples.size(); ++i) all += row(track.samples[i], i);
    return all;
}

Bytes sampleTables(const KzmTrack& track, std::uint64_t firstOffset) {
    const Bytes stsd = fullBox("stsd", 0, 0, u32(track.entries.size()), join(track.entries));
    const Bytes stts = fullBox("stts", 0, 0, rows(track, [](const KzmSample& sample, std::size_t) {
                                   return u32(1) + u32(sample.delta);
                               }));
    const Bytes ctts =
        fullBox("ctts", 0, 0, rows(track, [](const KzmSample& sample, std::size_t) {
                    return u32(1) + u32(static_cast<std::uint32_t>(sample.composition));
                }));
    const Bytes stsc =
        fullBox("stsc", 0, 0, rows(track, [](const KzmSample& sample, std::size_t i) {
                    return u32(i + 1) + u32(1) + u32(sample.description);
                }));
    const Bytes stsz =
        fullBox("stsz", 0, 0, u32(0) + rows(track, [](const KzmSample& sample, std::size_t) {
                                  return u32(sample.data.size());
                              }));
    const Bytes stco = fullBox("stco", 0, 0, rows(track, [&](const KzmSample& sample, std::size_t) {
                                   const std::uint64_t offset = firstOffset;
                                   firstOffset += sample.data.size();
                                   return u32(offset);
                               }));
    Bytes keys;
    std::size_t keyCount = 0;
    for (std::size_t i = 0; i < track.samples.size(); ++i) {
        if (!track.samples[i].isKey) continue;
        keys += u32(i + 1);
        ++keyCount;
    }
    return box("stbl", stsd, stts, ctts, stsc, stsz, stco,
               fullBox("stss", 0, 0, u32(keyCount), keys));
}

Bytes edits(const KzmTrack& track) {
    if (track.edits.empty()) return {};
    Bytes list = u32(track.edits.size());
    for (const KzmEdit& edit : track.edits) {
        list += u32(edit.duration) + u32(static_cast<std::uint32_t>(edit.mediaTime)) + u32(0x10000);
    }
    return box("edts", fullBox("elst", 0, 0, list));
}

Bytes trackBox(const KzmTrack& track, std::size_t id, std::uint64_t durationMs,
               std::uint64_t mediaDuration, const Bytes& stbl) {
    const Bytes tkhd =
        fullBox("tkhd", 0, 7, u32(0), u32(0), u32(id), u32(0), u32(durationMs), fill(8, 0), u32(0),
                u16(0x100), u16(0), fill(36, 0), u32(std::uint64_t{track.width} << 16),
                u32(std::uint64_t{track.height} << 16));
    const Bytes mdhd = fullBox("mdhd", 0, 0, u32(0), u32(0), u32(track.timescale),
                               u32(mediaDuration), u16(packedLanguage(track.language)), u16(0));
    const Bytes hdlr =
        fullBox("hdlr", 0, 0, u32(0), text(track.handler), fill(12, 0), text("a handler"), u8(0));
    const Bytes dinf = box("dinf", fullBox("dref", 0, 0, u32(1), fullBox("url ", 0, 1)));
    return box("trak", tkhd, edits(track),
               box("mdia", mdhd, hdlr, box("minf", fullBox("nmhd", 0, 0), dinf, stbl)));
}

Bytes movieHeader(std::uint64_t duration, std::size_t nextTrack) {
    return fullBox("mvhd", 0, 0, u32(0), u32(0), u32(1000), u32(duration), u32(0x10000), u16(0x100),
                   fill(10, 0), fill(36, 0), fill(24, 0), u32(nextTrack));
}

Bytes allData(const std::vector<KzmTrack>& tracks) {
    Bytes data;
    for (const KzmTrack& track : tracks) {
        for (const KzmSample& sample : track.samples) data += sample.data;
    }
    return data;
}

Bytes dataOf(const KzmTrack& track) { return allData({track}); }

Bytes fileType() { return box("ftyp", text("isom"), u32(0)); }

Bytes trackFragment(const KzmTrack& track, std::size_t id, std::uint64_t dataOffset) {
    Bytes run = u32(track.samples.size()) + u32(dataOffset);
    for (const KzmSample& sample : track.samples) {
        run += u32(sample.delta) + u32(sample.data.size()) +
               u32(sample.isKey ? 0x02000000 : 0x01010000) +
               u32(static_cast<std::uint32_t>(sample.composition));
    }
    return box("traf", fullBox("tfhd", 0, 0x020000, u32(id)), fullBox("trun", 0, 0xF01, run));
}

Bytes movieFragment(const std::vector<KzmTrack>& tracks, std::uint64_t dataOffset) {
    Bytes trafs;
    for (std::size_t i = 0; i < tracks.size(); ++i) {
        trafs += trackFragment(tracks[i], i + 1, dataOffset);
        dataOffset += dataOf(tracks[i]).size();
    }
    return box("moof", fullBox("mfhd", 0, 0, u32(1)), trafs);
}

}  // namespace

Bytes kzmFile(const std::vector<KzmTrack>& tracks, std::uint32_t durationMs) {
    const Bytes head = fileType() + box("mdat", allData(tracks));
    std::uint64_t offset = fileType().size() + 8;
    Bytes moov = movieHeader(durationMs, tracks.size() + 1);
    for (std::size_t i = 0; i < tracks.size(); ++i) {
        moov += trackBox(tracks[i], i + 1, durationMs, durationOf(tracks[i]),
                         sampleTables(tracks[i], offset));
        offset += dataOf(tracks[i]).size();
    }
    return head + box("moov", moov);
}

Bytes fragmentedKzmFile(const std::vector<KzmTrack>& tracks) {
    Bytes moov = movieHeader(0, tracks.size() + 1);
    Bytes defaults;
    for (std::size_t i = 0; i < tracks.size(); ++i) {
        KzmTrack empty = tracks[i];
        empty.samples.clear();
        moov += trackBox(empty, i + 1, 0, 0, sampleTables(empty, 0));
        defaults += fullBox("trex", 0, 0, u32(i + 1), u32(1), u32(0), u32(0), u32(0));
    }
    const std::uint64_t moofSize = movieFragment(tracks, 0).size();
    return fileType() + box("moov", moov, box("mvex", defaults)) +
           movieFragment(tracks, moofSize + 8) + box("mdat", allData(tracks));
}

}  // namespace torvo::kzspkgutil::test
