#ifndef RZ_CRYPTO_CHAININGCIPHER_H
#define RZ_CRYPTO_CHAININGCIPHER_H

#include <span>

#include "tavo/framework/cipher.h"

namespace Tavo::Framework {

/// ChainingCipher is what a MAC needs of a block cipher, and Cipher::Create makes one of each.
class ChainingCipher : public Cipher {
 public:
  /// Chain encrypts `blocks`, whole ones, in place: in CBC mode from a block of zeros, whatever the options say. The
  /// chain goes on from one call to the next, so that a message can come in pieces. Init must have been given
  /// ENCRYPT_MODE; the cipher then keeps the expanded key as long as it lives. Fails as DoFinal does.
  virtual void Chain(std::span<unsigned char> blocks) = 0;
};

}  // namespace Tavo::Framework

#endif
