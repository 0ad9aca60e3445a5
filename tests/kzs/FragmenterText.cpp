#include "kzs/FragmenterText.h"

#include <cctype>
#include <sstream>

namespace torvo::kzs {

std::vector<FragmenterSample> samplesFrom(const std::string& words) {
    std::vector<FragmenterSample> samples;
    std::istringstream in(words);
    for (std::string word; in >> word;) {
        const char kind = word[0];
        FragmenterSample sample;
        sample.time = milliseconds(std::stoull(word.substr(1)));
        sample.isKeyFrame = kind == 'v' || kind == 'A' || kind == 'D';
        sample.trackKind = kind == 'v' || kind == 'p'   ? FragmenterSample::kVideo
                           : kind == 'a' || kind == 'A' ? FragmenterSample::kAudio
                                                        : FragmenterSample::kOther;
        samples.push_back(sample);
    }
    return samples;
}

std::string textOf(const FragmentEvent& event) {
    static const char* const kNames[] = {"None",    "Complete",      "SpanStart", "SpanCell",
                                         "SpanEnd", "FirstCutMoved", "WrongTrack"};
    std::ostringstream out;
    out << kNames[static_cast<unsigned>(event.kind)] << " " << event.fragmentNumber << " ["
        << event.start.value << "," << event.end.value << ") " << event.currentCell << "/"
        << event.previousCell << " state " << event.state;
    return out.str();
}

}  // namespace torvo::kzs
