#include "support/FlvReader.h"

#include <stdexcept>

#include "support/ByteCursor.h"

namespace kz::test {

std::vector<StoredTag> readFlvTags(const Bytes& file) {
    ByteCursor in(file);
    if (in.text(3) != "FLV") throw std::runtime_error("no FLV signature");
    in.skip(2);
    in.seek(in.u32());
    std::vector<StoredTag> tags;
    in.skip(4);
    while (in.left() > 0) {
        const std::size_t start = in.position();
        StoredTag tag;
        tag.type = static_cast<int>(in.u8());
        const auto size = static_cast<std::size_t>(in.u24());
        tag.timeMs = static_cast<std::uint32_t>(in.u24());
        tag.timeMs |= static_cast<std::uint32_t>(in.u8() << 24);
        in.skip(3);
        tag.body = in.bytes(size);
        if (in.u32() != size + 11) throw std::runtime_error("the size behind a tag is wrong");
        tag.image = file.slice(start, in.position() - start);
        tags.push_back(tag);
    }
    return tags;
}

std::vector<StoredTag> samplesInOrder(const std::vector<StoredTag>& tags) {
    std::vector<StoredTag> audio;
    std::vector<StoredTag> video;
    std::vector<std::size_t> audioPlace;
    std::vector<std::size_t> videoPlace;
    for (std::size_t i = 0; i < tags.size(); ++i) {
        if (tags[i].body.empty()) continue;
        if (tags[i].type == 8) {
            audio.push_back(tags[i]);
            audioPlace.push_back(i);
        } else if (tags[i].type == 9) {
            video.push_back(tags[i]);
            videoPlace.push_back(i);
        }
    }
    std::vector<StoredTag> out;
    std::size_t a = 0;
    std::size_t v = 0;
    while (a < audio.size() || v < video.size()) {
        bool takeAudio = v == video.size();
        if (!takeAudio && a < audio.size()) {
            takeAudio = audio[a].timeMs != video[v].timeMs ? audio[a].timeMs < video[v].timeMs
                                                           : audioPlace[a] < videoPlace[v];
        }
        out.push_back(takeAudio ? audio[a++] : video[v++]);
    }
    return out;
}

}  // namespace kz::test
