#ifndef RZ_OPENSSL_X509_H
#define RZ_OPENSSL_X509_H

#include "rz.openssl.owners.h"
#include "tavo/framework/bytes.h"

namespace Tavo::Framework {

/// ParseX509 returns libcrypto's certificate for the DER encoding at the start of `encoded`, or null; the error line of
/// `operation` is then written. It accepts what d2i_X509 accepts in the default library context, but does not build the
/// public key: X509_get0_pubkey_bitstr gives the key's octets, X509_get0_pubkey gives no key.
OpensslCertificate ParseX509(const ByteArray& encoded, const char* operation);

}  // namespace Tavo::Framework

#endif
