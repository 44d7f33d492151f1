#ifndef RZ_OPENSSL_OWNERS_H
#define RZ_OPENSSL_OWNERS_H

#include <openssl/bn.h>
#include <openssl/engine.h>
#include <openssl/evp.h>
#include <openssl/hmac.h>
#include <openssl/rsa.h>
#include <openssl/x509.h>

#include <memory>

/// The owner of each libcrypto type in use: one deleter for each type, all of them here.
namespace Tavo::Framework {

template <auto Free>
struct OpensslDeleter {
  template <class T>
  void operator()(T* object) const noexcept {
    Free(object);
  }
};

template <class T, auto Free>
using OpensslOwner = std::unique_ptr<T, OpensslDeleter<Free>>;

using OpensslBignum = OpensslOwner<BIGNUM, BN_clear_free>;
using OpensslCipherContext = OpensslOwner<EVP_CIPHER_CTX, EVP_CIPHER_CTX_free>;
using OpensslCertificate = OpensslOwner<X509, X509_free>;
using OpensslHmacContext = OpensslOwner<HMAC_CTX, HMAC_CTX_free>;
using OpensslRSA = OpensslOwner<RSA, RSA_free>;

#ifndef OPENSSL_NO_ENGINE
/// A reference to an engine's description, and one to an engine that is initialised and in use.
using OpensslEngine = OpensslOwner<ENGINE, ENGINE_free>;
using OpensslEngineInUse = OpensslOwner<ENGINE, ENGINE_finish>;
#endif

/// ShareRSA returns one more reference to `rsa`, so that the key lives as long as any of its owners; nothing for null.
inline OpensslRSA ShareRSA(RSA* rsa) { return OpensslRSA(rsa != nullptr && RSA_up_ref(rsa) == 1 ? rsa : nullptr); }

}  // namespace Tavo::Framework

#endif
