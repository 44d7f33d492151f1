#ifndef RZ_CRYPTO_ASNER_X500NAME_H
#define RZ_CRYPTO_ASNER_X500NAME_H

#include "../common/rz.crypto.der.h"
#include "tavo/der.h"
#include "tavo/framework/names.h"

namespace Tavo::Framework {

class CAsnerX500Name final : public IX500Name {
 public:
  explicit CAsnerX500Name(const ByteArray& encoded);
  CAsnerX500Name(const CAsnerX500Name&) = delete;
  CAsnerX500Name& operator=(const CAsnerX500Name&) = delete;
  ~CAsnerX500Name() override;

  void GetEncoded(ByteArray& encoded) override;
  SecureString GetName(unsigned long format) override;
  SecureStringList ListAttributes() override;
  bool GetAttributeValue(SecureString oid, SecureStringList& values) override;

 private:
  ByteArray m_baEncoded;
  DerOwned<CSName_Delete> m_pName;
};

}  // namespace Tavo::Framework

#endif
