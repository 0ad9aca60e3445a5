#include "kzm/ErrorCode.h"

#include <algorithm>
#include <string>

#include "kzm/Exception.h"

namespace qlix::kzm {
namespace {

struct Meaning {
    ErrorCode code;
    std::string_view text;
};

constexpr Meaning kMeanings[] = {
    {ErrorCode::other, "other failure"},
    {ErrorCode::shortRead, "short read"},
    {ErrorCode::noMovie, "no moov"},
    {ErrorCode::noDescriptionList, "no description list"},
    {ErrorCode::wrongHandler, "handler differs from the track's"},
    {ErrorCode::countTooLarge, "entry count or name length too large"},
    {ErrorCode::noTimescale, "timescale 0"},
    {ErrorCode::emptySample, "sample without size"},
    {ErrorCode::noSampleTables, "sample tables missing"},
    {ErrorCode::childrenMissing, "required children missing"},
    {ErrorCode::descriptionTooLarge, "no room for the description"},
    {ErrorCode::editListFull, "edit list full"},
    {ErrorCode::tableFull, "sample tables full"},
    {ErrorCode::outOfMemory, "out of memory"},
    {ErrorCode::standardException, "standard exception"},
    {ErrorCode::badArgument, "bad argument"},
    {ErrorCode::noMovieHeader, "no mvhd"},
    {ErrorCode::chunksOutOfOrder, "chunks out of order"},
    {ErrorCode::noFragmentHeader, "traf without tfhd"},
    {ErrorCode::noTrackDefaults, "no trex for the track"},
    {ErrorCode::boxTooShort, "box too short"},
    {ErrorCode::noVersionAndFlags, "no room for version and flags"},
    {ErrorCode::runTooLarge, "sample table of a run too large"},
    {ErrorCode::sampleNumberTooLarge, "sample number too large"},
    {ErrorCode::tableTooLarge, "table too large"},
    {ErrorCode::modeReserved, "reserved writer mode"},
    {ErrorCode::modeUnknown, "unknown writer mode"},
    {ErrorCode::secondMovie, "second moov"},
    {ErrorCode::codecDataTooShort, "codec data too short"},
    {ErrorCode::noDecoderConfig, "no avcC"},
    {ErrorCode::decoderConfigTooLarge, "avcC too large"},
    {ErrorCode::notOpen, "writer not open"},
    {ErrorCode::writeFailed, "write failed"},
    {ErrorCode::warningRefused, "warning refused"},
    {ErrorCode::unsupportedVersion, "unsupported version"},
    {ErrorCode::sampleUnreadable, "sample data unreadable"},
    {ErrorCode::bootstrapWithoutFragment, "bootstrap without a fragment"},
    {ErrorCode::timeWentBack, "decode time went backwards"},
    {ErrorCode::trackAddedTooLate, "track added after the moov was written"},
    {ErrorCode::unknownTrack, "unknown track"},
    {ErrorCode::gapTooLong, "gap between decode times too long"},
    {ErrorCode::noDescriptionSet, "no sample description set"},
    {ErrorCode::noTimeOrigin, "hint time origin unknown"},
    {ErrorCode::noFragmentOpen, "no fragment open"},
    {ErrorCode::trackNotHinted, "track not referenced by the hint track"},
    {ErrorCode::secondHintTrack, "second hint track"},
    {ErrorCode::noHintTrack, "no hint track"},
    {ErrorCode::secondBootstrap, "second bootstrap for one fragment"},
    {ErrorCode::secondRtmpDescription, "second rtmp description"},
    {ErrorCode::trackAddReserved, "tracks can't be added"},
    {ErrorCode::warnTruncated, "truncated or misaligned structure"},
    {ErrorCode::warnMdatBeyondFile, "mdat beyond the end of the file"},
    {ErrorCode::warnChildBeyondParent, "child beyond its parent"},
    {ErrorCode::warnDescriptionCount, "fewer descriptions than counted"},
};

struct Range {
    std::uint32_t first;
    std::uint32_t last;
};

constexpr Range kOneCallOnly[] = {{0, 0},       {8, 8},       {10, 11},     {15, 15},
                                  {20, 20},     {32, 33},     {1030, 1030}, {1280, 1290},
                                  {1536, 1542}, {2048, 2053}, {3072, 3072}};

}  // namespace

std::string_view meaningOf(ErrorCode code) {
    const auto* found = std::find_if(std::begin(kMeanings), std::end(kMeanings),
                                     [code](const Meaning& row) { return row.code == code; });
    return found == std::end(kMeanings) ? std::string_view("unknown") : found->text;
}

bool leavesWriterUsable(std::uint32_t number) {
    return std::any_of(std::begin(kOneCallOnly), std::end(kOneCallOnly),
                       [number](Range r) { return r.first <= number && number <= r.last; });
}

void raise(ErrorCode code) {
    // On purpose: the text is made and dropped; callers work with the number alone.
    // Pinned by ExceptionTest.CarriesTheNumberAndNoTextOfItsOwn.
    const std::string dropped = "kzm error:" + std::to_string(numberOf(code));
    static_cast<void>(dropped);
    throw Exception(numberOf(code));
}

}  // namespace qlix::kzm
