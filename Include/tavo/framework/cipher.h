#ifndef TAVO_FRAMEWORK_CIPHER_H
#define TAVO_FRAMEWORK_CIPHER_H

#include "rz/cext.h"

namespace Tavo::Framework {

class IAlgorithm;
class ICertificate;
class ICryptoParserParameterMap;
class IKey;

enum CipherOperation : int { ENCRYPT_MODE = 0, DECRYPT_MODE = 1, WRAP_MODE = 2, UNWRAP_MODE = 3 };

/// Cipher encrypts and decrypts: DES (FIPS 46-3), two- and three-key triple DES (SP 800-67), AES-128 (FIPS 197) in ECB
/// or CBC mode (SP 800-38A), and RSA (RFC 8017) on one block.
///
/// One object does one message at a time: Init, any number of Update, then DoFinal, which gives the whole result and
/// ends the message; the next message needs Init again. Nothing comes out before DoFinal: the whole message is held in
/// wiping memory. A DoFinal that throws leaves the message and the state as they were, so that the options or nothing
/// can be changed and DoFinal called again. One thread at a time.
///
/// Options, read from the parameter map at each DoFinal:
///
///   option                 DES, 3DES, AES                            RSA
///   SetCipherMode          "ECB" or "CBC"; required                  not read
///   SetPadding             "PKCS7" or "None" (default)               "PKCS1", "OAEP" or "None" (default)
///   SetIv                  CBC: the first block of it; none or an    not read
///                          empty one is a block of zeros
///   SetOaepEncodingParam   not read                                  OAEP: must be absent or empty
///
/// PKCS7 pads to whole blocks (RFC 5652, section 6.3); without padding the data must be whole blocks, none included.
/// ECB shows equal blocks, a fixed IV equal beginnings, and no mode here authenticates: put a MAC over the result.
/// "OAEP" is OAEP with SHA-1, MGF1 and an empty label. "None" for RSA takes a block of exactly the modulus's length
/// whose number is below the modulus. Whether a PKCS1 or PKCS7 decryption fails or succeeds tells an attacker who can
/// choose ciphertexts the plaintext: do not let him see it.
///
/// Keys. DES uses the first 8 bytes, 3DES the first 24 (a key of 16 bytes is K1 K2 K1), AES the first 16: a longer AES
/// key runs AES-128 as well. Parity bits are ignored. RSA encrypts with a public key and decrypts with a private key of
/// this library.
class RZ_CRYPTO_API Cipher {
 public:
  /// Create returns a new cipher for `algorithm`: "DES", "3DES", "AES" or "RSA". It borrows both arguments. The caller
  /// deletes it. Throws 4000 "pAlgorithm should not be NULL" or "Bad Parameters" for a null argument, 4011 in FIPS
  /// mode, 4006 "Unknown algorithm" for any other name.
  static Cipher* Create(IAlgorithm* algorithm, ICryptoParserParameterMap* parameters);

  virtual ~Cipher() = default;
  /// GetAlgorithm lends the algorithm that Create was given.
  virtual IAlgorithm* GetAlgorithm() = 0;
  /// Init starts a message under `key`, which is borrowed until DoFinal and not looked at before. `operation` is a
  /// CipherOperation. Throws 4000 "pKey should not be NULL", 4009 "Cipher is already initialized" while a message is
  /// under way, 4000 "Unknown operation".
  virtual void Init(int operation, IKey* key) = 0;
  /// Init starts a message under the public key of `certificate`, which must live until DoFinal. Throws 4000
  /// "pCertificate should not be NULL", 4009 and 4000 as above. When the certificate has no usable key, RSA passes its
  /// exception on, the others throw "Unable to retrieve the certificate public key" with its identifier. A certificate
  /// that lends no key is refused by DoFinal: 4002.
  virtual void Init(int operation, ICertificate* certificate) = 0;
  /// DoFinal appends `in` to the message and ends it as the other DoFinal does. `in` and `out` may be the same array.
  virtual void DoFinal(const ByteArray& in, ByteArray& out) = 0;
  /// DoFinal runs the operation over the message, writes the result into `out` and ends the message.
  ///
  /// Throws 4009 "Cipher is not initialized" and 4000 "Invalid operation" for WRAP_MODE and UNWRAP_MODE. DES, 3DES and
  /// AES wrap everything else into "Cipher failed" with the identifier of its cause, an inner exception, checked in
  /// this order (names are those of encryption; decryption has EVP_Decrypt...):
  ///
  ///   4004  "Error while parsing parameters"       a parameter map of the caller's own throws
  ///   4000  "No cipher mode in params"
  ///   4006  "Unsupported algorithm"                the algorithm has another name than it had in Create
  ///   4002  "Unsupported cipher mode"
  ///   4007  "Unsupported padding"
  ///   4002  "Only raw key format is supported"     or there is no key
  ///   4010  "Invalid key size"                     the key is too short
  ///   4000  "Invalid IV length"                    the IV is too short
  ///   4003  "EVP_EncryptInit failure"              the host's libcrypto lacks the cipher
  ///   4003  "EVP_EncryptUpdate failure"            the message has more than 2^31 - 1 bytes
  ///   4003  "EVP_EncryptFinal failure"             the data have a wrong length or padding
  ///
  /// RSA throws 4000 "OpenSsl support only RSA OAEP with empty encoding parameter", 4007 "Unsupported padding", 4002
  /// "Only Openssl RSA Public keys are supported" or "... Private keys ...", 4013 "Unsupported padding with this
  /// datalen", 4003 "Unable to encrypt data" or "Unable to decrypt data".
  virtual void DoFinal(ByteArray& out) = 0;
  /// Update appends `in` to the message. Throws 4009 "Cipher is not initialized".
  virtual void Update(const ByteArray& in) = 0;
  /// Unwrap and Wrap are not available: they throw 4009 "Cipher is not initialized" before Init, 4000 "Invalid
  /// operation" unless Init was given UNWRAP_MODE or WRAP_MODE, else 4001 "Not Implemented".
  virtual IKey* Unwrap(const ByteArray& wrapped, IAlgorithm* keyAlgorithm) = 0;
  virtual void Wrap(IKey* key, ByteArray& out) = 0;
};

}  // namespace Tavo::Framework

#endif
