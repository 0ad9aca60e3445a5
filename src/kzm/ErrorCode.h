#pragma once

#include <cstdint>
#include <string_view>

namespace qlix::kzm {

/// Every number that the library raises or warns with.
///
/// The numbers 1 to 6 have a second use: an Exception that a caller's stream throws on opening,
/// reading, seeking or telling passes through unchanged and may carry the stream's own number.
enum class ErrorCode : std::uint32_t {
    other = 1,                   ///< neither an Exception nor a std::exception
    shortRead = 5,               ///< the stream ended inside a field
    noMovie = 6,                 ///< no moov, or none behind a leading moof
    noDescriptionList = 7,       ///< descriptions asked of a track without stbl or stsd
    wrongHandler = 8,            ///< handler of a sample or description differs from the track's
    countTooLarge = 9,           ///< entry count or name length above kSanityLimit
    noTimescale = 10,            ///< a timescale is 0
    emptySample = 11,            ///< a sample without size that is no end-of-edit marker
    noSampleTables = 12,         ///< a track lacks stts, stsc, stsz or chunk offsets
    childrenMissing = 14,        ///< the required children of a box are not there
    descriptionTooLarge = 15,    ///< no room left in stsd for a description
    editListFull = 16,           ///< the edit list holds as many rows as were reserved
    tableFull = 17,              ///< more samples than the table capacity
    outOfMemory = 18,            ///< std::bad_alloc where exceptions become numbers
    standardException = 19,      ///< another std::exception there
    badArgument = 20,            ///< a null pointer or an impossible value
    noMovieHeader = 22,          ///< document without mvhd
    chunksOutOfOrder = 23,       ///< first chunks of stsc out of order, or an empty chunk
    noFragmentHeader = 24,       ///< traf without tfhd
    noTrackDefaults = 25,        ///< no trex for a track id
    boxTooShort = 27,            ///< box shorter than its fields, or beyond the end of the file
    noVersionAndFlags = 28,      ///< no room for version and flags
    runTooLarge = 29,            ///< size of the sample table of a trun overflows
    sampleNumberTooLarge = 30,   ///< sample numbers of ctts overflow 32 bits
    tableTooLarge = 31,          ///< entry count of a table above kSanityLimit
    modeReserved = 32,           ///< track added in writer mode 2
    modeUnknown = 33,            ///< track added in an unknown writer mode
    secondMovie = 36,            ///< two moov boxes at different positions
    codecDataTooShort = 37,      ///< codec data too short for a decoder configuration
    noDecoderConfig = 41,        ///< codec data without avcC
    decoderConfigTooLarge = 42,  ///< avcC claims more than the codec data
    notOpen = 48,                ///< the writer is not open
    writeFailed = 1024,          ///< the stream could not take the bytes
    warningRefused = 1028,       ///< the warning callback refused to go on
    unsupportedVersion = 1029,   ///< version of mdhd or dref
    sampleUnreadable = 1030,     ///< the bytes of a sample could not be read in full
    bootstrapWithoutFragment = 1033,  ///< bootstrap pending with no fragment to hold it
    timeWentBack = 1280,              ///< decode time went backwards in a track
    trackAddedTooLate = 1281,         ///< track added after the moov was placed
    unknownTrack = 1283,              ///< track index out of range
    gapTooLong = 1288,                ///< gap between two decode times above 32 bits
    noDescriptionSet = 1289,          ///< no sample description was set for the track
    noTimeOrigin = 1290,              ///< hint time origin unknown
    noFragmentOpen = 1536,            ///< sample written while no fragment is open
    trackNotHinted = 1537,            ///< the hint track doesn't refer to the media track
    secondHintTrack = 1539,           ///< a file has one hint track at most
    noHintTrack = 1540,               ///< fragment begun without a hint track
    secondBootstrap = 1541,           ///< bootstrap set twice for one fragment
    secondRtmpDescription = 1542,     ///< second rtmp description on a track
    trackAddReserved = 2052,          ///< track added while a reserved flag is on

    warnTruncated = 3073,          ///< truncated or misaligned structure
    warnMdatBeyondFile = 3074,     ///< mdat reaches beyond the end of the file
    warnChildBeyondParent = 3075,  ///< child reaches beyond its parent
    warnDescriptionCount = 3076,   ///< stsd holds fewer entries than it says
};

/// Counts of table rows and lengths of names above this are taken for damage.
constexpr std::uint32_t kSanityLimit = 100000000;

constexpr std::uint32_t numberOf(ErrorCode code) { return static_cast<std::uint32_t>(code); }

/// A short English text; "unknown" for a number that is none of the above.
std::string_view meaningOf(ErrorCode code);

/// Whether a writer that raised `number` can be used on: these codes concern one call only.
bool leavesWriterUsable(std::uint32_t number);

/// Throws Exception with the number of `code`.
[[noreturn]] void raise(ErrorCode code);

}  // namespace qlix::kzm
