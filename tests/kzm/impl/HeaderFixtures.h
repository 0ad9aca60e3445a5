#pragma once

#include "support/IsoBuilder.h"

namespace kz::test {

/// Tables of a track, as the bodies of its boxes behind version and flags; the defaults are those
/// of a track without samples.
struct TrackTables {
    Bytes stsd = u32(0);
    Bytes stts = u32(0);
    Bytes stsc = u32(0);
    Bytes stsz = u32(0) + u32(0);
    Bytes stco = u32(0);
    Bytes more;  // whole boxes behind them
};

/// A `trak` with headers of version 0: track id 1, media timescale 1000.
inline IsoBox track(std::string_view handler, const TrackTables& tables, const Bytes& more = {}) {
    const Bytes tkhd =
        fullBox("tkhd", 0, 7, u32(0), u32(0), u32(1), u32(0), u32(6000), fill(60, 0));
    const Bytes mdhd = fullBox("mdhd", 0, 0, u32(0), u32(0), u32(1000), u32(10000), u32(0));
    const Bytes hdlr = fullBox("hdlr", 0, 0, u32(0), text(handler), fill(12, 0), text("name"));
    const Bytes dinf = box("dinf", fullBox("dref", 0, 0, u32(1), fullBox("url ", 0, 1)));
    const Bytes stbl =
        box("stbl", fullBox("stsd", 0, 0, tables.stsd), fullBox("stts", 0, 0, tables.stts),
            fullBox("stsc", 0, 0, tables.stsc), fullBox("stsz", 0, 0, tables.stsz),
            fullBox("stco", 0, 0, tables.stco), tables.more);
    return box("trak", tkhd, box("mdia", mdhd, hdlr, box("minf", dinf, stbl)), more);
}

/// A `moov` of movie timescale 600 and duration 6000.
inline IsoBox movie(const Bytes& tracks) {
    const Bytes mvhd =
        fullBox("mvhd", 0, 0, u32(0), u32(0), u32(600), u32(6000), fill(76, 0), u32(2));
    return box("moov", mvhd, tracks);
}

}  // namespace kz::test
