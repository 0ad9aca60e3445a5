#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <malloc.h>
#include <new>
#include <vector>

#include <openssl/crypto.h>

#include "qlix_hlx/LibraryFixture.h"
#include "support/TestLicenseServer.h"

namespace {

/// Allocations that still succeed; below 0 all do.
long allocationsLeft = -1;

void* allocate(std::size_t size) {
    if (allocationsLeft == 0) throw std::bad_alloc();
    if (allocationsLeft > 0) --allocationsLeft;
    void* memory = std::malloc(size == 0 ? 1 : size);
    if (memory == nullptr) throw std::bad_alloc();
    return memory;
}

/// Bytes that mustn't stand in memory that goes back; null: nothing is looked for.
const kz::test::Bytes* secret = nullptr;
long secretsFreed = 0;

void release(void* memory) {
    if (secret != nullptr && memory != nullptr &&
        memmem(memory, malloc_usable_size(memory), secret->data(), secret->size()) != nullptr) {
        ++secretsFreed;
    }
    std::free(memory);
}

void* allocateForOpenSsl(std::size_t size, const char* /*file*/, int /*line*/) {
    return std::malloc(size);
}
void releaseForOpenSsl(void* memory, const char* /*file*/, int /*line*/) { release(memory); }
void* moveForOpenSsl(void* memory, std::size_t size, const char* /*file*/, int /*line*/) {
    void* moved = std::malloc(size);
    if (moved == nullptr || memory == nullptr) return moved;
    std::memcpy(moved, memory, std::min(size, malloc_usable_size(memory)));
    release(memory);
    return moved;
}

/// OpenSSL takes them only before it has allocated anything.
const int openSslIsWatched =
    CRYPTO_set_mem_functions(allocateForOpenSsl, moveForOpenSsl, releaseForOpenSsl);

}  // namespace

// For the whole test program: memory of C++ can be made to run out. That of OpenSSL can't.
void* operator new(std::size_t size) { return allocate(size); }
void* operator new[](std::size_t size) { return allocate(size); }
void operator delete(void* memory) noexcept { release(memory); }
void operator delete[](void* memory) noexcept { release(memory); }
void operator delete(void* memory, std::size_t) noexcept { release(memory); }
void operator delete[](void* memory, std::size_t) noexcept { release(memory); }

