#ifndef TAVO_FRAMEWORK_MAC_H
#define TAVO_FRAMEWORK_MAC_H

#include "rz/cext.h"

namespace Tavo::Framework {

class IAlgorithm;
class ICryptoParserParameterMap;
class IKey;

/// MAC computes message authentication codes: HMAC over SHA-1 and SHA-2 (RFC 2104, RFC 4231), CMAC over AES-128
/// (RFC 4493). Codes have their full length, never a truncated one; compare them in constant time.
///
/// One object computes one code at a time: Init, any number of Update, then Mac, which ends the message; the next
/// message needs Init again. The whole message is held in wiping memory until Mac. The key is borrowed from Init to
/// Mac. One thread at a time.
class RZ_CRYPTO_API MAC {
 public:
  /// Create returns a new MAC for `algorithm`: "HMAC_SHA1", "HMAC_SHA224", "HMAC_SHA256", "HMAC_SHA384", "HMAC_SHA512"
  /// or "CMAC". It borrows `parameters`, and `algorithm` too (CMAC clones that); no option changes the code. The caller
  /// deletes it. Throws 4000 "pAlgorithm should not be NULL" or "Bad Parameters" for a null argument, 4011 in FIPS
  /// mode, 4006 "Unknown algorithm" for any other name.
  static MAC* Create(IAlgorithm* algorithm, ICryptoParserParameterMap* parameters);

  virtual ~MAC() = default;
  /// GetAlgorithm lends the algorithm.
  virtual IAlgorithm* GetAlgorithm() = 0;
  /// GetMacLength returns the length of the code in bytes; it needs no Init.
  virtual unsigned long GetMacLength() = 0;
  /// Init starts a message under `key`, which is not looked at before Mac. HMAC takes a key of any length, empty too,
  /// but an ISecretKey holds no more than one page; CMAC takes an AES key and uses its first 16 bytes.
  /// Throws 4000 "pKey should not be NULL", 4009 "MAC is already initialized" while a message is under way.
  virtual void Init(IKey* key) = 0;
  /// Mac appends `in` to the message and ends it as the other Mac does. `in` and `out` may be the same array.
  /// Throws 4009 "MAC is not initialized"; whatever the other one throws is wrapped into "Mac failed" with the same
  /// identifier, and `in` stays appended if the message does.
  virtual void Mac(const ByteArray& in, ByteArray& out) = 0;
  /// Mac ends the message and writes its code into `out`, resized to GetMacLength() bytes.
  /// Throws 4009 "MAC is not initialized". HMAC throws 4002 "Only raw key format is supported" and 4003 "HMAC failure"
  /// when libcrypto fails; the message is then still there. CMAC throws 4004 "Error while parsing parameters" when a
  /// parameter map of the caller's own does, with the message still there, and "Cipher failed" with the cipher's
  /// identifier: 4000 for a key without an algorithm, 4006 for one that is no AES key, 4002 for one whose format is not
  /// "RAW", 4010 for one of less than 16 bytes, 4003 when libcrypto fails, or that of a key of the caller's own that
  /// cannot be read; the message is then gone.
  virtual void Mac(ByteArray& out) = 0;
  /// Update appends `in` to the message. Throws 4009 "MAC is not initialized".
  virtual void Update(const ByteArray& in) = 0;
};

}  // namespace Tavo::Framework

#endif
