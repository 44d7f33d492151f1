#ifndef RZ_CRYPTO_OPENSSL_RSAKEYPAIR_H
#define RZ_CRYPTO_OPENSSL_RSAKEYPAIR_H

#include <memory>

#include "rz.openssl.owners.h"
#include "tavo/framework/algorithm.h"
#include "tavo/framework/rsa.h"

namespace Tavo::Framework {

class COpensslRSAKeyPair final : public KeyPair {
 public:
  /// The constructor takes ownership of `rsa`. Throws 4000 "m_RSA undefined" for null.
  explicit COpensslRSAKeyPair(rsa_st* rsa);
  COpensslRSAKeyPair(const COpensslRSAKeyPair&) = delete;
  COpensslRSAKeyPair& operator=(const COpensslRSAKeyPair&) = delete;
  ~COpensslRSAKeyPair() override;

  IPublicKey* GetPublicKey() override;
  IPrivateKey* GetPrivateKey() override;

 private:
  OpensslRSA m_rsa;
  std::unique_ptr<IAlgorithm> m_pAlgorithm;
};

}  // namespace Tavo::Framework

#endif
