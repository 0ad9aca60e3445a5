#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "kzm/Reader.h"
#include "kzm/WarningHandler.h"
#include "support/Bytes.h"
#include "support/IsoFile.h"
#include "support/MemoryStream.h"
#include "support/ThrownCode.h"

namespace kz::test {

/// A document over bytes in memory.
class OpenIso {
public:
    explicit OpenIso(Bytes bytes, bool ignoreEdits = true,
                     qlix::kzm::WarningHandler* handler = nullptr)
        : memory(std::move(bytes)), reader(memory, handler, nullptr, ignoreEdits) {}
    explicit OpenIso(const IsoFile& file, bool ignoreEdits = true)
        : OpenIso(file.build(), ignoreEdits) {}

    /// All samples of the tracks with these handlers, of all tracks if there are none.
    std::vector<qlix::kzm::Sample> samples(const std::vector<std::uint32_t>& handlers = {}) const {
        return samples({0, 1000}, reader.wholeEnd(), handlers);
    }
    std::vector<qlix::kzm::Sample> samples(const qlix::kzm::MovieTime& start,
                                           const qlix::kzm::MovieTime& end,
                                           const std::vector<std::uint32_t>& handlers = {}) const {
        std::vector<qlix::kzm::Sample> out;
        const auto iterator = reader.createIterator(start, end, handlers);
        while (iterator->hasSample()) out.push_back(iterator->next());
        return out;
    }
    Bytes dataOf(const qlix::kzm::Sample& sample) const {
        Bytes out = fill(sample.size, 0);
        reader.sampleData(sample, out.data());
        return out;
    }

    MemoryStream memory;
    qlix::kzm::Reader reader;
};

/// A file with one video track, whose samples last `duration` ticks each.
inline IsoFile oneTrack(unsigned count, std::uint32_t duration = 40, unsigned syncEvery = 5) {
    IsoFile file;
    file.tracks = {isoVideoTrack(1, count, duration, syncEvery)};
    return file;
}

/// The same in fragments.
inline IsoFile fragmented(unsigned count, unsigned perFragment) {
    IsoFile file = oneTrack(count);
    file.samplesPerFragment = perFragment;
    return file;
}

/// A file with a video track of 10 samples and an audio track of 20.
inline IsoFile twoTracks() {
    IsoFile file;
    file.tracks = {isoVideoTrack(1, 10), isoAudioTrack(2, 20)};
    return file;
}

/// The times of samples, with a 'k' behind those of sync samples and an 'e' behind markers:
/// "0k 40 80".
inline std::string timesOf(const std::vector<qlix::kzm::Sample>& samples) {
    std::string out;
    for (const qlix::kzm::Sample& sample : samples) {
        if (!out.empty()) out += " ";
        out += std::to_string(sample.time);
        if (sample.frameType() == qlix::kzm::kSampleIsSync) out += "k";
        if (sample.frameType() == qlix::kzm::kSampleIsEmptyEdit) out += "e";
    }
    return out;
}

}  // namespace kz::test