namespace qlix::hlx {
namespace {

using kz::test::Bytes;
using kz::test::CertificateSpec;
using kz::test::KeyKind;

class AllocationTest : public LibraryTest {
protected:
    /// Lets `call` run out of memory at its first allocation, its second, and so on, until it gets
    /// through. Nothing may leave it but the result.
    template <typename Call>
    static void expectOutOfMemory(Call call) {
        long allowed = 0;
        HLXResult result = HLX_ERROR_OUT_OF_MEMORY;
        for (; result == HLX_ERROR_OUT_OF_MEMORY && allowed < 1000; ++allowed) {
            allocationsLeft = allowed;
            result = call();
            allocationsLeft = -1;
        }
        EXPECT_EQ(result, HLX_OK);
        EXPECT_GT(allowed, 1) << "nothing was allocated";
    }
    static CertificateSpec spec(int number) {
        CertificateSpec result;
        result.key = KeyKind::p256;
        result.keyNumber = number;
        return result;
    }
};

TEST_F(AllocationTest, CreateAnswersThatMemoryIsOut) {
    QlixHLXEncryptor* encryptor = nullptr;
    const std::string contentId(100, 'x');
    const Flags flags;
    expectOutOfMemory([&] { return create(&encryptor, kCommonKey, contentId, flags); });
    HLXRelease(encryptor);
}

TEST_F(AllocationTest, CertificatesAndCredentialsAnswerThatMemoryIsOut) {
    const Bytes der = kz::test::makeCertificate(spec(1));
    const Bytes pfx = kz::test::makePfx(kz::test::testKey(KeyKind::p256, 1), der);
    const std::string password = "secret";
    QlixHLXCertificate* certificate = nullptr;
    expectOutOfMemory([&] { return readCertificate(der, &certificate); });
    QlixHLXCredential* credential = nullptr;
    expectOutOfMemory([&] { return readCredential(pfx, password, &credential); });
    HLXRelease(certificate);
    HLXRelease(credential);
}

TEST_F(AllocationTest, MetadataAnswersThatMemoryIsOut) {
    QlixHLXEncryptor* encryptor = makeEncryptor();
    QlixHLXCertificate* certificate = makeCertificate(spec(1));
    QlixHLXCredential* credential = makeCredential(spec(2));
    const HLXBlob policy{reinterpret_cast<const std::uint8_t*>("p"), 1};
    const HLXBlobArray policies{&policy, 1};
    QlixHLXMetadata* metadata = nullptr;
    expectOutOfMemory([&] {
        return encryptors->generateMetadata(encryptor, "u", 1, certificate, certificate, credential,
                                            &policies, 0, 1, nullptr, nullptr, nullptr, &metadata);
    });
    HLXBlob record{};
    expectOutOfMemory([&] {
        return encryptors->prepareStreaming(encryptor, nullptr, &policy, nullptr, nullptr, nullptr,
                                            "u", credential, 1, &certificate, 1, nullptr, nullptr,
                                            &record, nullptr);
    });
    HLXRelease(metadata);
    HLXRelease(credential);
    HLXRelease(certificate);
    HLXRelease(encryptor);
}

// Samples come by the thousand: none of them may cost an allocation.
TEST_F(AllocationTest, ASampleAllocatesNothing) {
    QlixHLXEncryptor* encryptor = makeEncryptor();
    const Bytes sample(1000, 7);
    Bytes output(1008);
    std::uint8_t iv[16];
    allocationsLeft = 0;
    HLXEncryptionInfo info{};
    const HLXResult prepared = encryptors->prepareSample(
        encryptor, sample.data(), 1000, HLX_TRACK_VIDEO, 0, nullptr, nullptr, &info, 0, 4);
    std::uint32_t outputSize = 1008;
    std::uint32_t ivSize = 16;
    const HLXResult encrypted =
        encryptors->encrypt(encryptor, sample.data(), 1000, output.data(), &outputSize, nullptr,
                            nullptr, nullptr, nullptr, iv, &ivSize);
    allocationsLeft = -1;
    EXPECT_EQ(prepared, HLX_OK);
    EXPECT_EQ(encrypted, HLX_OK);
    HLXRelease(encryptor);
}

// Neither our memory nor that of OpenSSL, which holds the messages while they are made.
TEST_F(AllocationTest, FreedMemoryHoldsNoSecret) {
    ASSERT_EQ(openSslIsWatched, 1);
    const std::string password = "open sesame 4711";
    kz::test::PfxSpec pfxSpec;
    pfxSpec.password = password;
    const Bytes der = kz::test::makeCertificate(spec(1));
    const Bytes pfx = kz::test::makePfx(kz::test::testKey(KeyKind::p256, 1), der, pfxSpec);
    const HLXBlob policy{reinterpret_cast<const std::uint8_t*>("p"), 1};
    const HLXBlobArray policies{&policy, 1};
    // The keys are those of the common key and content id of the fixture, by openssl kdf.
    const struct {
        const char* name;
        Bytes bytes;
    } secrets[] = {{"content key", kz::test::hex("ca9ac0898d52db13b9af74117f78ee31")},
                   {"iv key", kz::test::hex("1a18a49a208133cfefd43e1cfcbe4fda")},
                   {"common key", kCommonKey},
                   {"password", kz::test::text(password)}};
    for (const auto& watched : secrets) {
        secretsFreed = 0;
        secret = &watched.bytes;
        { const std::vector<std::uint8_t> careless(watched.bytes.begin(), watched.bytes.end()); }
        EXPECT_EQ(secretsFreed, 1) << "the test is blind";

        secretsFreed = 0;
        QlixHLXEncryptor* encryptor = makeEncryptor();
        QlixHLXCertificate* certificate = nullptr;
        EXPECT_EQ(readCertificate(der, &certificate), HLX_OK);
        QlixHLXCredential* credential = nullptr;
        EXPECT_EQ(readCredential(pfx, password, &credential), HLX_OK);
        QlixHLXMetadata* metadata = nullptr;
        EXPECT_EQ(
            encryptors->generateMetadata(encryptor, "u", 1, certificate, certificate, credential,
                                         &policies, 0, 1, nullptr, nullptr, nullptr, &metadata),
            HLX_OK);
        for (void* handle : {static_cast<void*>(metadata), static_cast<void*>(credential),
                             static_cast<void*>(certificate), static_cast<void*>(encryptor)}) {
            EXPECT_EQ(HLXRelease(handle), HLX_OK);
        }
        secret = nullptr;
        EXPECT_EQ(secretsFreed, 0) << watched.name;
    }
}

}  // namespace
}  // namespace qlix::hlx
