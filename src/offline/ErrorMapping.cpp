#include "offline/ErrorMapping.h"

#include <exception>

#include <boost/filesystem/exception.hpp>

#include "flv/Exception.h"
#include "hlx/HLXException.h"
#include "kzm/Exception.h"
#include "kzspkgutil/model/KZSPkgUtilException.h"
#include "offline/OfflineException.h"

namespace torvo::offline {
namespace {

enum class BoxFailure { notFound, noAccess, badInput, badEsds, badAvcc, writer };

struct BoxFailureRange {
    std::uint32_t first;
    std::uint32_t last;
    BoxFailure failure;
};

// On purpose: the table is by number and crosses meanings. An unopened writer (48) and a full
// edit list (16) are the input's fault, an unreadable sample (1030) and an unsupported version
// (1029) are the writer's, a short read (5) is a lack of access, and what isn't listed, as 1033 and
// the numbers from 1280 on, is internal. Pinned by
// ErrorMappingTest.EveryNumberOfTheBoxLibraryHasItsClass.
constexpr BoxFailureRange kBoxFailures[] = {
    {2, 3, BoxFailure::notFound},       {4, 5, BoxFailure::noAccess},
    {6, 17, BoxFailure::badInput},      {20, 20, BoxFailure::badInput},
    {22, 28, BoxFailure::badInput},     {30, 31, BoxFailure::badInput},
    {32, 36, BoxFailure::writer},       {37, 37, BoxFailure::badInput},
    {38, 39, BoxFailure::badEsds},      {40, 46, BoxFailure::badAvcc},
    {47, 48, BoxFailure::badInput},     {1024, 1030, BoxFailure::writer},
    {3077, 3077, BoxFailure::badInput},
};

[[noreturn]] void throwBoxFailure(BoxFailure failure) {
    switch (failure) {
        case BoxFailure::notFound:
            throw FileNotFoundException();
        case BoxFailure::noAccess:
            throw CantAccessFileException();
        case BoxFailure::badInput:
            throw InvalidInputFileException();
        case BoxFailure::badEsds:
            // On purpose: spelled so.
            // Pinned by ErrorMappingTest.EveryNumberOfTheBoxLibraryHasItsClass.
            throw InvalidInputFileException("Invlaid ESDS Box");
        case BoxFailure::badAvcc:
            throw InvalidInputFileException("Invalid AVCC box");
        case BoxFailure::writer:
            throw WriterException();
    }
    throw InternalException();
}

}  // namespace

void translateFailures(const std::function<void()>& step) {
    // The last class is a base of all the others, so the order counts.
    try {
        step();
    } catch (const qlix::kzm::Exception& failure) {
        throwBoxLibraryFailure(failure.code());
    } catch (const hlx::HLXException& failure) {
        throwEncryptionLibraryFailure(failure.code());
    } catch (const flv::Exception& failure) {
        throwFlvLibraryFailure(failure.code());
    } catch (const kzspkgutil::KZSPkgUtilFileException& failure) {
        throwPipelineFileFailure(failure.code(), failure.path());
    } catch (const boost::filesystem::filesystem_error&) {
        throw CantAccessFileException();
    } catch (const std::exception& failure) {
        throw StdErrorException(failure.what());
    }
}

void throwBoxLibraryFailure(std::uint32_t code) {
    for (const BoxFailureRange& range : kBoxFailures) {
        if (code >= range.first && code <= range.last) throwBoxFailure(range.failure);
    }
    throw InternalException();
}

void throwEncryptionLibraryFailure(std::uint32_t code) {
    if (code == hlx::kNotIdentifiedCode) throw EncryptionException("Certificate not Identified");
    throw EncryptionException();
}

void throwFlvLibraryFailure(std::uint32_t code) {
    if (code == flv::Exception::kCorruptData)
        throw FLVLibraryException("A TCMessage has corrupt data.");
    throw FLVLibraryException();
}

void throwPipelineFileFailure(std::uint32_t code, const std::string& path) {
    switch (code) {
        case kzspkgutil::kFileMissing:
            throw FileNotFoundException(path);
        case kzspkgutil::kFileInaccessible:
            throw CantAccessFileException(path);
        case kzspkgutil::kNoSupportedTracks:
            throw NoSupportedTracksException(path);
        default:
            throw InternalException();
    }
}

}  // namespace torvo::offline
