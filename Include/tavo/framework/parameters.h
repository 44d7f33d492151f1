#ifndef TAVO_FRAMEWORK_PARAMETERS_H
#define TAVO_FRAMEWORK_PARAMETERS_H

#include "rz/cext.h"

namespace Tavo::Framework {

/// ICryptoParserParameterMap carries the options of an operation. A setter replaces the option's value. A getter
/// assigns the value (lists and arrays too, it never appends) and returns true, or returns false and leaves its
/// argument alone when the option is absent; nothing here throws for that. What an absent option means is said by the
/// operation that reads it.
///
/// An operation object borrows the map that it is created with and reads it at each call, so that options can be
/// changed between calls: the map must outlive the object.
class RZ_CRYPTO_API ICryptoParserParameterMap : public DataMap2 {
 public:
  /// Create returns a new, empty map. The caller deletes it.
  static ICryptoParserParameterMap* Create();

  ~ICryptoParserParameterMap() override = default;
  virtual void SetTimeout(unsigned long timeout) = 0;
  virtual bool GetTimeout(unsigned long& timeout) const = 0;
  /// SetPadding names the padding: "None", "PKCS7" (block ciphers), "PKCS1", "OAEP" (RSA).
  virtual void SetPadding(const SecureString& padding) = 0;
  virtual bool GetPadding(SecureString& padding) const = 0;
  /// SetCipherMode names the block cipher mode: "ECB" or "CBC".
  virtual void SetCipherMode(const SecureString& mode) = 0;
  virtual bool GetCipherMode(SecureString& mode) const = 0;
  /// SetIv sets the initialisation vector, in bytes. An empty one is stored too.
  virtual void SetIv(const ByteArray& iv) = 0;
  virtual bool GetIv(ByteArray& iv) const = 0;
  /// SetFIPSMode: with true every factory that takes the map refuses with 4011; false removes the option.
  virtual void SetFIPSMode(bool on) = 0;
  /// GetFIPSMode returns whether the option is present.
  virtual bool GetFIPSMode() const = 0;
  /// SetHashAlgoX931 sets the hash identifier octet of an X9.31 block.
  virtual void SetHashAlgoX931(unsigned char identifier) = 0;
  virtual bool GetHashAlgoX931(unsigned char& identifier) const = 0;
  /// SetOaepEncodingParam sets the OAEP label P.
  virtual void SetOaepEncodingParam(const ByteArray& label) = 0;
  virtual bool GetOaepEncodingParam(ByteArray& label) const = 0;
  /// SetPkcs1Operation: 0 for a signature block (type 1), 1 for an encryption block (type 2).
  virtual void SetPkcs1Operation(unsigned char operation) = 0;
  virtual bool GetPkcs1Operation(unsigned char& operation) const = 0;
  /// The rest is stored for callers; no operation of this library reads it.
  virtual void SetKeyPersistence(const SecureString& persistence) = 0;
  virtual bool GetKeyPersistence(SecureString& persistence) const = 0;
  virtual void SetKeyLabel(const SecureString& label) = 0;
  virtual bool GetKeyLabel(SecureString& label) const = 0;
  virtual void SetComponentIdentifier(const SecureString& identifier) = 0;
  virtual bool GetComponentIdentifier(SecureString& identifier) const = 0;
  virtual void SetComponentName(const SecureString& name) = 0;
  virtual bool GetComponentName(SecureString& name) const = 0;
};

/// ICryptoParserFilter carries criteria for choosing keys and certificates. Setters and getters behave as those of the
/// parameter map.
class RZ_CRYPTO_API ICryptoParserFilter : public DataMap2 {
 public:
  /// Create returns a new, empty filter. The caller deletes it.
  static ICryptoParserFilter* Create();

  ~ICryptoParserFilter() override = default;
  /// AddOIDCriteria stores the list of dotted object identifiers; a second call replaces the first list.
  virtual void AddOIDCriteria(const SecureStringList& oids) = 0;
  virtual bool GetOIDCriteria(SecureStringList& oids) const = 0;
  virtual void SetCriticalCriterion(bool critical) = 0;
  virtual bool GetCriticalCriterion(bool& critical) const = 0;
  virtual void SetPrivateKeyCriterion(bool hasPrivateKey) = 0;
  virtual bool GetPrivateKeyCriterion(bool& hasPrivateKey) const = 0;
  virtual void SetLabel(const SecureString& label) = 0;
  virtual bool GetLabel(SecureString& label) const = 0;
  virtual void SetComponentIdentifier(const SecureString& identifier) = 0;
  virtual bool GetComponentIdentifier(SecureString& identifier) const = 0;
  virtual void SetComponentName(const SecureString& name) = 0;
  virtual bool GetComponentName(SecureString& name) const = 0;
};

}  // namespace Tavo::Framework

#endif
