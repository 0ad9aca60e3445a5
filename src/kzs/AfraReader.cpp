#include "kzs/AfraReader.h"

#include <istream>

#include "kzs/AfraFormat.h"
#include "kzs/AfraIndex.h"
#include "kzs/base/BoxFunctions.h"
#include "kzs/base/ByteOrder.h"
#include "kzs/base/StreamExceptionGuard.h"

namespace torvo::kzs {
namespace {

std::uint32_t readId(std::istream& stream, bool wide) {
    return wide ? readU32(stream) : readU16(stream);
}

// The lists grow as they are read: a count in a file proves nothing.
AfraIndex readIndex(std::istream& stream) {
    StreamBoxHeader header;
    readBoxHeader(stream, header);
    if (header.type != fourCc("afra")) throw InvalidAfraFormat();
    if ((readU32(stream) >> 24) != 0) throw InvalidAfraFormat();
    AfraIndex index;
    const std::uint8_t bits = readByte(stream);
    index.longIds = (bits & kAfraLongIds) != 0;
    index.longOffsets = (bits & kAfraLongOffsets) != 0;
    index.timescale = readU32(stream);
    for (std::uint32_t left = readU32(stream); left > 0; --left) {
        AfraEntry entry;
        // On purpose: in milliseconds whatever the box says.
        // Pinned by AfraReaderTest.GivesTimesInMillisecondsWhateverTheBoxSays.
        entry.time = milliseconds(readU64(stream));
        entry.offset = readSized(stream, index.longOffsets);
        index.localEntries.push_back(entry);
    }
    if ((bits & kAfraGlobalEntries) == 0) return index;
    for (std::uint32_t left = readU32(stream); left > 0; --left) {
        AfraEntry entry;
        entry.time = milliseconds(readU64(stream));
        entry.segment = readId(stream, index.longIds);
        entry.fragment = readId(stream, index.longIds);
        entry.afraOffset = readSized(stream, index.longOffsets);
        entry.offsetFromAfra = readSized(stream, index.longOffsets);
        index.globalEntries.push_back(entry);
    }
    return index;
}

}  // namespace

InvalidAfraFormat::InvalidAfraFormat() : kvl::KVLException("Could not parse afra index") {}

void readAfra(std::istream& stream, AfraIndex& index) {
    try {
        const StreamExceptionGuard guard(stream,
                                         std::ios::eofbit | std::ios::failbit | std::ios::badbit);
        index = readIndex(stream);
    } catch (const std::exception&) {
        throw InvalidAfraFormat();
    }
}

}  // namespace torvo::kzs
