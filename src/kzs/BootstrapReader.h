#pragma once

#include <iosfwd>

#include "kvl/KVLException.h"

namespace torvo::kzs {

struct BootstrapInfo;

/// An `abst` box that can't be read, for whatever reason.
class InvalidBootstrapFormat : public kvl::KVLException {
public:
    InvalidBootstrapFormat();
};

/// Reads the `abst` box at the stream's position; `info` is replaced, or left alone on failure.
///
/// Box sizes are not looked at: the counts tell how far the content goes. The time scale of every
/// timestamp is 1000 whatever the tables say. The stream's exception setting is put back.
/// Throws InvalidBootstrapFormat, also where the stream ends early.
void readBootstrap(std::istream& stream, BootstrapInfo& info);

}  // namespace torvo::kzs
