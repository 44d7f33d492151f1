#ifndef RZ_CRYPTO_SOFT_MLOCKSECRETKEY_H
#define RZ_CRYPTO_SOFT_MLOCKSECRETKEY_H

#include <cstddef>
#include <memory>
#include <span>

#include "tavo/framework/algorithm.h"
#include "tavo/framework/key.h"

namespace Tavo::Framework {

/// LockedPage owns one page of memory that is locked against swapping. It is zeroed, unlocked and freed at the end.
class LockedPage {
 public:
  LockedPage() = default;
  LockedPage(const LockedPage&) = delete;
  LockedPage& operator=(const LockedPage&) = delete;
  ~LockedPage() { Release(); }

  /// Allocate gets and locks the page, once. Returns 0 or the errno of the failing lock; the object is then empty.
  int Allocate();
  void Release();
  unsigned char* data() const { return m_pMemory; }
  static std::size_t Size();  // bytes

 private:
  unsigned char* m_pMemory = nullptr;
};

class CMLockSoftSecretKey final : public ISecretKey {
 public:
  CMLockSoftSecretKey(IAlgorithm* algorithm, const ByteArray& key);
  CMLockSoftSecretKey(const CMLockSoftSecretKey&) = delete;
  CMLockSoftSecretKey& operator=(const CMLockSoftSecretKey&) = delete;
  ~CMLockSoftSecretKey() override;

  IKey* Clone() const override;
  IAlgorithm* GetAlgorithm() override { return m_pAlgorithm.get(); }
  SecureString GetFormat() override;
  void GetEncoded(ByteArray& encoded) override;

  /// Obfuscate masks, and unmasks what is masked. `in` and `out` may be the same array.
  static void Obfuscate(std::span<const unsigned char> in, ByteArray& out);

  /// LockedMemory lends the page, which begins with the masked key.
  const unsigned char* LockedMemory() const { return m_lockedMemory.data(); }

 private:
  std::span<const unsigned char> Masked() const { return {m_lockedMemory.data(), m_keyLength}; }

  std::unique_ptr<IAlgorithm> m_pAlgorithm;
  LockedPage m_lockedMemory;
  std::size_t m_keyLength = 0;  // bytes
};

}  // namespace Tavo::Framework

#endif
