#pragma once

#include <iosfwd>

namespace torvo::offline {

/// Reads the bootstrap at the position of `stream` and prints it to `out`, which must show bools
/// as words. Throws InvalidBootstrapException where it can't be read, with nothing printed.
void printBootstrapAt(std::istream& stream, std::ostream& out);

}  // namespace torvo::offline
