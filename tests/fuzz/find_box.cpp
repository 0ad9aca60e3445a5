#include <istream>
#include <sstream>
#include <string>

#include "fuzz/FuzzTarget.h"
#include "kzs/AfraIndex.h"
#include "kzs/AfraReader.h"
#include "kzs/BootstrapInfo.h"
#include "kzs/BootstrapReader.h"
#include "kzs/base/BoxFunctions.h"
#include "kzs/base/ByteOrder.h"
#include "kzs/base/ByteSource.h"

using namespace torvo::kzs;

namespace {

/// The walk of --inspect-fragments; answers how many indexes and bootstraps it met.
std::size_t walk(std::istream& stream) {
    std::size_t met = 0;
    try {
        while (findBox(stream, fourCc("afra"))) {
            AfraIndex index;
            readAfra(stream, index);
            ++met;
            if (!findBox(stream, fourCc("abst"))) continue;
            BootstrapInfo info;
            readBootstrap(stream, info);
            ++met;
        }
    } catch (const InvalidAfraFormat&) {
    } catch (const InvalidBootstrapFormat&) {
    }
    return met;
}

}  // namespace

/// A stream of the standard library and one over a block in memory tell the same.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    ByteSourceStream block(data, size);
    std::istringstream text(std::string(data, data + size));
    kz::fuzz::require(walk(block) == walk(text), "both kinds of stream lead to the same boxes");
    return 0;
}
