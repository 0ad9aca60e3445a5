#pragma once

#include <string>
#include <vector>

#include "offline/OptionMap.h"

namespace torvo::offline {

/// Puts asterisks in the place of the password on the command line that the system shows of the
/// process. Takes the words as `main` has them; nothing reads them after this.
///
/// Goes by what the option parser takes for the option: `--credential-pwd` or a beginning of it,
/// with the value behind "=" or in the next word.
void hidePassword(int argc, char** argv);

/// Overwrites a text with zeros, with all the room that it has, and empties it.
void wipe(std::string& text);
/// Wipes the words and empties the list.
void wipe(std::vector<std::string>& words);
/// Wipes the password among the settings.
void wipePassword(OptionMap& options);

/// Overwrites what functions that are through have left on the stack.
void wipeStack();

/// Whether memory that C++ code frees is to be wiped first. It is from the start of the process:
/// the parsers copy the words and texts that they are given as they like, and their copies can't be
/// reached otherwise. The allocation functions of the program ask this; programs of others that use
/// this library have functions of their own, which don't.
bool isFreedMemoryWiped();
/// For the time when no secret is left in texts: the samples needn't be wiped.
void stopWipingFreedMemory();

}  // namespace torvo::offline
