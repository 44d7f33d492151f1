#ifndef TAVO_FRAMEWORK_PADDING_H
#define TAVO_FRAMEWORK_PADDING_H

#include "rz/cext.h"

namespace Tavo::Framework {

class ICryptoParserParameterMap;

/// IPadding formats the blocks of RSA, for callers who run the raw RSA operation themselves, on a card for example:
/// EncodeData turns a message into a block as long as the modulus, DecodeData checks a block and takes the message out.
///
/// In what follows k is the length of the modulus and m that of the message, in bytes.
///
///   type      operation            block                                               m       standard
///   "PKCS1"   1, encryption        00 02 PS 00 M; PS random, no octet zero             k - 11  RFC 8017, 7.2
///   "PKCS1"   0, signature         00 01 FF.. 00 M                                     k - 11  RFC 8017, 9.2
///   "OAEP"    encryption           00 maskedSeed maskedDB; SHA-1, MGF1 with SHA-1      k - 42  RFC 8017, 7.1
///   "X_931"   signature            6B BB.. BA H id CC; H a hash of m bytes             k - 12  ANSI X9.31
///
/// What differs from the standards, all of it kept on purpose:
///
/// * PKCS1 signature: M is the whole DigestInfo; the caller makes it. There is no decoding.
/// * PKCS1 encryption: an octet of PS is a random octet plus 1; what would be 00 (from FF) becomes 02, and FF (from FE)
///   becomes 01. An empty message is encoded and never decoded: the last octet of a block is no separator.
/// * OAEP: decoding takes the octet after the label's hash for padding, whatever it is. So a message of k - 42 bytes is
///   encoded and does not come back: its block is refused, or yields what follows an 01 that only zeros precede in it.
///   The longest that comes back has k - 43 bytes.
/// * X_931: decoding wants at least ten octets between 6B and BA, so the longest hash that comes back has k - 14 bytes.
///   These octets need not be BB, the first BA ends them, and id is not compared with the option.
///
/// An object has no state beyond k and the parameter map, which it borrows and reads at each call.
///
/// What an observer of time, caches or branches learns from decoding. Signatures are public, and X_931 hides nothing.
/// The two decodings of encrypted messages read the whole block in the same way whatever is in it, with no branch and
/// no address that depends on it, and then tell
///   OAEP    whether the block is accepted; if so, the length of the message;
///   PKCS1   whether the block is accepted; if so, the length of the message; if not, whether its first two octets
///           were right, because the trace says so.
/// Whoever decodes PKCS1 for a peer must not let him see whether a block was accepted: that bit, the length, or a trace
/// that he can read opens any message to him, in some thousands to a million of tries. OAEP has no such weakness.
class RZ_CRYPTO_API IPadding {
 public:
  /// Create returns a new padding for blocks of `keyLength` bytes, which borrows `parameters`. The caller deletes it.
  /// Options: "PKCS1" needs the PKCS#1 operation, "X_931" the hash identifier; "OAEP" needs the label (an empty one
  /// will do) at each call. Type names are exact. Throws
  ///   4000 "Bad Parameters"                          `parameters` is null
  ///   4000 "Hash alogo Padding type is not set"      "X_931" without the hash identifier
  ///   4000 "Pkcs1 operation parameter is not set"    "PKCS1" without the operation
  ///   4000 "Pkcs1 operation parameter is invalid"    an operation other than 0 and 1
  ///   4007 "Padding type is not supported"           any other type
  static IPadding* Create(const SecureString& paddingType, unsigned int keyLength,
                          ICryptoParserParameterMap* parameters);

  virtual ~IPadding() = default;

  /// EncodeData writes a block of k bytes into `encoded`, which is cleared first and may be `messageToEncode`. Throws
  ///   4000 "Data to Encode Length is invalid"        more than m bytes, or a k that leaves no room for any message
  ///   4000 "EncodingParameters is not set"           OAEP: no label in the map
  ///   4000 "Hash Algo X931 is not set"               X_931: no hash identifier in the map
  ///   "GenerateRandom failed"                        PKCS1 encryption, OAEP: there are no random octets, with the
  ///                                                  identifier of the cause; no block is made with anything less
  ///   "Digest failed", "RsaOaep_MGF failed"          OAEP: SHA-1 failed, with the identifier of the cause
  virtual void EncodeData(const ByteArray& messageToEncode, ByteArray& encoded) = 0;

  /// DecodeData takes the message out of a block of k bytes and returns true, or returns false for a block that is
  /// malformed, after a trace line. `decoded` is cleared first and may be `messageToDecode`. Throws
  ///   4002 "This function is not supported"          PKCS1 signature: always
  ///   4000 "EncodingParameters is not set"           OAEP: no label in the map
  ///   4000 "Data to Decode Length is invalid"        OAEP: not k bytes, for which the others return false
  ///   "Digest failed", "RsaOaep_MGF failed"          OAEP: SHA-1 failed, with the identifier of the cause
  virtual bool DecodeData(const ByteArray& messageToDecode, ByteArray& decoded) = 0;
};

}  // namespace Tavo::Framework

#endif
