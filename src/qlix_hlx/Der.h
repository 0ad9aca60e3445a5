#pragma once

#include <cstdint>

#include "qlix_hlx/ByteView.h"
#include "qlix_hlx/Secret.h"

namespace qlix::hlx {

/// Builds one DER value after the other; containers take the bytes of a finished writer. Everything
/// is held in memory that is wiped.
///
///   Der body;
///   body.integer(1).octets(id);
///   const SecretBytes record = Der().sequence(body).bytes();
class Der {
public:
    Der& integer(std::uint32_t value);
    Der& octets(ByteView value);
    Der& sequence(const Der& content);
    /// A constructed value with the context tag `number`, 0 to 30, around `content`.
    Der& tagged(unsigned number, const Der& content);

    const SecretBytes& bytes() const { return bytes_; }

private:
    void value(unsigned tag, ByteView content);

    SecretBytes bytes_;
};

}  // namespace qlix::hlx
