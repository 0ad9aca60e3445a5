#include "offline/Secrets.h"

#include <array>
#include <cstddef>
#include <string.h>  // explicit_bzero
#include <string_view>

namespace torvo::offline {
namespace {

constexpr const char* kPasswordKey = "credential-pwd";
/// More than the parsers and the encryption library take.
constexpr std::size_t kStackSize = std::size_t{64} << 10;

bool freedMemoryIsWiped = true;

/// Whether a word, up to its "=", is the password's option or a beginning of it.
bool namesPassword(std::string_view word) {
    constexpr std::string_view kPrefix = "--";
    if (word.substr(0, kPrefix.size()) != kPrefix) return false;
    const std::string_view name = word.substr(kPrefix.size());
    return !name.empty() && std::string_view(kPasswordKey).substr(0, name.size()) == name;
}

void cover(char* text) {
    for (; *text != '\0'; ++text) *text = '*';
}

}  // namespace

void hidePassword(int argc, char** argv) {
    bool isValue = false;
    for (int i = 1; i < argc; ++i) {
        if (isValue) {
            cover(argv[i]);
            isValue = false;
            continue;
        }
        const std::string_view word(argv[i]);
        const std::size_t nameEnd = word.find('=');
        if (!namesPassword(word.substr(0, nameEnd))) continue;
        isValue = nameEnd == std::string_view::npos;
        if (!isValue) cover(argv[i] + nameEnd + 1);
    }
}

void wipe(std::string& text) {
    text.resize(text.capacity());
    explicit_bzero(text.data(), text.size());
    text.clear();
}

void wipe(std::vector<std::string>& words) {
    for (std::string& word : words) wipe(word);
    words.clear();
}

void wipePassword(OptionMap& options) {
    wipe(boost::any_cast<std::string&>(options.at(kPasswordKey)));
}

[[gnu::noinline]] void wipeStack() {
    std::array<char, kStackSize> room;
    explicit_bzero(room.data(), room.size());
}

bool isFreedMemoryWiped() { return freedMemoryIsWiped; }

void stopWipingFreedMemory() { freedMemoryIsWiped = false; }

}  // namespace torvo::offline
