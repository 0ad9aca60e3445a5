#include <istream>
#include <vector>

#include "fuzz/FuzzTarget.h"
#include "kzs/BootstrapInfo.h"
#include "kzs/BootstrapReader.h"
#include "kzs/BootstrapWriter.h"
#include "kzs/base/ByteSource.h"

using namespace torvo::kzs;

/// A bootstrap that can be read is the same bytes whenever it is written and read again.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    ByteSourceStream stream(data, size);
    BootstrapInfo info;
    try {
        readBootstrap(stream, info);
    } catch (const InvalidBootstrapFormat&) {
        kz::fuzz::require(info == BootstrapInfo(), "a failed read leaves the bootstrap alone");
        return 0;
    }
    const std::vector<std::uint8_t> written = serialiseBootstrap(info, false);
    ByteSourceStream again(written);
    BootstrapInfo copy;
    readBootstrap(again, copy);
    kz::fuzz::require(serialiseBootstrap(copy, false) == written,
                      "a bootstrap comes back as it was written");
    return 0;
}
