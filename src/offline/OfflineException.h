#pragma once

#include <cstdint>
#include <string>

namespace torvo::offline {

/// The one family of failures that leave this program. The code is both the number in the error
/// line and the exit status.
///
///   class                        code  text, A the argument
///   FileNotFoundException           1  A" file does not exist"
///   PathNotFileException            1  "Path is not a file "A
///   InputFileNotGivenException      2  "no input file given"
///   InvalidInputFileException       3  "invalid input file "A
///   CantAccessFileException         4  "cannot access input file "A
///   NoSupportedTracksException      6  "Input file does not contain any supported tracks: "A
///   WriterException                 7  "KZS writer failed"
///   XMLConfigException              8  "XML Library failed "A
///   ProgramOptionsException         9  "Usage: "A" --input-file=<file> --[setting]=[arg]..."
///   EncryptionInfoException        10  "Not enough information given for encryption: "A
///   FLVLibraryException      11 or 14  "Error when reading the FLV "A
///   StdErrorException              12  "Standard Exception: "A
///   InvalidBootstrapException      13  "Bootstrap file is corrupt"
///   EncryptionException      14 or 11  "Error in the Encryption Library "A
///   InvalidAfraException           15  "Afra Index is corrupt: "A
///   ManifestFileNotGivenException  23  "no manifest file given"
///   InternalException             999  "Offline packager has failed internally"
///
/// Where an argument is optional its place stays empty without it; on purpose blanks in front of it
/// remain. No failure has the code 5 or one from 16 to 22.
/// Pinned by OfflineExceptionTest.EachClassHasItsCodeAndText.
///
/// On purpose: no base class. A handler for std::exception must not take one of these for a
/// foreign failure. Pinned by OfflineExceptionTest.AHandlerForStandardExceptionsDoesNotSeeIt.
/// Thrown by value, caught by reference.
class OfflineException {
public:
    OfflineException(std::int32_t code, std::string text);
    OfflineException(const OfflineException&) = default;
    OfflineException& operator=(const OfflineException&) = default;
    virtual ~OfflineException();

    const std::string& text() const { return text_; }
    std::int32_t code() const { return code_; }

private:
    std::string text_;
    std::int32_t code_;
};

class FileNotFoundException final : public OfflineException {
public:
    FileNotFoundException();
    explicit FileNotFoundException(const std::string& path);
};

class PathNotFileException final : public OfflineException {
public:
    explicit PathNotFileException(const std::string& path);
};

class InputFileNotGivenException final : public OfflineException {
public:
    InputFileNotGivenException();
};

class InvalidInputFileException final : public OfflineException {
public:
    InvalidInputFileException();
    explicit InvalidInputFileException(const std::string& argument);
};

class CantAccessFileException final : public OfflineException {
public:
    CantAccessFileException();
    explicit CantAccessFileException(const std::string& path);
};

class NoSupportedTracksException final : public OfflineException {
public:
    explicit NoSupportedTracksException(const std::string& path);
};

class WriterException final : public OfflineException {
public:
    WriterException();
};

class XMLConfigException final : public OfflineException {
public:
    explicit XMLConfigException(const std::string& text);
};

class ProgramOptionsException final : public OfflineException {
public:
    explicit ProgramOptionsException(const std::string& program);
};

class EncryptionInfoException final : public OfflineException {
public:
    explicit EncryptionInfoException(const std::string& text);
};

/// On purpose: 11 with a text, 14 without, the reverse of EncryptionException.
/// Pinned by OfflineExceptionTest.TheTwoLibrariesHaveCrossedCodes.
class FLVLibraryException final : public OfflineException {
public:
    FLVLibraryException();
    explicit FLVLibraryException(const std::string& text);
};

class StdErrorException final : public OfflineException {
public:
    explicit StdErrorException(const std::string& text);
};

class InvalidBootstrapException final : public OfflineException {
public:
    InvalidBootstrapException();
};

/// On purpose: 14 with a text, 11 without, the reverse of FLVLibraryException.
/// Pinned by OfflineExceptionTest.TheTwoLibrariesHaveCrossedCodes.
class EncryptionException final : public OfflineException {
public:
    EncryptionException();
    explicit EncryptionException(const std::string& text);
};

class InvalidAfraException final : public OfflineException {
public:
    explicit InvalidAfraException(const std::string& text);
};

class ManifestFileNotGivenException final : public OfflineException {
public:
    ManifestFileNotGivenException();
};

class InternalException final : public OfflineException {
public:
    InternalException();
};

}  // namespace torvo::offline
