#pragma once

namespace hlx {

/// Starts the library with the record of four zeros. Throws HLXException.
void startLibrary();

/// Stops it. Whatever the library answers is dropped: this also runs while a failure unwinds.
void stopLibrary() noexcept;

}  // namespace hlx
