#include <functional>
#include <set>
#include <sstream>

#include "support/ByteCursor.h"
#include "support/Presentation.h"

namespace kz::test {
namespace {

/// Collects findings; each names the segment and fragment that it is about.
class Findings {
public:
    void in(std::size_t segment, std::size_t fragment) {
        where_ = "segment " + std::to_string(segment + 1) + " fragment " +
                 std::to_string(fragment + 1) + ": ";
    }
    void inWhole() { where_.clear(); }

    template <typename... Parts>
    void unless(bool holds, const Parts&... parts) {
        if (holds) return;
        std::ostringstream line;
        line << where_;
        (line << ... << parts);
        lines_.push_back(line.str());
    }

    std::vector<std::string> take() { return std::move(lines_); }

private:
    std::string where_;
    std::vector<std::string> lines_;
};

std::uint64_t tagTime(const Bytes& tag) {
    ByteCursor in(tag);
    in.skip(4);
    const std::uint64_t low = in.u24();
    return low | (in.u8() << 24);
}

/// The time that the edit list takes off a track's decode times: its one empty edit.
std::uint64_t gapOf(const PackedTrack& track) {
    std::uint64_t gap = 0;
    for (const EditRow& row : track.edits) {
        if (row.mediaTime == -1) gap += row.duration;
    }
    return gap;
}

void checkTag(const Bytes& tag, Findings& findings) {
    if (tag.size() < 15) {
        findings.unless(false, "a hint sample of ", tag.size(), " bytes is no tag");
        return;
    }
    ByteCursor in(tag);
    in.skip(1);
    const std::uint64_t body = in.u24();
    findings.unless(body + 15 == tag.size(), "a tag's body size ", body, " in ", tag.size());
    in.seek(tag.size() - 4);
    findings.unless(in.u32() == tag.size() - 4, "a tag's last word is wrong");
}

void checkHintSamples(const Segment& segment, const PackedFragment& fragment,
                      const PackedTrack& hint, Findings& findings) {
    const auto found = fragment.samples.find(hint.id);
    if (found == fragment.samples.end()) {
        findings.unless(false, "no samples of the hint track");
        return;
    }
    std::uint64_t expected = fragment.dataStart;
    for (const PackedSample& sample : found->second) {
        findings.unless(sample.offset == expected, "hint samples don't tile the mdat at ",
                        expected);
        expected = sample.offset + sample.size;
        const Bytes tag = segment.file.slice(sample.offset, sample.size);
        checkTag(tag, findings);
        if (segment.movieTimescale == 1000) {
            // A tag has the low 32 bits.
            const std::uint64_t time = (sample.decodeTime + gapOf(hint)) & 0xFFFFFFFF;
            findings.unless(time == tagTime(tag), "decode time ", sample.decodeTime, " and gap ",
                            gapOf(hint), " against tag time ", tagTime(tag));
        }
    }
    findings.unless(expected == fragment.dataEnd, "hint samples end at ", expected, " and not at ",
                    fragment.dataEnd);
}

void checkMediaSamples(const PackedFragment& fragment, const PackedTrack& hint,
                       Findings& findings) {
    const auto hints = fragment.samples.find(hint.id);
    if (hints == fragment.samples.end()) return;
    for (const auto& [track, samples] : fragment.samples) {
        if (track == hint.id) continue;
        auto holder = hints->second.begin();
        for (const PackedSample& sample : samples) {
            while (holder != hints->second.end() &&
                   holder->offset + holder->size < sample.offset + sample.size) {
                ++holder;
            }
            findings.unless(holder != hints->second.end() && holder->offset + 11 <= sample.offset,
                            "a sample of track ", track, " lies in no tag");
            if (holder == hints->second.end()) return;
            findings.unless(holder->compositionOffset == sample.compositionOffset,
                            "composition offsets of hint and track ", track, " differ");
            findings.unless(holder->flags == sample.flags, "flags of hint and track ", track,
                            " differ");
        }
    }
}

void checkAfra(const PackedFragment& fragment, const PackedTrack& hint, Findings& findings) {
    findings.unless(fragment.afra.bits == 0xC0, "a fragment's afra has other bits than 0xC0");
    findings.unless(fragment.afra.timescale == 1000, "a fragment's afra has another timescale");
    std::set<std::uint64_t> starts;
    const auto hints = fragment.samples.find(hint.id);
    if (hints != fragment.samples.end()) {
        for (const PackedSample& sample : hints->second) starts.insert(sample.offset);
    }
    for (const AfraRow& row : fragment.afra.local) {
        findings.unless(starts.count(fragment.offset + row.offset) == 1,
                        "an afra row points to no hint sample: ", row.offset);
    }
}

void checkSegment(const Segment& segment, std::size_t number, Findings& findings) {
    const PackedTrack* hint = segment.track("hint");
    findings.in(number, 0);
    findings.unless(hint != nullptr, "no hint track");
    if (hint == nullptr) return;
    findings.unless(hint->hintedTracks.size() + 1 == segment.tracks.size(),
                    "the hint track doesn't name every media track");
    std::uint32_t sequence = 0;
    for (std::size_t i = 0; i < segment.fragments.size(); ++i) {
        findings.in(number, i);
        const PackedFragment& fragment = segment.fragments[i];
        findings.unless(fragment.sequenceNumber == ++sequence, "sequence number ",
                        fragment.sequenceNumber);
        findings.unless(!fragment.bootstrap.empty(), "no bootstrap copy");
        if (!fragment.bootstrap.empty()) readAbstPayload(fragment.bootstrap);
        checkHintSamples(segment, fragment, *hint, findings);
        checkMediaSamples(fragment, *hint, findings);
        checkAfra(fragment, *hint, findings);
    }
}

void checkIndexes(const Presentation& all, Findings& findings) {
    findings.inWhole();
    findings.unless(!all.indexes.empty(), "no index file");
    for (const Afra& index : all.indexes) {
        std::uint32_t last = 0;
        for (const IndexRow& row : index.global) {
            findings.unless(last == 0 || row.fragment == last + 1, "index rows ", last, " and ",
                            row.fragment);
            last = row.fragment;
            findings.unless(row.offsetFromAfra == 0, "an offset from afra that isn't 0");
        }
        findings.unless(index.bits == (index.global.empty() ? 0xC0 : 0xE0), "index bits ",
                        index.bits);
        findings.unless(index.local.empty(), "an index with local rows");
    }
    if (all.indexes.empty()) return;
    std::set<std::pair<std::uint32_t, std::uint64_t>> listed;
    for (const IndexRow& row : all.indexes.back().global) {
        if (row.afraOffset != kNoData) listed.insert({row.segment, row.afraOffset});
    }
    std::size_t written = 0;
    for (std::size_t s = 0; s < all.segments.size(); ++s) {
        for (const PackedFragment& fragment : all.segments[s].fragments) {
            ++written;
            findings.unless(listed.count({static_cast<std::uint32_t>(s + 1), fragment.offset}) == 1,
                            "the index doesn't list the fragment at ", fragment.offset);
        }
    }
    // A last fragment that got no sample is listed at the end of its file.
    findings.unless(listed.size() == written || listed.size() == written + 1, "the index lists ",
                    listed.size(), " fragments of ", written);
}

/// What a player recovers: for each fragment number whether it has data.
std::map<std::uint32_t, bool> expanded(const Abst& abst, std::uint32_t last) {
    std::map<std::uint32_t, bool> numbers;
    for (std::size_t i = 0; i < abst.fragments.size(); ++i) {
        const FragmentRun& run = abst.fragments[i];
        if (run.first == 0) continue;
        std::uint32_t end = last + 1;
        for (std::size_t k = i + 1; k < abst.fragments.size(); ++k) {
            if (abst.fragments[k].first != 0) {
                end = abst.fragments[k].first;
                break;
            }
        }
        for (std::uint32_t n = run.first; n < end; ++n) numbers[n] = run.duration != 0;
    }
    return numbers;
}

void checkBootstrap(const Presentation& all, Findings& findings) {
    if (all.bootstrap.empty() || all.indexes.empty()) return;
    const Abst abst = readAbstBox(all.bootstrap);
    const std::vector<IndexRow>& rows = all.indexes.back().global;
    if (rows.empty() || abst.segments.empty()) return;
    const std::map<std::uint32_t, bool> numbers = expanded(abst, rows.back().fragment);
    std::map<std::uint32_t, std::uint32_t> perSegment;
    for (const IndexRow& row : rows) {
        const auto found = numbers.find(row.fragment);
        findings.unless(found != numbers.end(), "the bootstrap lacks fragment ", row.fragment);
        if (found == numbers.end()) continue;
        findings.unless(found->second == (row.afraOffset != kNoData),
                        "bootstrap and index differ on ", row.fragment);
    }
    std::uint64_t counted = 0;
    for (const SegmentRun& run : abst.segments) counted += run.fragments;
    findings.unless(counted == rows.size(), "segments hold ", counted, " fragments, the index ",
                    rows.size());
}

}  // namespace

std::vector<std::string> inconsistencies(const Presentation& presentation) {
    Findings findings;
    for (std::size_t i = 0; i < presentation.segments.size(); ++i) {
        checkSegment(presentation.segments[i], i, findings);
    }
    checkIndexes(presentation, findings);
    checkBootstrap(presentation, findings);
    return findings.take();
}

}  // namespace kz::test
