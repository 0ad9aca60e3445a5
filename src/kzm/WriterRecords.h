#pragma once

#include <cstdint>

#include "kzm/DateRecord.h"

namespace qlix::kzm {

/// Samples that the tables of one track can take in a file without fragments.
constexpr std::uint32_t kDefaultSampleTableCapacity = 5000;

/// What a writer must know about the file before its first byte.
struct WriterConfiguration {
    std::uint32_t recordSize = 48;  ///< length of the record in its packed form
    bool fragmented = true;
    DateRecord creationDate;
    DateRecord modificationDate;
    float rate = 1.0F;               ///< 1 is normal speed
    float volume = 1.0F;             ///< 1 is full volume
    std::uint32_t timescale = 1000;  ///< ticks a second of the movie; 0 is refused
    std::uint64_t duration = 0;      ///< not used: durations come from the samples
};

/// What a track's headers hold.
struct KZMTrackInfo {
    std::uint32_t recordSize = 72;
    std::uint32_t handler = 0;    ///< four-character code: vide, soun, hint, meta
    std::uint32_t flags = 0;      ///< the low 24 bits go to the track header
    std::uint32_t timescale = 0;  ///< ticks a second; 0 is refused
    DateRecord creationDate;
    DateRecord modificationDate;
    std::uint64_t duration = 0;  ///< in ticks of the track; stands until samples are written
    float width = 0.0F;          ///< pixels
    float height = 0.0F;
    float volume = 0.0F;
    char language[4] = {0, 0, 0, 0};      ///< three letters a to z and a 0
    std::uint32_t handlerNameLength = 0;  ///< bytes, a terminator included if there is one
    std::uint32_t optionBits = 0;         ///< bit 0: the track gets an `sdtp`
    const char* handlerName = nullptr;    ///< the caller's; copied while the track is added
};

/// Space that is set aside for a track, since headers can't grow once fragments follow them.
struct KZMTrackParams {
    std::uint32_t recordSize = 16;
    std::uint32_t initialEntries = 0;    ///< sample descriptions that are planned
    std::uint32_t maxEdits = 0;          ///< the edit list holds twice as many rows and one more
    std::uint32_t descriptionSpace = 0;  ///< bytes of codec data for each planned description
};

/// Values of the low byte of KZMSample::kind.
constexpr std::uint32_t kSyncSample = 1;
constexpr std::uint32_t kEndOfEditMarker = 2;

constexpr bool isSyncSample(std::uint32_t kind) { return (kind & 0xFF) == kSyncSample; }
constexpr bool isEndOfEditMarker(std::uint32_t kind) { return (kind & 0xFF) == kEndOfEditMarker; }

/// One sample. A marker has neither size nor bytes: it says that the track pauses at its time.
struct KZMSample {
    std::uint32_t recordSize = 32;
    std::uint32_t size = 0;               ///< bytes
    std::uint64_t time = 0;               ///< decode time in ticks of `timescale`; taken as signed
    std::uint32_t timescale = 0;          ///< ticks a second; 0 is refused
    std::uint32_t compositionOffset = 0;  ///< ticks of the track
    std::uint32_t handler = 0;            ///< that of the track
    std::uint32_t kind = 0;  ///< low byte: one of the constants above, or 0; bits 8-15: `sdtp` byte
};

/// The bytes of a sample, which stay where they are until they are in the file.
///
/// The writer takes them over with the call, also with one that fails: `release` (null: nothing
/// to do) is called exactly once. It must not throw.
struct SampleData {
    const std::uint8_t* data = nullptr;
    void* context = nullptr;
    void (*release)(void* context) = nullptr;
};

/// A range of the bytes of a hint sample.
struct MediaPart {
    std::uint32_t offset = 0;  ///< bytes from the first byte of the hint sample
    std::uint32_t size = 0;
};

/// Names a track of one writer; null when default-constructed.
class TrackHandle {
public:
    TrackHandle() = default;
    explicit TrackHandle(std::uint32_t trackId) : trackId_(trackId) {}

    explicit operator bool() const { return trackId_ != 0; }
    /// Counts from 1 in the order of adding; 0 in a null handle.
    std::uint32_t trackId() const { return trackId_; }

private:
    std::uint32_t trackId_ = 0;
};

/// Names a sample description of one track; null when default-constructed.
class SampleDescriptionHandle {
public:
    SampleDescriptionHandle() = default;
    explicit SampleDescriptionHandle(std::uint32_t index) : index_(index) {}

    explicit operator bool() const { return index_ != 0; }
    /// Counts from 1 in the order of adding to the track; 0 in a null handle.
    std::uint32_t index() const { return index_; }

private:
    std::uint32_t index_ = 0;
};

}  // namespace qlix::kzm
