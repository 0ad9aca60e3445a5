#include "kzs/DrmAdditionalHeader.h"

#include <ostream>
#include <sstream>

#include "kvl/amfmessage/AMF0Markers.h"
#include "kvl/amfmessage/AMF0Props.h"
#include "kvl/amfmessage/AMF0Values.h"
#include "kzs/base/StreamExceptionGuard.h"

namespace torvo::kzs {
namespace {

using kvl::amfmessage::AMF0ObjectBegin;
using kvl::amfmessage::AMF0ObjectEnd;
using kvl::amfmessage::AMF0PropNumber;
using kvl::amfmessage::AMF0PropObjectBegin;
using kvl::amfmessage::AMF0PropString;
using kvl::amfmessage::AMF0String;

constexpr std::uint8_t kVersionWithFilter = 3;

void writeKeyInfo(const DrmAdditionalHeader& header, std::ostream& stream) {
    AMF0PropObjectBegin("KeyInfo").write(stream);
    AMF0PropString("subType", "EmberGatev2").write(stream);
    AMF0PropObjectBegin("EGRLS_METADATA").write(stream);
    AMF0PropString("Metadata", header.metadata).write(stream);
    AMF0ObjectEnd().write(stream);
    AMF0ObjectEnd().write(stream);
}

void writeFilterInfo(const DrmAdditionalHeader& header, std::ostream& stream) {
    AMF0PropObjectBegin("FilterInfo").write(stream);
    AMF0PropString("FilterName", "SE2").write(stream);
    AMF0PropObjectBegin("FilterParams").write(stream);
    AMF0PropNumber("KeyIndicatorLength", header.keyIndicatorLength).write(stream);
    AMF0ObjectEnd().write(stream);
    AMF0ObjectEnd().write(stream);
}

void writeParams(const DrmAdditionalHeader& header, std::ostream& stream) {
    AMF0PropObjectBegin("Params").write(stream);
    AMF0PropNumber("Version", header.paramsVersion).write(stream);
    AMF0PropString("EncryptionAlgorithm", header.encryptionAlgorithm).write(stream);
    AMF0PropObjectBegin("EncryptionParams").write(stream);
    AMF0PropNumber("KeyLength", header.keyLength).write(stream);
    AMF0ObjectEnd().write(stream);
    writeKeyInfo(header, stream);
    // On purpose: no run has version 3, the branch belongs to the format.
    // Pinned by DrmAdditionalHeaderTest.FilterInfoIsWrittenForVersionThreeOnly.
    if (header.version == kVersionWithFilter) writeFilterInfo(header, stream);
    AMF0ObjectEnd().write(stream);
}

}  // namespace

void writeDrmAdditionalHeader(const DrmAdditionalHeader& header, std::ostream& stream) {
    const StreamExceptionGuard guard(stream,
                                     std::ios::eofbit | std::ios::failbit | std::ios::badbit);
    AMF0String("|AdditionalHeader").write(stream);
    AMF0ObjectBegin().write(stream);
    AMF0PropObjectBegin("Encryption").write(stream);
    AMF0PropNumber("Version", header.version).write(stream);
    AMF0PropString("Method", "Standard").write(stream);
    AMF0PropNumber("Flags", header.flags).write(stream);
    writeParams(header, stream);
    AMF0ObjectEnd().write(stream);
    AMF0ObjectEnd().write(stream);
}

std::vector<std::uint8_t> bytesOf(const DrmAdditionalHeader& header) {
    std::ostringstream stream;
    writeDrmAdditionalHeader(header, stream);
    const std::string bytes = stream.str();
    return std::vector<std::uint8_t>(bytes.begin(), bytes.end());
}

}  // namespace torvo::kzs
