#pragma once

#include <cstdint>
#include <string>

namespace torvo::kzs {

constexpr std::uint32_t kAudioTrackType = 0;
constexpr std::uint32_t kVideoTrackType = 1;
constexpr std::uint32_t kDataTrackType = 2;

/// A track as the onMetaData record describes it. Held through shared pointers.
class MetaTrackInfo {
public:
    virtual void setTrackType(std::uint32_t trackType);
    /// The four-character code of the sample description, first letter in the high byte.
    virtual void setCodec(std::uint32_t codec);
    /// The duration, in `timescale` units.
    virtual void setLength(double length);
    /// Ticks a second.
    virtual void setTimescale(double timescale);
    virtual void setLanguage(const std::string& language);
    virtual std::uint32_t getTrackType() const;
    virtual std::uint32_t getCodec() const;
    virtual double getLength() const;
    virtual double getTimescale() const;
    virtual std::string getLanguage() const;

    virtual ~MetaTrackInfo() = default;

protected:
    explicit MetaTrackInfo(std::uint32_t trackType) : trackType_(trackType) {}

private:
    std::uint32_t trackType_;
    std::uint32_t codec_ = 0;
    double length_ = 0.0;
    double timescale_ = 0.0;
    std::string language_;
};

class MetaVideoTrackInfo final : public MetaTrackInfo {
public:
    MetaVideoTrackInfo() : MetaTrackInfo(kVideoTrackType) {}

    double width = 0.0;  ///< pixels
    double height = 0.0;
    double sampleCount = 0.0;  ///< 0 when it isn't known
};

class MetaAudioTrackInfo final : public MetaTrackInfo {
public:
    MetaAudioTrackInfo() : MetaTrackInfo(kAudioTrackType) {}

    double sampleRate = 0.0;  ///< Hz
    double channels = 0.0;
};

class MetaDataTrackInfo final : public MetaTrackInfo {
public:
    MetaDataTrackInfo() : MetaTrackInfo(kDataTrackType) {}
};

}  // namespace torvo::kzs
