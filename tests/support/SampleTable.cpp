#include "support/SampleTable.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <stdexcept>

namespace kz::test {
namespace {

const std::string kData = KZ_TEST_DATA_DIR;

/// The fields "name=value" of a line.
class Fields {
public:
    explicit Fields(std::istream& line) {
        for (std::string field; line >> field;) {
            const std::size_t equals = field.find('=');
            if (equals == std::string::npos) throw std::runtime_error("no field: " + field);
            values_[field.substr(0, equals)] = field.substr(equals + 1);
        }
    }
    const std::string& text(const std::string& name) const { return values_.at(name); }
    std::uint64_t number(const std::string& name) const { return std::stoull(text(name)); }
    std::uint32_t word(const std::string& name) const {
        return static_cast<std::uint32_t>(number(name));
    }

private:
    std::map<std::string, std::string> values_;
};

void addTrack(const Fields& fields, SampleTable& table) {
    TableTrack track;
    track.handler = fields.text("handler");
    track.format = fields.text("format");
    track.timescale = fields.word("timescale");
    track.hasSyncTable = fields.word("sync_table") != 0;
    table.tracks.push_back(track);
}

void addSample(const std::string& text, SampleTable& table) {
    std::istringstream line(text);
    std::size_t track = 0;
    TableSample sample;
    char key = 0;
    line >> track >> sample.dts >> sample.compositionOffset >> sample.size >> key >> sample.offset;
    if (!line || track >= table.tracks.size()) throw std::runtime_error("no sample: " + text);
    sample.isKey = key == 'K';
    table.tracks[track].samples.push_back(sample);
}

void takeLine(const std::string& text, SampleTable& table) {
    std::istringstream line(text);
    std::string kind;
    line >> kind;
    if (kind == "file") {
        line >> kind;
        table.path = kData + "/media/" + kind;
    } else if (kind == "movie") {
        const Fields fields(line);
        table.movieTimescale = fields.word("timescale");
        table.movieDuration = fields.number("duration");
        table.isFragmented = fields.word("fragmented") != 0;
        table.fragmentsDuration = fields.number("fragments_duration");
    } else if (kind == "track") {
        addTrack(Fields(line), table);
    } else if (kind == "edit") {
        const Fields fields(line);
        table.tracks.back().edits.push_back(
            {fields.number("duration"), std::stoll(fields.text("media_time"))});
    } else {
        addSample(text, table);
    }
}

/// To the nearest tick, an exact half down.
std::uint64_t scaled(std::uint64_t value, std::uint32_t from, std::uint32_t to) {
    return from == to ? value : (value * to + (from - 1) / 2) / from;
}

/// One track by its edits: each shows the samples of its stretch, moved to its place.
std::vector<PresentedSample> edited(const SampleTable& table, std::size_t number) {
    const TableTrack& track = table.tracks[number];
    std::vector<PresentedSample> out;
    std::uint64_t begin = 0;  // of the edit, in ticks of the movie
    for (const TableEdit& edit : track.edits) {
        const std::uint64_t end = begin + edit.duration;
        const std::uint64_t place = scaled(begin, table.movieTimescale, track.timescale);
        if (edit.mediaTime < 0) {
            out.push_back({number, place, true, {}});
        } else {
            const auto from = static_cast<std::uint64_t>(edit.mediaTime);
            for (const TableSample& sample : track.samples) {
                if (sample.dts < from) continue;
                const std::uint64_t time = place + (sample.dts - from);
                if (time >= scaled(end, table.movieTimescale, track.timescale)) break;
                out.push_back({number, time, false, sample});
            }
        }
        begin = end;
    }
    return out;
}

std::vector<PresentedSample> unedited(const SampleTable& table, std::size_t number) {
    std::vector<PresentedSample> out;
    for (const TableSample& sample : table.tracks[number].samples) {
        out.push_back({number, sample.dts, false, sample});
    }
    return out;
}

}  // namespace

SampleTable readSampleTable(const std::string& name) {
    std::ifstream in(kData + "/samples/" + name + ".txt");
    if (!in) throw std::runtime_error("no table for " + name);
    SampleTable table;
    for (std::string line; std::getline(in, line);) {
        if (line.empty() || line[0] == '#') continue;
        takeLine(line, table);
    }
    return table;
}

std::vector<std::string> sampleTableNames() {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(kData + "/samples")) {
        names.push_back(entry.path().stem().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::vector<PresentedSample> presented(const SampleTable& table,
                                       const std::vector<std::size_t>& selection, Edits edits) {
    std::vector<PresentedSample> all;
    for (const std::size_t number : selection) {
        const TableTrack& track = table.tracks.at(number);
        const bool hasEdits = edits == Edits::kFollowed && !track.edits.empty();
        const std::uint64_t end =
            table.endTicks() == 0 ? UINT64_MAX
                                  : scaled(table.endTicks(), table.movieTimescale, track.timescale);
        for (const PresentedSample& each :
             hasEdits ? edited(table, number) : unedited(table, number)) {
            if (each.time >= end) break;
            all.push_back(each);
        }
    }
    std::stable_sort(all.begin(), all.end(),
                     [&](const PresentedSample& left, const PresentedSample& right) {
                         return left.time * table.tracks[right.track].timescale <
                                right.time * table.tracks[left.track].timescale;
                     });
    return all;
}

std::uint64_t milliseconds(std::uint64_t ticks, std::uint32_t timescale) {
    return ticks * 1000 / timescale;
}

}  // namespace kz::test
