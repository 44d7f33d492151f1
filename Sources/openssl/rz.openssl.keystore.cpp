#include "rz.openssl.keystore.h"

#include "../common/rz.crypto.trace.h"
#include "rz.openssl.errors.h"

namespace Tavo::Framework {

namespace {

constexpr const char* kConstructor = "COpensslRSAKeyPairGenerator::COpensslRSAKeyPairGenerator";

void LogNotAvailable() {
  LogDetail("%s : OpenSSL 'keystore' engine not available", kConstructor);
  LogDetail("%s : OpenSSL 'default' engine will be used for RSA crypto", kConstructor);
}

}  // namespace

#ifdef OPENSSL_NO_ENGINE

void KeystoreEngine::Select() { LogNotAvailable(); }

void KeystoreEngine::Release() {}

#else

namespace {

/// Whether any engine is the default for RSA. The question gives out a reference, which is given back at once: kept, it
/// would keep the engine alive for ever.
bool HasDefaultEngine() { return OpensslEngineInUse(ENGINE_get_default_RSA()) != nullptr; }

}  // namespace

void KeystoreEngine::Select() {
  const OpensslErrors errors;  // a system without the engine leaves four entries
  ENGINE_load_dynamic();
  m_engine.reset(ENGINE_by_id("keystore"));
  if (!m_engine) {
    LogNotAvailable();
    return;
  }
  if (const char* failure = TrySelect()) {
    LogError("%s : %s", kConstructor, failure);
    LogNotAvailable();
    Restore();
    return;
  }
  LogDetail("%s : OpenSSL 'keystore' engine will be used for RSA crypto", kConstructor);
}

/// Returns what failed, or null.
const char* KeystoreEngine::TrySelect() {
  // Only an engine that was initialised is finished later: one reference too few and libcrypto frees it in use.
  if (ENGINE_init(m_engine.get()) != 1) return "unexpected error: ENGINE_init failed!!!!";
  m_inUse.reset(m_engine.get());
  if (ENGINE_set_default_RSA(m_engine.get()) != 1) return "unexpected error: ENGINE_set_default_RSA failed!!!!";
  if (!HasDefaultEngine()) return "unexpected behavior: ENGINE_get_default_RSA not set!!!!!";
  return nullptr;
}

void KeystoreEngine::Restore() {
  ENGINE_unregister_RSA(m_engine.get());
  m_inUse.reset();
  m_engine.reset();
}

void KeystoreEngine::Release() {
  if (!m_engine) return;
  const OpensslErrors errors;
  Restore();
  if (HasDefaultEngine()) {
    LogError(
        "COpensslRSAKeyPairGenerator::~COpensslRSAKeyPairGenerator : unexpected behavior: ENGINE_get_default_RSA "
        "still set!!!!");
  } else {
    LogDetail(
        "COpensslRSAKeyPairGenerator::~COpensslRSAKeyPairGenerator : OpenSSL 'default' engine will be used for "
        "RSA crypto");
  }
}

#endif

}  // namespace Tavo::Framework
