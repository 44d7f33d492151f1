#ifndef RZ_CRYPTO_CHAININGCIPHER_H
#define RZ_CRYPTO_CHAININGCIPHER_H

#include <span>

#include "tavo/framework/cipher.h"

namespace Tavo::Framework {

/// ChainingCipher is what a MAC needs of a block cipher: what Cipher::Create makes for one is a ChainingCipher too.
class ChainingCipher : public Cipher {
 public:
  /// Chain encrypts `blocks`, whole ones, in place: with AES-128 in CBC mode from a block of zeros, whatever the
  /// algorithm and the options say. The chain goes on from one call to the next, so that a message can come in pieces.
  /// Init must have been given ENCRYPT_MODE; the cipher then keeps the expanded key as long as it lives. Fails as
  /// DoFinal does.
  virtual void Chain(std::span<unsigned char> blocks) = 0;
};

}  // namespace Tavo::Framework

#endif
