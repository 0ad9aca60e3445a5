#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <vector>

#include "fuzz/FuzzTarget.h"

/// Runs every file of the folders given through the target: what libFuzzer does with `-runs=0`,
/// for builds without it. Arguments that begin with a hyphen are libFuzzer's and passed over.
int main(int argc, char** argv) {
    std::size_t count = 0;
    for (int i = 1; i < argc; ++i) {
        if (argv[i][0] == '-') continue;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(argv[i])) {
            if (!entry.is_regular_file()) continue;
            std::cout << entry.path().filename() << std::endl;
            std::ifstream file(entry.path(), std::ios::binary);
            const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
            LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()),
                                   bytes.size());
            ++count;
        }
    }
    std::cout << count << " inputs\n";
    return count > 0 ? 0 : 1;
}
