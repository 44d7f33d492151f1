#ifndef RZ_OPENSSL_RSASIZE_H
#define RZ_OPENSSL_RSASIZE_H

#include <openssl/rsa.h>

#include <cstddef>

namespace Tavo::Framework {

/// ModulusLength returns the length of the key's modulus in bytes, and 0 for null and for a key without a modulus,
/// which libcrypto's operations would follow to a null pointer.
inline size_t ModulusLength(const RSA* rsa) {
  if (rsa == nullptr || RSA_get0_n(rsa) == nullptr) return 0;
  const int size = RSA_size(rsa);
  return size > 0 ? static_cast<size_t>(size) : 0;
}

}  // namespace Tavo::Framework

#endif
