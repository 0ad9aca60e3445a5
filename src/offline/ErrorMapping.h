#pragma once

#include <cstdint>
#include <functional>
#include <string>

namespace torvo::offline {

/// Runs `step` and turns what it throws into the OfflineException family, which itself passes
/// untouched:
///
///   thrown                        becomes
///   qlix::kzm::Exception          see throwBoxLibraryFailure
///   hlx::HLXException             see throwEncryptionLibraryFailure
///   flv::Exception                see throwFlvLibraryFailure
///   KZSPkgUtilFileException       see throwPipelineFileFailure
///   filesystem_error              CantAccessFileException
///   other standard exceptions     StdErrorException with their text
void translateFailures(const std::function<void()>& step);

/// By the number of a failure of the box library:
///
///   code                           class
///   2, 3                           FileNotFoundException
///   4, 5                           CantAccessFileException
///   6-17, 20, 22-28, 30, 31,
///   37, 47, 48, 3077               InvalidInputFileException
///   32-36, 1024-1030               WriterException
///   38, 39                         InvalidInputFileException "Invlaid ESDS Box"
///   40-46                          InvalidInputFileException "Invalid AVCC box"
///   others                         InternalException
[[noreturn]] void throwBoxLibraryFailure(std::uint32_t code);

/// hlx::kNotIdentifiedCode, 0, means that a certificate could not be identified; the other codes
/// aren't told apart.
[[noreturn]] void throwEncryptionLibraryFailure(std::uint32_t code);

/// flv::Exception::kCorruptData means damaged tags; the other codes aren't told apart.
[[noreturn]] void throwFlvLibraryFailure(std::uint32_t code);

/// By the code of a file failure of the pipeline:
///
///   code                              class
///   kzspkgutil::kFileMissing          FileNotFoundException
///   kzspkgutil::kFileInaccessible     CantAccessFileException
///   kzspkgutil::kNoSupportedTracks    NoSupportedTracksException
///   others                            InternalException
[[noreturn]] void throwPipelineFileFailure(std::uint32_t code, const std::string& path);

}  // namespace torvo::offline
