#pragma once

#include <cstdint>
#include <memory>
#include <vector>

namespace qlix::kzm {

/// What describes the samples of a track, for every kind of media.
struct QlixKZMSampleDescInfo {
    std::uint32_t recordSize = 16;   ///< length of the record in its packed form
    std::uint32_t format = 0;        ///< four-character code of the coding
    std::uint32_t handler = 0;       ///< that of the track
    std::uint32_t index = 0;         ///< in the description list, from 1; 0 outside of one
    std::vector<std::uint8_t> data;  ///< codec data
};

/// A description of samples of no special kind, and the base of the others.
class SampleDescriptor : public QlixKZMSampleDescInfo {
public:
    SampleDescriptor() = default;
    SampleDescriptor(std::uint32_t ofHandler, std::uint32_t ofFormat) {
        handler = ofHandler;
        format = ofFormat;
    }
    virtual ~SampleDescriptor() = default;

    /// A copy for a caller: of the derived kind for 'vide', 'soun', and 'hint' with the format
    /// 'rtmp'; of this base for all others.
    std::unique_ptr<SampleDescriptor> copyOut() const;

protected:
    SampleDescriptor(const SampleDescriptor&) = default;
    SampleDescriptor& operator=(const SampleDescriptor&) = default;

private:
    virtual std::unique_ptr<SampleDescriptor> clone() const;
};

class VideoSampleDescriptor : public SampleDescriptor {
public:
    VideoSampleDescriptor() { recordSize = 28; }

    std::uint32_t width = 0;  ///< pixels; 16 bits in a file
    std::uint32_t height = 0;
    float horizontalResolution = 0.0F;  ///< pixels an inch
    float verticalResolution = 0.0F;
    std::uint32_t frameCount = 0;  ///< frames a sample; 16 bits in a file
    std::uint32_t depth = 0;       ///< bits a pixel; 16 bits in a file

private:
    std::unique_ptr<SampleDescriptor> clone() const override;
};

class AudioSampleDescriptor : public SampleDescriptor {
public:
    AudioSampleDescriptor() { recordSize = 12; }

    float sampleRate = 0.0F;  ///< samples a second
    std::uint16_t channelCount = 0;
    std::uint16_t sampleSize = 0;  ///< bits

private:
    std::unique_ptr<SampleDescriptor> clone() const override;
};

class RtmpSampleDescriptor : public SampleDescriptor {
public:
    RtmpSampleDescriptor() { recordSize = 12; }

    std::uint16_t hintTrackVersion = 0;
    std::uint16_t highestCompatibleVersion = 0;
    std::uint32_t maxPacketSize = 0;  ///< bytes; 16 bits in a file

private:
    std::unique_ptr<SampleDescriptor> clone() const override;
};

}  // namespace qlix::kzm
