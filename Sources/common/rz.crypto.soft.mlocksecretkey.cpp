#include "rz.crypto.soft.mlocksecretkey.h"

#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>

#include "rz.crypto.algorithm.h"
#include "rz.crypto.trace.h"
#include "xor.h"

namespace Tavo::Framework {

namespace {

constexpr Module kModule{"Sources/common/rz.crypto.soft.mlocksecretkey"};

constexpr std::size_t kMaskLength = 16;

/// The mask hides a key from someone who looks through memory or a swap file for it, no more. It exists only while it
/// is used: the volatile stores keep the compiler from putting the sixteen bytes together as a constant.
class Mask {
 public:
  Mask() { Put(0x5b, 0xd2, 0x37, 0x8e, 0xa9, 0x14, 0xf6, 0x61, 0x2c, 0xc5, 0x9a, 0x73, 0xe8, 0x0d, 0xb4, 0x4f); }
  Mask(const Mask&) = delete;
  Mask& operator=(const Mask&) = delete;
  ~Mask() { explicit_bzero(m_bytes, sizeof m_bytes); }

  void Apply(unsigned char* bytes, std::size_t size) const {
    for (; size > kMaskLength; bytes += kMaskLength, size -= kMaskLength) XorInto(bytes, m_bytes, kMaskLength);
    XorInto(bytes, m_bytes, size);
  }

 private:
  template <class... Byte>
  void Put(Byte... bytes) {
    static_assert(sizeof...(bytes) == kMaskLength);
    volatile unsigned char* to = m_bytes;
    (Store(*to++, bytes), ...);
  }
  static void Store(volatile unsigned char& to, int byte) { to = static_cast<unsigned char>(byte); }

  unsigned char m_bytes[kMaskLength];
};

}  // namespace

std::size_t LockedPage::Size() { return static_cast<std::size_t>(getpagesize()); }

int LockedPage::Allocate() {
  void* page = valloc(Size());
  // Without memory the lock fails as well. A page that cannot be locked is left allocated on purpose: it has held
  // nothing, and the limit that was met is on locked memory.
  if (mlock(page, Size()) != 0) return errno;  // NOLINT(clang-analyzer-unix.Malloc)
  m_pMemory = static_cast<unsigned char*>(page);
  return 0;
}

void LockedPage::Release() {
  if (m_pMemory == nullptr) return;
  explicit_bzero(m_pMemory, Size());
  if (munlock(m_pMemory, Size()) != 0) {
    LogError("CMLockSoftSecretKey::~CMLockSoftSecretKey : munlock failed due to error 0x%x",
             static_cast<unsigned int>(errno));
  }
  free(m_pMemory);
  m_pMemory = nullptr;
}

CMLockSoftSecretKey::CMLockSoftSecretKey(IAlgorithm* algorithm, const ByteArray& key)
    : m_pAlgorithm(CloneOrNull(algorithm)) {
  Traced("CMLockSoftSecretKey::CMLockSoftSecretKey", this, [&] {
    if (!m_pAlgorithm) throw kModule.Error(__LINE__, "pAlgorithm should not be NULL", CRYPTO_BAD_PARAM);
    ByteArray masked;
    Obfuscate(key, masked);
    if (LockedPage::Size() < masked.size()) {
      LogError("CMLockSoftSecretKey::CMLockSoftSecretKey : page size too small (%d < %d)",
               static_cast<int>(LockedPage::Size()), static_cast<int>(key.size()));
      throw kModule.Error(44, "page size too small", CRYPTO_UNKNOWN_ERROR);
    }
    if (const int error = m_lockedMemory.Allocate()) {
      LogError("CMLockSoftSecretKey::CMLockSoftSecretKey : mlock failed due to error 0x%x",
               static_cast<unsigned int>(error));
      throw kModule.Error(52, "mlock failed", CRYPTO_UNKNOWN_ERROR);
    }
    m_keyLength = masked.size();
    if (m_keyLength != 0) memcpy(m_lockedMemory.data(), masked.data(), m_keyLength);
  });
}

CMLockSoftSecretKey::~CMLockSoftSecretKey() {
  Traced("CMLockSoftSecretKey::~CMLockSoftSecretKey", this, [&] {
    m_lockedMemory.Release();
    m_pAlgorithm.reset();
  });
}

IKey* CMLockSoftSecretKey::Clone() const {
  return Traced("CMLockSoftSecretKey::Clone", this, [&] {
    ByteArray plain;
    Obfuscate(Masked(), plain);
    return new CMLockSoftSecretKey(m_pAlgorithm.get(), plain);
  });
}

SecureString CMLockSoftSecretKey::GetFormat() {
  return Traced("CMLockSoftSecretKey::GetFormat", this, [] { return SecureString("RAW"); });
}

void CMLockSoftSecretKey::GetEncoded(ByteArray& encoded) { Obfuscate(Masked(), encoded); }

void CMLockSoftSecretKey::Obfuscate(std::span<const unsigned char> in, ByteArray& out) {
  Traced("CMLockSoftSecretKey::Obfuscate", [&] {
    AssignBytes(out, in.data(), in.size());
    Mask().Apply(out.data(), out.size());
  });
}

}  // namespace Tavo::Framework
