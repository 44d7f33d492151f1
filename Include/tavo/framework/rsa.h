#ifndef TAVO_FRAMEWORK_RSA_H
#define TAVO_FRAMEWORK_RSA_H

#include "tavo/framework/key.h"

namespace Tavo::Framework {

class ICryptoParserParameterMap;

/// IRSAPublicKey is an RSA public key. Its encoding is a DER RSAPublicKey (RFC 8017, A.1.1). Numbers cross this
/// interface least significant byte first; those of the encoding are most significant byte first as DER wants it.
///
/// What a key is made of is not validated. With a modulus of 0 the operation that uses the key throws 4002; but with an
/// exponent of 1 encryption puts the padded message out in the clear and anybody can make a signature that verifies;
/// with 0 encryption gives the number 1, and every signature opens to it. Who takes keys from where he does not trust
/// them checks GetExponent and the length of the modulus first.
/// Errors of all operations: 4004 with the name of the DER step, such as "CSRSAPublicKey_DERDecode() failed".
class RZ_CRYPTO_API IRSAPublicKey : public IPublicKey {
 public:
  /// Create returns a new key of `algorithm`, of which it keeps a clone, from its two numbers, least significant byte
  /// first. The bytes are encoded as they are: give a modulus whose top bit is set a zero as its last byte if strict
  /// DER readers are to accept the encoding. The caller deletes the key.
  /// Throws 4000 "pAlgorithm should not be NULL", 4000 "Component RSA=empty!" for an empty number, 4003 "Unable to
  /// parse public key".
  ///
  /// IKey::Create with "X509" throws 4003 "Unable to parse certificate" for bytes that are no certificate, and 4003
  /// "Unable to parse public key" for a certificate of another kind of key.
  static IRSAPublicKey* Create(IAlgorithm* algorithm, const ByteArray& modulus, const ByteArray& exponent);

  /// GetExponent returns the public exponent as a number. Throws 4004 "CSASNInteger_ToUnsigned32() failed" when it has
  /// more than 32 bits.
  virtual unsigned int GetExponent() = 0;
  /// GetModulus assigns the modulus, least significant byte first, without one zero byte that the encoding has in
  /// front of it.
  virtual void GetModulus(ByteArray& modulus) = 0;
};

/// IRSAPrivateCRTKey is an RSA private key with its Chinese-remainder components. Its encoding is a DER PrivateKeyInfo
/// (RFC 5208) that holds an RSAPrivateKey (RFC 8017, A.1.2).
///
/// The byte order of the getters depends on where the key came from: a key made by Create gives back its arguments,
/// least significant byte first; every other key gives the contents of its encoding's INTEGERs, most significant byte
/// first, with the zero byte in front where there is one, except that the modulus comes without it.
///
/// Consistency is not checked. A key whose parts do not belong together fails when used or, with a public exponent of
/// 0, decrypts to nonsense.
class RZ_CRYPTO_API IRSAPrivateCRTKey : public IPrivateKey {
 public:
  /// Create returns a new key of `algorithm`, of which it keeps a clone, from its eight numbers, least significant byte
  /// first: the primes p and q, dP = d mod (p - 1), dQ = d mod (q - 1), qInv = 1/q mod p, the modulus, the public
  /// exponent e and the private exponent d. The caller deletes the key.
  /// Throws 4000 "pAlgorithm should not be NULL", 4000 "Component RSA=empty!" for an empty number, 4003 "Unable to
  /// parse private key".
  ///
  /// IKey::Create with "PKCS8" keeps the encoding as it is given, parameters and attributes included. It throws 4004
  /// with the name of the DER step, such as "CSPrivateKeyInfo_DERDecode() failed", and 4003 "Unable to parse private
  /// key".
  static IRSAPrivateCRTKey* Create(IAlgorithm* algorithm, const ByteArray& p, const ByteArray& q, const ByteArray& dP,
                                   const ByteArray& dQ, const ByteArray& qInv, const ByteArray& modulus,
                                   const ByteArray& publicExponent, const ByteArray& privateExponent);

