#ifndef RZ_CRYPTO_PARAMETERS_H
#define RZ_CRYPTO_PARAMETERS_H

#include "tavo/framework/parameters.h"

namespace Tavo::Framework {

class CCryptoParameterMap final : public ICryptoParserParameterMap {
 public:
  void SetTimeout(unsigned long timeout) override;
  bool GetTimeout(unsigned long& timeout) const override;
  void SetPadding(const SecureString& padding) override;
  bool GetPadding(SecureString& padding) const override;
  void SetCipherMode(const SecureString& mode) override;
  bool GetCipherMode(SecureString& mode) const override;
  void SetIv(const ByteArray& iv) override;
  bool GetIv(ByteArray& iv) const override;
  void SetFIPSMode(bool on) override;
  bool GetFIPSMode() const override;
  void SetHashAlgoX931(unsigned char identifier) override;
  bool GetHashAlgoX931(unsigned char& identifier) const override;
  void SetOaepEncodingParam(const ByteArray& label) override;
  bool GetOaepEncodingParam(ByteArray& label) const override;
  void SetPkcs1Operation(unsigned char operation) override;
  bool GetPkcs1Operation(unsigned char& operation) const override;
  void SetKeyPersistence(const SecureString& persistence) override;
  bool GetKeyPersistence(SecureString& persistence) const override;
  void SetKeyLabel(const SecureString& label) override;
  bool GetKeyLabel(SecureString& label) const override;
  void SetComponentIdentifier(const SecureString& identifier) override;
  bool GetComponentIdentifier(SecureString& identifier) const override;
  void SetComponentName(const SecureString& name) override;
  bool GetComponentName(SecureString& name) const override;
};

class CCryptoFilter final : public ICryptoParserFilter {
 public:
  void AddOIDCriteria(const SecureStringList& oids) override;
  bool GetOIDCriteria(SecureStringList& oids) const override;
  void SetCriticalCriterion(bool critical) override;
  bool GetCriticalCriterion(bool& critical) const override;
  void SetPrivateKeyCriterion(bool hasPrivateKey) override;
  bool GetPrivateKeyCriterion(bool& hasPrivateKey) const override;
  void SetLabel(const SecureString& label) override;
  bool GetLabel(SecureString& label) const override;
  void SetComponentIdentifier(const SecureString& identifier) override;
  bool GetComponentIdentifier(SecureString& identifier) const override;
  void SetComponentName(const SecureString& name) override;
  bool GetComponentName(SecureString& name) const override;
};

}  // namespace Tavo::Framework

#endif
