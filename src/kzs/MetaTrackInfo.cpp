#include "kzs/MetaTrackInfo.h"

namespace torvo::kzs {

void MetaTrackInfo::setTrackType(std::uint32_t trackType) { trackType_ = trackType; }

void MetaTrackInfo::setCodec(std::uint32_t codec) { codec_ = codec; }

void MetaTrackInfo::setLength(double length) { length_ = length; }

void MetaTrackInfo::setTimescale(double timescale) { timescale_ = timescale; }

void MetaTrackInfo::setLanguage(const std::string& language) { language_ = language; }

std::uint32_t MetaTrackInfo::getTrackType() const { return trackType_; }

std::uint32_t MetaTrackInfo::getCodec() const { return codec_; }

double MetaTrackInfo::getLength() const { return length_; }

double MetaTrackInfo::getTimescale() const { return timescale_; }

std::string MetaTrackInfo::getLanguage() const { return language_; }

}  // namespace torvo::kzs
