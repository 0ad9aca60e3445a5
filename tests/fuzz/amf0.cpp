#include <ios>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "fuzz/FuzzTarget.h"
#include "kvl/amfmessage/AMF0Markers.h"
#include "kvl/amfmessage/AMF0Props.h"
#include "kvl/amfmessage/AMF0Values.h"

using namespace kvl::amfmessage;

namespace {

std::unique_ptr<AMF0Base> itemOf(unsigned kind) {
    switch (kind) {
        case 0:
            return std::make_unique<AMF0Number>();
        case 1:
            return std::make_unique<AMF0String>();
        case 2:
            return std::make_unique<AMF0NoHeaderString>();
        case 3:
            return std::make_unique<AMF0ObjectBegin>();
        case 4:
            return std::make_unique<AMF0ObjectEnd>();
        case 5:
            return std::make_unique<AMF0ArrayBegin>();
        case 6:
            return std::make_unique<AMF0ArrayEnd>();
        case 7:
            return std::make_unique<AMF0StrictArrayBegin>();
        case 8:
            return std::make_unique<AMF0PropObjectBegin>();
        case 9:
            return std::make_unique<AMF0PropNumber>();
        default:
            return std::make_unique<AMF0PropString>();
    }
}

std::string written(const AMF0Base& item) {
    std::ostringstream out;
    item.write(out);
    return out.str();
}

}  // namespace

/// The first byte chooses the item and whether the stream throws; the rest is read. An item that
/// was read whole is written and read again with the same bytes.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    const unsigned kind = data[0] & 0x0Fu;
    const std::unique_ptr<AMF0Base> item = itemOf(kind);
    std::istringstream in(std::string(data + 1, data + size));
    if ((data[0] & 0x10u) != 0) in.exceptions(std::ios::failbit | std::ios::badbit);
    try {
        item->read(in);
    } catch (const ParseException&) {
        return 0;
    } catch (const std::ios_base::failure&) {
        return 0;
    }
    if (!in) return 0;

    const std::string bytes = written(*item);
    const std::unique_ptr<AMF0Base> copy = itemOf(kind);
    std::istringstream again(bytes);
    copy->read(again);
    kz::fuzz::require(written(*copy) == bytes, "an item comes back as it was written");
    return 0;
}
