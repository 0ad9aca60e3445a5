#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "kzs/EncryptorContext.h"
#include "kzspkgutil/EncryptedKZSMediaWriterPolicy.h"
#include "offline/OptionMap.h"

namespace torvo::offline {

/// All that a protected job needs beyond a plain one: the encrypted writer policy, the protection
/// metadata and the header of the manifest.
///
/// The encryption library is started before one is made, by hlx::startLibrary; the setup stops it
/// when it goes.
class EncryptionSetup {
public:
    /// Reads all key, certificate and policy files and makes the metadata; nothing is written.
    /// `context` outlives the setup.
    ///
    /// Throws OfflineException classes for files that can't be read and for a level that is none,
    /// hlx::HLXException for what the library refuses, and DRMMetadataGenerationFailed.
    EncryptionSetup(const OptionMap& options, kzspkgutil::IPackagerContext& context);
    ~EncryptionSetup();
    EncryptionSetup(const EncryptionSetup&) = delete;
    EncryptionSetup& operator=(const EncryptionSetup&) = delete;

    kzspkgutil::EncryptedKZSMediaWriterPolicy& policy() const { return *policy_; }
    /// The protection metadata in binary form.
    const std::vector<std::uint8_t>& metadata() const { return metadata_; }
    /// The DRM additional header, which carries the metadata as text.
    const std::vector<std::uint8_t>& additionalHeader() const { return additionalHeader_; }

    /// True if the transport certificate stays valid for 30 more days. Writes when it expires.
    bool certificateStaysValid(std::string& dateText) const;

private:
    kzspkgutil::IPackagerContext* context_;
    std::shared_ptr<kzspkgutil::EncryptedKZSMediaWriterPolicy> policy_;
    kzs::EncryptorContext encryptorContext_;
    std::vector<std::uint8_t> metadata_;
    std::vector<std::uint8_t> additionalHeader_;
    std::string metadataText_;
};

/// The line, with its end, that warns of a certificate which expires at `dateText`.
std::string certificateWarning(const std::string& dateText);

/// Writes the metadata to `output-path`/drmmetadata.bin, in the place of an earlier one. Throws
/// std::ios_base::failure.
void writeDrmMetadataFile(const OptionMap& options, const EncryptionSetup& setup);

}  // namespace torvo::offline
