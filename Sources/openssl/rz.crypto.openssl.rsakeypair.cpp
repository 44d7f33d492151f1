#include "rz.crypto.openssl.rsakeypair.h"

#include "../common/rz.crypto.trace.h"
#include "rz.crypto.openssl.rsaprivatecrtkey.h"
#include "rz.crypto.openssl.rsapublickey.h"
#include "tavo/owned.h"

namespace Tavo::Framework {

namespace {

constexpr Module kModule{"Sources/openssl/rz.crypto.openssl.rsakeypair"};

}  // namespace

COpensslRSAKeyPair::COpensslRSAKeyPair(rsa_st* rsa) : m_rsa(rsa) {
  Traced("COpensslRSAKeyPair::COpensslRSAKeyPair", this, [&] {
    if (!m_rsa) {
      LogError("COpensslRSAKeyPair::COpensslRSAKeyPair : m_RSA undefined");
      throw kModule.Error(41, "m_RSA undefined", CRYPTO_BAD_PARAM);
    }
    m_pAlgorithm = NewAlgorithm("RSA");
  });
}

COpensslRSAKeyPair::~COpensslRSAKeyPair() {
  Traced("COpensslRSAKeyPair::~COpensslRSAKeyPair", this, [&] {
    m_pAlgorithm.reset();
    m_rsa.reset();
  });
}

IPublicKey* COpensslRSAKeyPair::GetPublicKey() {
  return Traced("COpensslRSAKeyPair::GetPublicKey", this,
                [&] { return new COpensslRSAPublicKey(m_pAlgorithm.get(), m_rsa.get()); });
}

IPrivateKey* COpensslRSAKeyPair::GetPrivateKey() {
  return Traced("COpensslRSAKeyPair::GetPrivateKey", this,
                [&] { return new COpensslRSAPrivateCRTKey(m_pAlgorithm.get(), m_rsa.get()); });
}

}  // namespace Tavo::Framework
