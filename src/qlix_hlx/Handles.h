#pragma once

#include <memory>
#include <string>

#include "qlix_hlx/Credential.h"
#include "qlix_hlx/SampleCipher.h"
#include "qlix_hlx/SampleRules.h"
#include "qlix_hlx/qlix_hlx.h"

namespace qlix::hlx {

/// What a handle points to. The library knows all live ones, so that it can tell a handle from
/// other pointers and wipe their secrets when it stops.
class Object {
public:
    Object();
    virtual ~Object();
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;

    /// Drops what must not outlive the library's stop.
    virtual void wipe() {}

    /// The object of a handle, if it is a live one of the kind T; throws Failure otherwise.
    template <typename T>
    static T& from(void* handle) {
        auto* object = dynamic_cast<T*>(find(handle));
        if (object == nullptr) fail(HLX_ERROR_BAD_HANDLE);
        return *object;
    }
    /// The live object of a handle, or null.
    static Object* find(void* handle);
    static void wipeAll();
};

}  // namespace qlix::hlx

// The handle types of the C interface. `Object` comes first in each, so that a handle is the
// address of its object.

struct QlixHLXCertificate final : qlix::hlx::Object {
    qlix::hlx::X509Ptr certificate;
};

struct QlixHLXCredential final : qlix::hlx::Object {
    void wipe() override { credential = {}; }

    qlix::hlx::Credential credential;  ///< empty once wiped
};

struct QlixHLXMetadata final : qlix::hlx::Object {
    qlix::hlx::SecretBytes bytes;
};

struct QlixHLXEncryptor final : qlix::hlx::Object {
    void wipe() override {
        cipher.reset();
        keys.reset();
    }

    std::string contentId;
    qlix::hlx::EncryptionFlags flags;
    std::unique_ptr<qlix::hlx::ContentKeys> keys;     ///< null once wiped
    std::unique_ptr<qlix::hlx::SampleCipher> cipher;  ///< null once wiped
    bool isAnnounced = false;
    std::uint32_t announcedSize = 0;
    qlix::hlx::SecretBytes streamingRecord;
};
