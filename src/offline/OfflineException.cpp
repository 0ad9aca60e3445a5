#include "offline/OfflineException.h"

#include <utility>

#include <boost/format.hpp>

namespace torvo::offline {
namespace {

constexpr const char* kFileNotFound = " file does not exist";
constexpr const char* kPathNotFile = "Path is not a file ";
constexpr const char* kInputFileNotGiven = "no input file given";
constexpr const char* kInvalidInputFile = "invalid input file ";
constexpr const char* kCantAccessFile = "cannot access input file ";
constexpr const char* kNoSupportedTracks = "Input file does not contain any supported tracks: ";
constexpr const char* kWriterFailed = "KZS writer failed";
constexpr const char* kXmlFailed = "XML Library failed ";
constexpr const char* kUsage = "Usage: %s --input-file=<file> --[setting]=[arg]...";
constexpr const char* kEncryptionInfo = "Not enough information given for encryption: ";
constexpr const char* kFlvLibrary = "Error when reading the FLV ";
constexpr const char* kStdError = "Standard Exception: ";
constexpr const char* kInvalidBootstrap = "Bootstrap file is corrupt";
constexpr const char* kEncryptionLibrary = "Error in the Encryption Library ";
constexpr const char* kInvalidAfra = "Afra Index is corrupt: ";
constexpr const char* kManifestFileNotGiven = "no manifest file given";
constexpr const char* kInternal = "Offline packager has failed internally";

}  // namespace

OfflineException::OfflineException(std::int32_t code, std::string text)
    : text_(std::move(text)), code_(code) {}

OfflineException::~OfflineException() = default;

FileNotFoundException::FileNotFoundException() : OfflineException(1, kFileNotFound) {}
FileNotFoundException::FileNotFoundException(const std::string& path)
    : OfflineException(1, path + kFileNotFound) {}

PathNotFileException::PathNotFileException(const std::string& path)
    : OfflineException(1, kPathNotFile + path) {}

InputFileNotGivenException::InputFileNotGivenException()
    : OfflineException(2, kInputFileNotGiven) {}

InvalidInputFileException::InvalidInputFileException() : OfflineException(3, kInvalidInputFile) {}
InvalidInputFileException::InvalidInputFileException(const std::string& argument)
    : OfflineException(3, kInvalidInputFile + argument) {}

CantAccessFileException::CantAccessFileException() : OfflineException(4, kCantAccessFile) {}
CantAccessFileException::CantAccessFileException(const std::string& path)
    : OfflineException(4, kCantAccessFile + path) {}

NoSupportedTracksException::NoSupportedTracksException(const std::string& path)
    : OfflineException(6, kNoSupportedTracks + path) {}

WriterException::WriterException() : OfflineException(7, kWriterFailed) {}

XMLConfigException::XMLConfigException(const std::string& text)
    : OfflineException(8, kXmlFailed + text) {}

ProgramOptionsException::ProgramOptionsException(const std::string& program)
    : OfflineException(9, (boost::format(kUsage) % program).str()) {}

EncryptionInfoException::EncryptionInfoException(const std::string& text)
    : OfflineException(10, kEncryptionInfo + text) {}

FLVLibraryException::FLVLibraryException() : OfflineException(14, kFlvLibrary) {}
FLVLibraryException::FLVLibraryException(const std::string& text)
    : OfflineException(11, kFlvLibrary + text) {}

StdErrorException::StdErrorException(const std::string& text)
    : OfflineException(12, kStdError + text) {}

InvalidBootstrapException::InvalidBootstrapException() : OfflineException(13, kInvalidBootstrap) {}

EncryptionException::EncryptionException() : OfflineException(11, kEncryptionLibrary) {}
EncryptionException::EncryptionException(const std::string& text)
    : OfflineException(14, kEncryptionLibrary + text) {}

InvalidAfraException::InvalidAfraException(const std::string& text)
    : OfflineException(15, kInvalidAfra + text) {}

ManifestFileNotGivenException::ManifestFileNotGivenException()
    : OfflineException(23, kManifestFileNotGiven) {}

InternalException::InternalException() : OfflineException(999, kInternal) {}

}  // namespace torvo::offline
