#ifndef RZCRYPTO_OID_NAMES_H
#define RZCRYPTO_OID_NAMES_H

#include <string_view>

namespace rzcrypto {

/// OidName returns what people call the object identifier (dotted), or an empty text.
std::string_view OidName(std::string_view oid);

/// CurveBits returns the size of the named elliptic curve, 0 for an unknown one.
unsigned int CurveBits(std::string_view oid);

}  // namespace rzcrypto

#endif
