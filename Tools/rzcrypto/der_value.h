#ifndef RZCRYPTO_DER_VALUE_H
#define RZCRYPTO_DER_VALUE_H

#include <string>

#include "der_tree.h"
#include "io.h"

namespace rzcrypto::der {

/// TagName returns "SEQUENCE", "[0]", "[APPLICATION 33]", ...
std::string TagName(const Node& node);

/// OidText returns an OBJECT IDENTIFIER in dotted decimal with arcs of any size; nothing when the contents are none.
std::string OidText(Bytes contents);

/// ValueText returns a primitive element's value for one line: numbers, names, text beside hex. At most `most` bytes
/// are shown in hex, all for 0.
std::string ValueText(const Node& node, Bytes contents, size_t most);

/// AddValue adds the value's facts to a JSON object: "hex" always, "value" for what is a number, a text or a time,
/// "name" for an OBJECT IDENTIFIER that has one.
void AddValue(Json& facts, const Node& node, Bytes contents);

}  // namespace rzcrypto::der

#endif
