#pragma once

#include <string>

namespace torvo::kzs {

/// Makes sure that `text` comes back as it is from a manifest: it must be UTF-8 without control
/// characters and without code points that XML can't hold.
///
/// Whoever puts a file name or a setting into a manifest asks before any other work. Throws
/// std::invalid_argument that shows the text with "?" for what can't stay.
void requireXmlText(const std::string& text);

}  // namespace torvo::kzs
