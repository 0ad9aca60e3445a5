#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "offline/OptionMap.h"

namespace torvo::offline {

/// One job from its arguments, which come without the program's own name, to the exit status: 0,
/// or the code of the failure, whose one line "Error code: text" is then on standard error.
///
/// Fills `options`. The arguments are wiped when they are parsed, the password among the options
/// when the encryption library has it. Standard exceptions can't leave it but where the system is
/// out of memory.
std::int32_t main(OptionMap& options, std::vector<std::string> arguments);

}  // namespace torvo::offline
