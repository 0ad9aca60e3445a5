#include <exception>
#include <iostream>
#include <string>

#include "support/Presentation.h"

/// Reads what a run left in a folder under a base name, and prints a line for all that is wrong.
int main(int argc, char** argv) {
    if (argc != 3) {
        std::cerr << "usage: check_presentation FOLDER BASENAME\n";
        return 2;
    }
    try {
        const auto findings =
            kz::test::inconsistencies(kz::test::readPresentation(argv[1], argv[2]));
        for (const std::string& finding : findings) std::cout << finding << '\n';
        return findings.empty() ? 0 : 1;
    } catch (const std::exception& failure) {
        std::cout << failure.what() << '\n';
        return 1;
    }
}
