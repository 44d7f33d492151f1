#ifndef RZ_OPENSSL_KEYSTORE_H
#define RZ_OPENSSL_KEYSTORE_H

#include "rz.openssl.owners.h"

namespace Tavo::Framework {

/// KeystoreEngine makes libcrypto's engine "keystore" the process's default for RSA between Select and Release, for the
/// RSA key-pair generator, under whose name it logs. Without such an engine, or when it does not work, libcrypto's own
/// code stays the default; that is no error. Always so where libcrypto has no engines at all.
class KeystoreEngine {
 public:
  void Select();
  void Release();

 private:
#ifndef OPENSSL_NO_ENGINE
  const char* TrySelect();
  void Restore();

  OpensslEngine m_engine;
  OpensslEngineInUse m_inUse;
#endif
};

}  // namespace Tavo::Framework

#endif
