#ifndef RZ_CRYPTO_OPENSSL_RSACERTIFICATE_MODULE_H
#define RZ_CRYPTO_OPENSSL_RSACERTIFICATE_MODULE_H

#include "rz.crypto.openssl.rsacertificate.h"

namespace Tavo::Framework::Certificate {

inline constexpr Module kModule{"Sources/openssl/rz.crypto.openssl.rsacertificate"};

/// Reading traces one operation of a certificate and hands its body the check of DER result codes, which throws 4004.
template <class Body>
auto Reading(const char* operation, const void* object, Body&& body) {
  return Traced(operation, object, [&] { return body(DerSteps(kModule, operation)); });
}

/// BitOctets returns the octets of a BIT STRING.
ByteArray BitOctets(const DerSteps& check, const char* step, const CSASNBitString* bits);

}  // namespace Tavo::Framework::Certificate

#endif
