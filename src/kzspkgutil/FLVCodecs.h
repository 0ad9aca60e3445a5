#pragma once

#include <cstdint>

namespace torvo::kzspkgutil {

/// The first body byte of a video tag: the frame type in the high half, the codec id in the low.
constexpr std::uint32_t flvFrameTypeOf(std::uint32_t firstBodyByte) { return firstBodyByte >> 4; }
constexpr std::uint32_t flvCodecIdOf(std::uint32_t firstBodyByte) { return firstBodyByte & 0x0F; }

constexpr std::uint32_t kFLVKeyFrame = 1;  ///< a frame type; the others aren't told apart

/// Codec ids of video tags.
constexpr std::uint32_t kFLVJpeg = 1;
constexpr std::uint32_t kFLVH263 = 2;
constexpr std::uint32_t kFLVVp6 = 4;
constexpr std::uint32_t kFLVVp6WithAlpha = 5;
constexpr std::uint32_t kFLVAvc = 7;

/// Sample description formats of the codec numbers in FLV tags, as four-character codes; 0 where
/// there is none.
///
///   video codec id  format  header      sound format   format  header
///                1  jpeg    0           0, 1, 2, 3, 14 .mp3    1
///                2  H263    1           4, 5, 6        nmos    1
///                4  VP6F    2           10             mp4a    2
///                5  VP6A    2           11             spex    1
///                7  avc1    5           12             opus    0
///           others  0       0           others         0       0
///
/// The header is the number of body bytes in front of the sample data.
std::uint32_t flvVideoFormat(std::uint32_t codecId);
std::uint32_t flvAudioFormat(std::uint32_t soundFormat);
std::uint32_t flvVideoHeaderLength(std::uint32_t codecId);
std::uint32_t flvAudioHeaderLength(std::uint32_t soundFormat);

}  // namespace torvo::kzspkgutil
