#pragma once

#include <string>
#include <utility>
#include <vector>

#include "support/Bytes.h"

namespace kz::test {

/// Values of AMF0, each with its type marker: for script tags and for expected records.
///
///   amfString("onMetaData") + amfEcmaArray({{"width", amfNumber(320)}})
using AmfMembers = std::vector<std::pair<std::string, Bytes>>;

Bytes amfNumber(double value);
Bytes amfBool(bool value);
Bytes amfString(const std::string& value);
Bytes amfObject(const AmfMembers& members);
Bytes amfMovieClip();
Bytes amfNull();
Bytes amfUndefined();
/// `index` counts the complex values of the message.
Bytes amfReference(unsigned index);
/// The count is that of the members.
Bytes amfEcmaArray(const AmfMembers& members);
/// The count is `count`, whatever there is.
Bytes amfEcmaArray(const AmfMembers& members, std::uint32_t count);
Bytes amfStrictArray(const std::vector<Bytes>& values);
Bytes amfDate(double milliseconds, int zoneMinutes = 0);
Bytes amfLongString(const std::string& value);
Bytes amfUnsupported();
Bytes amfXml(const std::string& document);
Bytes amfTypedObject(const std::string& className, const AmfMembers& members);

/// A member's name: length in 16 bits and the characters, no marker.
Bytes amfName(const std::string& name);
/// Names and values, then the end marker.
Bytes amfMembers(const AmfMembers& members);

}  // namespace kz::test
