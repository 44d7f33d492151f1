#include "rz.crypto.certcontext.h"

#include "rz.crypto.trace.h"

namespace Tavo::Framework {

namespace {

constexpr Module kModule{"Sources/common/rz.crypto.certcontext"};

/// Says whether there is a certificate at all; without one a context stays empty.
bool LogCertificate(const ICertificate* certificate) {
  if (certificate == nullptr) {
    LogStep("CCertContext::CCertContext : pCertificate=empty!");
    return false;
  }
  LogDetail("CCertContext::CCertContext : pCertificate=%#x", Address(certificate));
  return true;
}

std::unique_ptr<IPrivateKey> ClonePrivateKey(const IPrivateKey& key) {
  std::unique_ptr<IKey> clone(key.Clone());
  std::unique_ptr<IPrivateKey> privateKey(dynamic_cast<IPrivateKey*>(clone.get()));
  if (!privateKey) throw kModule.Error(__LINE__, "IPrivateKey::Clone() failed", CRYPTO_INTERNAL_ERROR);
  clone.release();  // NOLINT(bugprone-unused-return-value): both point at the same key
  return privateKey;
}

}  // namespace

CCertContext::CCertContext(ICertificate* pCertificate) {
  Traced("CCertContext::CCertContext", this, [&] {
    if (LogCertificate(pCertificate)) m_pCertificate.reset(pCertificate->Clone());
  });
}

CCertContext::CCertContext(ICertificate* pCertificate, IPrivateKey* pPrivateKey) {
  Traced("CCertContext::CCertContext", this, [&] {
    if (!LogCertificate(pCertificate)) return;
    if (pPrivateKey == nullptr) {
      LogStep("CCertContext::CCertContext : pPrivateKey=empty!");
    } else {
      LogDetail("CCertContext::CCertContext : pPrivateKey=%#x", Address(pPrivateKey));
    }
    m_pCertificate.reset(pCertificate->Clone());
    if (pPrivateKey != nullptr) m_pPrivateKey = ClonePrivateKey(*pPrivateKey);
  });
}

CCertContext::~CCertContext() {
  Traced("CCertContext::~CCertContext", this, [&] {
    m_pPrivateKey.reset();
    m_pCertificate.reset();
  });
}

ICertContext* CCertContext::Clone() const {
  return Traced("CCertContext::Clone", this, [&] {
    ICertContext* pCertContext = Rewrapping(kModule, 43, "Clone : new CCertContext() failed", [&] {
      return m_pPrivateKey ? new CCertContext(m_pCertificate.get(), m_pPrivateKey.get())
                           : new CCertContext(m_pCertificate.get());
    });
    LogDetail("CCertContext::Clone : pCertContext=%#x", Address(pCertContext));
    return pCertContext;
  });
}

ICertificate* CCertContext::GetCertificate() {
  return Traced("CCertContext::GetCertificate", this, [&] {
    LogDetail("CCertContext::GetCertificate : m_pCertificate=%#x", Address(m_pCertificate.get()));
    return m_pCertificate.get();
  });
}

IPrivateKey* CCertContext::GetPrivateKey() {
  return Traced("CCertContext::GetPrivateKey", this, [&] {
    LogDetail("CCertContext::GetPrivateKey : m_pPrivateKey=%#x", Address(m_pPrivateKey.get()));
    return m_pPrivateKey.get();
  });
}

}  // namespace Tavo::Framework