  // The getters throw nothing. Their byte order is told above.

  /// GetPubExponent assigns the bytes of e.
  virtual void GetPubExponent(ByteArray& exponent) = 0;
  /// GetPrivExponent assigns the bytes of d: a secret, in the clear.
  virtual void GetPrivExponent(ByteArray& exponent) = 0;
  /// GetModulus assigns the bytes of the modulus n.
  virtual void GetModulus(ByteArray& modulus) = 0;
  /// GetPFactor assigns the bytes of the prime p: a secret, in the clear.
  virtual void GetPFactor(ByteArray& p) = 0;
  /// GetQFactor assigns the bytes of the prime q: a secret, in the clear.
  virtual void GetQFactor(ByteArray& q) = 0;
  /// GetPExponent assigns the bytes of dP = d mod (p - 1): a secret, in the clear.
  virtual void GetPExponent(ByteArray& dP) = 0;
  /// GetQExponent assigns the bytes of dQ = d mod (q - 1), a secret, in the clear; but a key made by Create answers
  /// with its dP here as well. That is kept for callers that rely on it; its encoding has the right dQ.
  virtual void GetQExponent(ByteArray& dQ) = 0;
  /// GetCRTCoefficient assigns the bytes of qInv = 1/q mod p: a secret, in the clear.
  virtual void GetCRTCoefficient(ByteArray& qInv) = 0;
};

/// KeyPair is a generated key pair.
class RZ_CRYPTO_API KeyPair {
 public:
  virtual ~KeyPair() = default;
  /// GetPublicKey and GetPrivateKey return a new key each time, independent of the pair, that the caller deletes; those
  /// of an RSA pair are an IRSAPublicKey and an IRSAPrivateCRTKey. Throw 4003 "Unable to encode public key" and "Unable
  /// to encode private key" for a pair that was generated without success (GenerateKeyPair).
  virtual IPublicKey* GetPublicKey() = 0;
  virtual IPrivateKey* GetPrivateKey() = 0;
};

using IKeyPair = KeyPair;

/// KeyPairGenerator makes RSA key pairs.
///
/// While a generator lives, the engine that libcrypto knows as "keystore", when the system has one, is the default for
/// RSA in the whole process: keys made meanwhile, by whomever, use it for good. The generator's end restores the
/// default; of several generators the first that ends restores it for all. Make and delete generators while no other
/// thread makes RSA keys. libcrypto looks for the engine's module where its own environment says (OPENSSL_ENGINES).
class RZ_CRYPTO_API KeyPairGenerator {
 public:
  /// Create returns a new generator that borrows `algorithm`, which must be named "RSA"; `parameters` is read here
  /// only. The caller deletes the generator.
  /// Throws 4000 "pAlgorithm should not be NULL" or "Bad Parameters" for a null argument, 4011 in FIPS mode, 4000
  /// "algorithm not supported on linux" for any other algorithm.
  static KeyPairGenerator* Create(IAlgorithm* algorithm, ICryptoParserParameterMap* parameters);

  virtual ~KeyPairGenerator() = default;
  /// GetAlgorithm returns the pointer given to Create.
  virtual IAlgorithm* GetAlgorithm() = 0;
  /// GenerateKeyPair returns a new key pair with a modulus of `bits` bits and the public exponent 65537. The caller
  /// deletes it. It takes as long as it takes: the time grows with the fourth power of the size, and nothing interrupts
  /// it. A size that the engine refuses (libcrypto refuses less than 512 bits) and a failing random source give a pair
  /// without keys, whose getters throw. Throws 4003 "RSA_generate_key_ex failure" when the engine breaks down.
  virtual KeyPair* GenerateKeyPair(int bits) = 0;
  /// The second GenerateKeyPair throws 4001 "Not Implemented".
  virtual KeyPair* GenerateKeyPair(int bits, const ByteArray& publicExponent) = 0;
};

}  // namespace Tavo::Framework

#endif
