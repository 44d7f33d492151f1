#include "rz.openssl.x509.h"

#include <openssl/asn1t.h>
#include <openssl/provider.h>

#include "../common/rz.crypto.trace.h"
#include "rz.openssl.errors.h"

namespace Tavo::Framework {

namespace {

/// A library context without algorithms. Parsing a certificate spends seven eighths of its time on building the public
/// key through the providers; here none offers to. Made once and never freed, since a certificate may outlive every
/// destructor; null, the default context, when it cannot be made: the same results, only slower.
OSSL_LIB_CTX* ContextWithoutAlgorithms() {
  static OSSL_LIB_CTX* const context = [] {
    const OpensslErrors errors;
    OpensslOwner<OSSL_LIB_CTX, OSSL_LIB_CTX_free> fresh(OSSL_LIB_CTX_new());
    return fresh && OSSL_PROVIDER_load(fresh.get(), "null") != nullptr ? fresh.release() : nullptr;
  }();
  return context;
}

}  // namespace

OpensslCertificate ParseX509(const ByteArray& encoded, const char* operation) {
  OSSL_LIB_CTX* const context = ContextWithoutAlgorithms();
  const OpensslErrors errors;
  const unsigned char* cursor = encoded.data();
  OpensslCertificate certificate(reinterpret_cast<X509*>(
      ASN1_item_d2i_ex(nullptr, &cursor, static_cast<long>(encoded.size()), ASN1_ITEM_rptr(X509), context, nullptr)));
  if (!certificate) {
    const OpensslError error = errors.First();
    LogError("%s : d2i_X509 - Unable to parse certificate with error 0x%x (%s)", operation, error.code, error.text);
  }
  return certificate;
}

}  // namespace Tavo::Framework
