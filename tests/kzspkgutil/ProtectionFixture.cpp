#include "ProtectionFixture.h"

#include "hlx/DRMRegistration.h"
#include "support/TestPki.h"

namespace torvo::kzspkgutil::test {
namespace {

using kz::test::KeyKind;

kz::test::Bytes certificate(int number) {
    kz::test::CertificateSpec spec;
    spec.key = KeyKind::p256;
    spec.keyNumber = number;
    return kz::test::makeCertificate(spec);
}

}  // namespace

kz::test::Bytes contentKey() { return kz::test::hex("ca9ac0898d52db13b9af74117f78ee31"); }

FixedEncryptorContext::FixedEncryptorContext() : serverDer_(certificate(2)) {
    hlx::startLibrary();
    const auto key = kz::test::hex("000102030405060708090a0b0c0d0e0f");
    key_.assign(key.begin(), key.end());
    const hlx::DRMRegistration registration;
    const kz::test::Bytes transportDer = certificate(1);
    transportFingerprint_ = kz::test::sha256(transportDer);
    transport_ = registration.certificate(transportDer);
    server_ = registration.certificate(serverDer_);
    const auto pfx = kz::test::makePfx(kz::test::testKey(KeyKind::p256, 3), certificate(3));
    packager_ = registration.credential(hlx::SecretBytes(pfx.begin(), pfx.end()), "secret");
}

FixedEncryptorContext::~FixedEncryptorContext() {
    HLXRelease(transport_);
    HLXRelease(server_);
    HLXRelease(packager_);
    hlx::stopLibrary();
}

kz::test::OpenedMetadata FixedEncryptorContext::open(const Blob& metadata) const {
    return kz::test::openMetadata(kz::test::bytesOf(metadata.data(), metadata.size()),
                                  kz::test::testKey(KeyKind::p256, 2), serverDer_);
}

}  // namespace torvo::kzspkgutil::test
