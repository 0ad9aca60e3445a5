#include "qlix_hlx/CredentialCost.h"

#include <cstdint>
#include <initializer_list>
#include <memory>

#include <openssl/asn1t.h>
#include <openssl/pkcs7.h>
#include <openssl/x509.h>

#include "qlix_hlx/OpenSslPtr.h"

namespace qlix::hlx {
namespace {

using Bags = STACK_OF(PKCS12_SAFEBAG);

struct FreeBags {
    void operator()(Bags* bags) const { sk_PKCS12_SAFEBAG_pop_free(bags, PKCS12_SAFEBAG_free); }
};
using BagsPtr = std::unique_ptr<Bags, FreeBags>;

struct FreeSafes {
    void operator()(STACK_OF(PKCS7) * safes) const { sk_PKCS7_pop_free(safes, PKCS7_free); }
};
using SafesPtr = std::unique_ptr<STACK_OF(PKCS7), FreeSafes>;

/// The parameters of an algorithm; null when they are of another form.
template <typename Parameters, auto Free>
std::unique_ptr<Parameters, FreeWith<Free>> parametersOf(const X509_ALGOR* algorithm,
                                                         const ASN1_ITEM* form) {
    return std::unique_ptr<Parameters, FreeWith<Free>>(
        static_cast<Parameters*>(ASN1_TYPE_unpack_sequence(form, algorithm->parameter)));
}

std::uint64_t numberOf(const ASN1_INTEGER* number) {
    std::uint64_t value = 1;
    if (number != nullptr && ASN1_INTEGER_get_uint64(&value, number) != 1) value = UINT64_MAX;
    return value;
}

/// What the parts of a file ask for, together.
class Cost {
public:
    void addRounds(const ASN1_INTEGER* rounds) { add(numberOf(rounds), kMostRounds); }

    /// A way to encrypt by a password. One that isn't known here isn't to OpenSSL either.
    void addEncryption(const X509_ALGOR* algorithm) {
        if (OBJ_obj2nid(algorithm->algorithm) != NID_pbes2) {
            const auto old =
                parametersOf<PBEPARAM, PBEPARAM_free>(algorithm, ASN1_ITEM_rptr(PBEPARAM));
            if (old != nullptr) addRounds(old->iter);
            return;
        }
        const auto scheme =
            parametersOf<PBE2PARAM, PBE2PARAM_free>(algorithm, ASN1_ITEM_rptr(PBE2PARAM));
        if (scheme != nullptr) addDerivation(scheme->keyfunc);
    }

    void addBags(const Bags* bags) {
        for (int i = 0; bags != nullptr && i < sk_PKCS12_SAFEBAG_num(bags); ++i) {
            const PKCS12_SAFEBAG* bag = sk_PKCS12_SAFEBAG_value(bags, i);
            if (PKCS12_SAFEBAG_get_nid(bag) == NID_pkcs8ShroudedKeyBag) {
                const X509_ALGOR* algorithm = nullptr;
                X509_SIG_get0(PKCS12_SAFEBAG_get0_pkcs8(bag), &algorithm, nullptr);
                addEncryption(algorithm);
            } else if (PKCS12_SAFEBAG_get_nid(bag) == NID_safeContentsBag) {
                addBags(PKCS12_SAFEBAG_get0_safes(bag));
            }
        }
    }

private:
    static constexpr std::uint64_t kMostRounds = 1'000'000;
    /// Of all parts: a file may have many.
    static constexpr std::uint64_t kMostInAll = 4 * kMostRounds;
    /// Blocks of 128 bytes that scrypt hashes; 2^17 is usual.
    static constexpr std::uint64_t kMostBlocks = 1 << 21;

    void add(std::uint64_t amount, std::uint64_t most) {
        if (amount > most || amount > kMostInAll - total_) fail(HLX_ERROR_CREDENTIAL_UNREADABLE);
        total_ += amount;
    }

    void addDerivation(const X509_ALGOR* derivation) {
        if (OBJ_obj2nid(derivation->algorithm) == NID_id_pbkdf2) {
            const auto rounds = parametersOf<PBKDF2PARAM, PBKDF2PARAM_free>(
                derivation, ASN1_ITEM_rptr(PBKDF2PARAM));
            if (rounds != nullptr) addRounds(rounds->iter);
        } else if (OBJ_obj2nid(derivation->algorithm) == NID_id_scrypt) {
            const auto blocks = parametersOf<SCRYPT_PARAMS, SCRYPT_PARAMS_free>(
                derivation, ASN1_ITEM_rptr(SCRYPT_PARAMS));
            if (blocks == nullptr) return;
            std::uint64_t product = 1;
            for (const ASN1_INTEGER* factor :
                 {blocks->costParameter, blocks->blockSize, blocks->parallelizationParameter}) {
                const std::uint64_t value = numberOf(factor);
                if (value > kMostBlocks) fail(HLX_ERROR_CREDENTIAL_UNREADABLE);
                product *= value == 0 ? 1 : value;
                if (product > kMostBlocks) fail(HLX_ERROR_CREDENTIAL_UNREADABLE);
            }
            add(product, kMostBlocks);
        }
    }

    std::uint64_t total_ = 0;
};

bool isEncrypted(const PKCS7* safe) { return OBJ_obj2nid(safe->type) == NID_pkcs7_encrypted; }

}  // namespace

void checkCost(const PKCS12* pfx) {
    Cost cost;
    const ASN1_INTEGER* rounds = nullptr;
    PKCS12_get0_mac(nullptr, nullptr, nullptr, &rounds, pfx);
    cost.addRounds(rounds);
    const SafesPtr safes(PKCS12_unpack_authsafes(pfx));
    for (int i = 0; safes != nullptr && i < sk_PKCS7_num(safes.get()); ++i) {
        PKCS7* safe = sk_PKCS7_value(safes.get(), i);
        if (isEncrypted(safe)) {
            cost.addEncryption(safe->d.encrypted->enc_data->algorithm);
        } else if (OBJ_obj2nid(safe->type) == NID_pkcs7_data) {
            cost.addBags(BagsPtr(PKCS12_unpack_p7data(safe)).get());
        }
    }
}

bool checkCostInside(const PKCS12* pfx, const char* password) {
    Cost cost;
    const SafesPtr safes(PKCS12_unpack_authsafes(pfx));
    for (int i = 0; safes != nullptr && i < sk_PKCS7_num(safes.get()); ++i) {
        PKCS7* safe = sk_PKCS7_value(safes.get(), i);
        if (!isEncrypted(safe)) continue;
        const BagsPtr bags(PKCS12_unpack_p7encdata(safe, password, -1));
        if (bags == nullptr) return false;
        cost.addBags(bags.get());
    }
    return true;
}

}  // namespace qlix::hlx
