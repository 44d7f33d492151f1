#ifndef RZ_CRYPTO_GENERALNAME_H
#define RZ_CRYPTO_GENERALNAME_H

#include "tavo/framework/names.h"

namespace Tavo::Framework {

class CGeneralName final : public IGeneralName {
 public:
  CGeneralName(const SecureString& text, const SecureString& kind);
  CGeneralName(const ByteArray& encoded, const SecureString& kind, const SecureString& oid);
  CGeneralName(const CGeneralName&) = delete;
  CGeneralName& operator=(const CGeneralName&) = delete;
  ~CGeneralName() override;

  SecureString GetNameType() override;
  SecureString GetFormat() override;
  void GetEncoded(ByteArray& encoded) override;
  SecureString GetString() override;
  SecureString GetOID() override;

 private:
  SecureString m_sKind;
  SecureString m_sFormat;
  ByteArray m_baEncoded;
  SecureString m_sOID;
};

}  // namespace Tavo::Framework

#endif
