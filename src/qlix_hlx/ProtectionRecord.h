#pragma once

#include <string_view>
#include <vector>

#include "qlix_hlx/Der.h"
#include "qlix_hlx/SampleRules.h"
#include "qlix_hlx/qlix_hlx.h"

namespace qlix::hlx {

constexpr std::size_t kMaxPolicySize = 65536;

/// What a license server has to know about a content. Holds views of the caller's bytes.
struct ProtectionRecord {
    std::string_view contentId;
    ByteView keyId;
    std::string_view serverUrl;
    ByteView transportFingerprint;
    std::vector<ByteView> policies;
    EncryptionFlags flags;
    ByteView contentKey;
    std::vector<ByteView> extras;  ///< left out of the bytes when there are none
};

/// Throws Failure for a policy that is empty or too large and for an empty URL.
void checkRecord(const ProtectionRecord& record);

/// The record in DER; docs/protection.md has its layout.
SecretBytes encodeRecord(const ProtectionRecord& record);

/// What a streaming presentation adds.
struct StreamingRecord {
    ByteView policy;
    std::string_view serverUrl;
    std::vector<ByteView> certificateFingerprints;
    const HLXDigestList* digests = nullptr;  ///< may be null
    const HLXTextList* texts = nullptr;      ///< may be null
};

/// The streaming record in DER. Throws Failure for a policy as above and for a list entry without
/// its first text, without a digest, or with another digest than SHA-256.
SecretBytes encodeStreamingRecord(const StreamingRecord& record);

}  // namespace qlix::hlx
