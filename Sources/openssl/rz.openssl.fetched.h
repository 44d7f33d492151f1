#ifndef RZ_OPENSSL_FETCHED_H
#define RZ_OPENSSL_FETCHED_H

#include <openssl/evp.h>

#include <atomic>
#include <mutex>

#include "rz.openssl.errors.h"

namespace Tavo::Framework {

/// Fetched is a libcrypto algorithm by name, fetched at its first use and kept as long as the process lives: naming
/// EVP_sha256() and the like in an init call costs a look-up by name each time. It is not released at exit, when
/// libcrypto may be gone already. A fetch that fails is tried again at the next use.
template <class Algorithm, Algorithm* (*Fetch)(OSSL_LIB_CTX*, const char*, const char*)>
class Fetched {
 public:
  constexpr explicit Fetched(const char* name) : m_name(name) {}

  /// Get returns the algorithm, or null when no provider has it.
  const Algorithm* Get() const {
    const Algorithm* found = m_algorithm.load(std::memory_order_acquire);
    return found != nullptr ? found : GetFirst();
  }

 private:
  const Algorithm* GetFirst() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const OpensslErrors errors;
    if (m_algorithm.load(std::memory_order_relaxed) == nullptr) {
      m_algorithm.store(Fetch(nullptr, m_name, nullptr), std::memory_order_release);
    }
    return m_algorithm.load(std::memory_order_relaxed);
  }

  const char* m_name;
  mutable std::atomic<const Algorithm*> m_algorithm{nullptr};
  mutable std::mutex m_mutex;
};

using FetchedDigest = Fetched<EVP_MD, EVP_MD_fetch>;
using FetchedCipher = Fetched<EVP_CIPHER, EVP_CIPHER_fetch>;

}  // namespace Tavo::Framework

#endif
