#include "kzs/XmlText.h"

#include <stdexcept>

#include <boost/locale/utf.hpp>

namespace torvo::kzs {

namespace {

using Utf8 = boost::locale::utf::utf_traits<char>;
using boost::locale::utf::code_point;

bool canStay(code_point point) {
    constexpr code_point kFirstPrintable = 0x20;
    constexpr code_point kDelete = 0x7F;
    constexpr code_point kNonCharacters[] = {0xFFFE, 0xFFFF};
    return boost::locale::utf::is_valid_codepoint(point) && point >= kFirstPrintable &&
           point != kDelete && point != kNonCharacters[0] && point != kNonCharacters[1];
}

}  // namespace

void requireXmlText(const std::string& text) {
    std::string shown;
    bool isFit = true;
    for (auto at = text.begin(); at != text.end();) {
        auto next = at;
        const bool stays = canStay(Utf8::decode(next, text.end()));
        if (stays) {
            shown.append(at, next);
        } else {
            shown += '?';
            isFit = false;
        }
        at = next;
    }
    if (!isFit) {
        throw std::invalid_argument("\"" + shown + "\" is not UTF-8 or holds control characters");
    }
}

}  // namespace torvo::kzs
