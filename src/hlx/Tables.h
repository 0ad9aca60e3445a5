#pragma once

#include <cstdint>

#include "hlx/HLXException.h"

namespace hlx {

constexpr std::uintptr_t kEncryptorVersion = 11;
constexpr std::uintptr_t kMetadataVersion = 5;
constexpr std::uintptr_t kRegistrationVersion = 6;

/// The table that `getInterface` gives out. Throws HLXException with code 1 when it answers another
/// result than 0, gives out null, or a table of a version below `minVersion`.
template <typename Table>
const Table* fetchTable(HLXResult (*getInterface)(const Table**), std::uintptr_t minVersion) {
    const Table* table = nullptr;
    if (getInterface(&table) != HLX_OK || table == nullptr || table->version < minVersion) {
        throw HLXException(kTableCode);
    }
    return table;
}

/// The tables of the library. Each is fetched at its first use and kept for the process; a failed
/// fetch leaves it unset. Throw as fetchTable does.
const HLXEncryptorTable& encryptorTable();
const HLXMetadataTable& metadataTable();
const HLXRegistrationTable& registrationTable();

}  // namespace hlx
