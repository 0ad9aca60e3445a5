#pragma once

#include <string>

#include "support/Bytes.h"

namespace kz::stress {

/// Inputs of about a kilobyte, small enough to be damaged in every place: two seconds of AVC at two
/// pictures a second with a key frame each second, and as many AAC frames. The media bytes are
/// counters; only their frames are sound.

test::Bytes smallFlv();
/// moov in front, sample tables of every kind.
test::Bytes smallMovie();
/// With an edit list that delays the sound.
test::Bytes smallMovieWithEdits();
/// A moov without samples and two fragments. `withDuration` has an mehd.
test::Bytes smallFragmentedMovie(bool withDuration);

/// A whole bootstrap and a whole index, of two fragments in two segments.
test::Bytes smallBootstrap();
test::Bytes smallIndex();
/// With a bootstrap in it, and a protection header.
std::string smallManifest();
/// A settings file that sets an option of each type.
std::string smallSettings();

}  // namespace kz::stress
