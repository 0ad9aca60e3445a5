#include <istream>
#include <vector>

#include "fuzz/FuzzTarget.h"
#include "kzs/AfraIndex.h"
#include "kzs/AfraReader.h"
#include "kzs/AfraWriter.h"
#include "kzs/base/ByteSource.h"

using namespace torvo::kzs;

/// An index that can be read is the same after it was written and read again.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    ByteSourceStream stream(data, size);
    AfraIndex index;
    try {
        readAfra(stream, index);
    } catch (const InvalidAfraFormat&) {
        kz::fuzz::require(index == AfraIndex(), "a failed read leaves the index alone");
        return 0;
    }
    std::vector<std::uint8_t> written;
    serialiseAfra(index, written);
    ByteSourceStream again(written);
    AfraIndex copy;
    readAfra(again, copy);
    index.timescale = copy.timescale;  // a box holds another one that is not looked at
    kz::fuzz::require(copy == index, "an index comes back as it was written");
    return 0;
}
