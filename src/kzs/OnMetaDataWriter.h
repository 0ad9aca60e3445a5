#pragma once

#include <iosfwd>

namespace torvo::kzs {

struct OnMetaDataRecord;

/// Writes the record in AMF0: the text "onMetaData" and an array of properties.
///
/// Numbers that aren't above 0 and texts that are empty are left out. With several video tracks
/// the properties of pictures occur once for each, under the same names.
///
/// A failing stream throws std::ios_base::failure, and its exception setting is put back; a name
/// of 65536 bytes or more throws kvl::amfmessage::WriteException.
void writeOnMetaData(std::ostream& stream, const OnMetaDataRecord& record);

}  // namespace torvo::kzs
