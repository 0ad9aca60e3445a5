#pragma once

#include <openssl/pkcs12.h>

namespace qlix::hlx {

/// A PFX says how often a password is hashed for its check and for each of its encrypted parts, up
/// to hours of work. Files of today ask for some thousands each.

/// Throws Failure for a file that asks for too much outside of its encrypted parts. Needs no
/// password.
void checkCost(const PKCS12* pfx);

/// The same for what its encrypted parts hold, which this decrypts. False when that fails.
bool checkCostInside(const PKCS12* pfx, const char* password);

}  // namespace qlix::hlx
