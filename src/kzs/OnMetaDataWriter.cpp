#include "kzs/OnMetaDataWriter.h"

#include <ostream>

#include "kvl/amfmessage/AMF0Markers.h"
#include "kvl/amfmessage/AMF0Props.h"
#include "kvl/amfmessage/AMF0Values.h"
#include "kzs/OnMetaDataRecord.h"
#include "kzs/base/ByteOrder.h"
#include "kzs/base/StreamExceptionGuard.h"

namespace torvo::kzs {

namespace {

using namespace kvl::amfmessage;

/// On purpose: the letters of the code, not its number.
/// Pinned by OnMetaDataWriterTest.WritesCodecsAsText.
std::string codecText(std::uint32_t codec) {
    std::uint8_t letters[4];
    storeU32(letters, codec);
    return std::string(letters, letters + sizeof letters);
}

class Writer {
public:
    explicit Writer(std::ostream& stream) : stream_(stream) {}

    void write(const OnMetaDataRecord& record) {
        AMF0String("onMetaData").write(stream_);
        AMF0ArrayBegin().write(stream_);
        numberIfPositive("duration", record.duration);
        // On purpose: each video track repeats the names, and the last one counts for players.
        // Pinned by OnMetaDataWriterTest.RepeatsTheNamesOfPicturesForEachVideoTrack.
        for (const auto& track : record.tracks) writeCodec(*track);
        writeCodecDetails(record);
        for (const auto& track : record.tracks) writeRates(*track);
        writeTrackInfo(record);
        writeSmpte(record);
        writeCustomData(record);
        AMF0ArrayEnd().write(stream_);
    }

private:
    void numberIfPositive(const char* name, double value) {
        if (value > 0) AMF0PropNumber(name, value).write(stream_);
    }

    void codecIfKnown(const char* name, std::uint32_t codec) {
        if (codec != 0) AMF0PropString(name, codecText(codec)).write(stream_);
    }

    void writeCodec(const MetaTrackInfo& track) {
        if (const auto* video = dynamic_cast<const MetaVideoTrackInfo*>(&track)) {
            numberIfPositive("width", video->width);
            numberIfPositive("height", video->height);
            codecIfKnown("videocodecid", video->getCodec());
        } else if (const auto* audio = dynamic_cast<const MetaAudioTrackInfo*>(&track)) {
            codecIfKnown("audiocodecid", audio->getCodec());
        }
    }

    void writeCodecDetails(const OnMetaDataRecord& record) {
        if (record.hasAvc) {
            numberIfPositive("avcprofile", record.avcProfile);
            numberIfPositive("avclevel", record.avcLevel);
        }
        if (record.hasAac) numberIfPositive("aacaot", record.aacObjectType);
    }

    void writeRates(const MetaTrackInfo& track) {
        if (const auto* video = dynamic_cast<const MetaVideoTrackInfo*>(&track)) {
            // On purpose: sources that don't count their samples, as FLV, have no frame rate.
            // Pinned by OnMetaDataBuilderTest.HasNoFrameRateWithoutACountOfSamples.
            if (video->sampleCount > 0 && video->getTimescale() > 0 && video->getLength() > 0) {
                AMF0PropNumber("videoframerate",
                               video->getTimescale() * video->sampleCount / video->getLength())
                    .write(stream_);
            }
        } else if (const auto* audio = dynamic_cast<const MetaAudioTrackInfo*>(&track)) {
            numberIfPositive("audiosamplerate", audio->sampleRate);
            numberIfPositive("audiochannels", audio->channels);
        }
    }

    void writeTrackInfo(const OnMetaDataRecord& record) {
        if (record.tracks.empty()) return;
        AMF0NoHeaderString("trackinfo").write(stream_);
        AMF0StrictArrayBegin(static_cast<double>(record.tracks.size())).write(stream_);
        for (const auto& track : record.tracks) {
            AMF0ObjectBegin().write(stream_);
            numberIfPositive("length", track->getLength());
            numberIfPositive("timescale", track->getTimescale());
            const std::string language = track->getLanguage();
            if (!language.empty()) AMF0PropString("language", language).write(stream_);
            AMF0ObjectEnd().write(stream_);
        }
    }

    void writeSmpte(const OnMetaDataRecord& record) {
        if (!record.hasSmpte || !(record.smpteOffset > 0)) return;
        AMF0PropObjectBegin("smpteTimeInfo").write(stream_);
        AMF0PropNumber("smpteOffset", record.smpteOffset).write(stream_);
        AMF0ObjectEnd().write(stream_);
    }

    void writeCustomData(const OnMetaDataRecord& record) {
        if (record.customData.empty()) return;
        AMF0NoHeaderString("custdef").write(stream_);
        AMF0ObjectBegin().write(stream_);
        for (const auto& [name, value] : record.customData) {
            AMF0PropString(name, value).write(stream_);
        }
        AMF0ObjectEnd().write(stream_);
    }

    std::ostream& stream_;
};

}  // namespace

void writeOnMetaData(std::ostream& stream, const OnMetaDataRecord& record) {
    const StreamExceptionGuard guard(stream,
                                     std::ios::eofbit | std::ios::failbit | std::ios::badbit);
    Writer(stream).write(record);
}

}  // namespace torvo::kzs
