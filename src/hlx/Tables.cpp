#include "hlx/Tables.h"

namespace hlx {
namespace {

const HLXEncryptorTable* encryptors = nullptr;
const HLXMetadataTable* metadatas = nullptr;
const HLXRegistrationTable* registrations = nullptr;

}  // namespace

const HLXEncryptorTable& encryptorTable() {
    if (encryptors == nullptr) {
        encryptors = fetchTable(HLX_GetEncryptorInterface, kEncryptorVersion);
    }
    return *encryptors;
}

const HLXMetadataTable& metadataTable() {
    if (metadatas == nullptr) metadatas = fetchTable(HLX_GetMetadataInterface, kMetadataVersion);
    return *metadatas;
}

const HLXRegistrationTable& registrationTable() {
    if (registrations == nullptr) {
        registrations = fetchTable(HLX_GetRegistrationInterface, kRegistrationVersion);
    }
    return *registrations;
}

}  // namespace hlx
