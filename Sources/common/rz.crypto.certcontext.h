#ifndef RZ_CRYPTO_CERTCONTEXT_H
#define RZ_CRYPTO_CERTCONTEXT_H

#include <memory>

#include "tavo/framework/certcontext.h"
#include "tavo/framework/certificate.h"
#include "tavo/framework/key.h"

namespace Tavo::Framework {

class CCertContext final : public ICertContext {
 public:
  explicit CCertContext(ICertificate* pCertificate);
  CCertContext(ICertificate* pCertificate, IPrivateKey* pPrivateKey);
  CCertContext(const CCertContext&) = delete;
  CCertContext& operator=(const CCertContext&) = delete;
  ~CCertContext() override;

  ICertContext* Clone() const override;
  ICertificate* GetCertificate() override;
  IPrivateKey* GetPrivateKey() override;

 private:
  std::unique_ptr<ICertificate> m_pCertificate;
  std::unique_ptr<IPrivateKey> m_pPrivateKey;
};

}  // namespace Tavo::Framework

#endif
