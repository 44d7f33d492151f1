#ifndef RZ_OPENSSL_X509_PLAIN_H
#define RZ_OPENSSL_X509_PLAIN_H

#include "tavo/framework/bytes.h"

namespace Tavo::Framework {

/// IsPlainX509 returns whether `encoded` begins with a certificate of the plain shape that nearly all have: version 3
/// in strict DER, every field as RFC 5280 wants it, names of the everyday string types. libcrypto's parser accepts
/// every such certificate, so it need not run until its result is wanted, and it is three quarters of the cost of
/// opening a certificate. False says nothing: ask libcrypto.
bool IsPlainX509(const ByteArray& encoded);

}  // namespace Tavo::Framework

#endif
