#include "qlix_hlx/ProtectionRecord.h"

#include "qlix_hlx/Failure.h"

namespace qlix::hlx {
namespace {

constexpr std::uint32_t kRecordVersion = 1;
constexpr std::string_view kSha256Oid = "2.16.840.1.101.3.4.2.1";

void checkPolicy(ByteView policy) {
    if (policy.size == 0) fail(HLX_ERROR_POLICY_EMPTY);
    if (policy.size > kMaxPolicySize) fail(HLX_ERROR_POLICY_TOO_LARGE);
}

Der octetsOf(const std::vector<ByteView>& values) {
    Der list;
    for (const ByteView& value : values) list.octets(value);
    return list;
}

Der encodeFlags(const EncryptionFlags& flags) {
    Der words;
    words.integer(flags.video).integer(flags.audio).integer(flags.data);
    words.integer(flags.videoLevel).integer(flags.msUnencrypted);
    return words;
}

Der encodeDigest(const HLXDigestEntry& entry) {
    if (entry.digestOid == nullptr || entry.digest == nullptr || entry.reserved != nullptr ||
        (entry.digest->data == nullptr && entry.digest->size > 0)) {
        fail(HLX_ERROR_BAD_ARGUMENT);
    }
    if (std::string_view(entry.digestOid, entry.digestOidSize) != kSha256Oid) {
        fail(HLX_ERROR_UNKNOWN_DIGEST);
    }
    Der fields;
    fields.integer(entry.word).octets(viewOf(kSha256Oid));
    fields.octets({entry.digest->data, entry.digest->size});
    return fields;
}

Der encodeTexts(const HLXTextEntry& entry) {
    if (entry.texts[0] == nullptr) fail(HLX_ERROR_BAD_ARGUMENT);
    Der fields;
    for (unsigned i = 0; i < 4; ++i) {
        if (entry.texts[i] != nullptr) fields.tagged(i, Der().octets(viewOf(entry.texts[i])));
    }
    return fields;
}

}  // namespace

void checkRecord(const ProtectionRecord& record) {
    if (record.serverUrl.empty()) fail(HLX_ERROR_SERVER_URL_EMPTY);
    if (record.policies.empty()) fail(HLX_ERROR_POLICY_EMPTY);
    for (const ByteView& policy : record.policies) checkPolicy(policy);
}

SecretBytes encodeRecord(const ProtectionRecord& record) {
    Der fields;
    fields.integer(kRecordVersion)
        .octets(viewOf(record.contentId))
        .octets(record.keyId)
        .octets(viewOf(record.serverUrl))
        .octets(record.transportFingerprint)
        .sequence(octetsOf(record.policies))
        .sequence(encodeFlags(record.flags))
        .octets(record.contentKey);
    if (!record.extras.empty()) fields.tagged(0, octetsOf(record.extras));
    return Der().sequence(fields).bytes();
}

SecretBytes encodeStreamingRecord(const StreamingRecord& record) {
    checkPolicy(record.policy);
    Der digests;
    for (std::uint32_t i = 0; record.digests != nullptr && i < record.digests->count; ++i) {
        digests.sequence(encodeDigest(record.digests->entries[i]));
    }
    Der texts;
    for (std::uint32_t i = 0; record.texts != nullptr && i < record.texts->count; ++i) {
        texts.sequence(encodeTexts(record.texts->entries[i]));
    }
    Der fields;
    fields.integer(kRecordVersion)
        .octets(viewOf(record.serverUrl))
        .octets(record.policy)
        .sequence(octetsOf(record.certificateFingerprints))
        .sequence(digests)
        .sequence(texts);
    return Der().sequence(fields).bytes();
}

}  // namespace qlix::hlx
