#pragma once

#include <iosfwd>

#include "kvl/KVLException.h"

namespace torvo::kzs {

struct AfraIndex;

/// An `afra` box that can't be read, for whatever reason.
class InvalidAfraFormat : public kvl::KVLException {
public:
    InvalidAfraFormat();
};

/// Reads the `afra` box at the stream's position; `index` is replaced, or left alone on failure.
///
/// The time scale of every entry is 1000 whatever the box says. The stream's exception setting is
/// put back. Throws InvalidAfraFormat, also where the stream ends early.
void readAfra(std::istream& stream, AfraIndex& index);

}  // namespace torvo::kzs
