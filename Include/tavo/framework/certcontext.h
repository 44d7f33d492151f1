#ifndef TAVO_FRAMEWORK_CERTCONTEXT_H
#define TAVO_FRAMEWORK_CERTCONTEXT_H

#include "rz/cext.h"

namespace Tavo::Framework {

class ICertificate;
class IPrivateKey;

/// ICertContext is a certificate together with its private key. It owns clones of both, either of which may be missing.
class RZ_CRYPTO_API ICertContext {
 public:
  /// Create returns a new context with clones of the certificate and the key. A null key leaves the context without
  /// one; a null certificate leaves it empty, whatever the key. The caller deletes it.
  /// Throws "new CCertContext() failed" with the identifier of the cause, an inner exception, when a clone fails.
  static ICertContext* Create(ICertificate* certificate, IPrivateKey* privateKey);
  static ICertContext* Create(ICertificate* certificate);

  virtual ~ICertContext() = default;
  /// Clone returns a new context with clones of its own. The caller deletes it.
  /// Throws "Clone : new CCertContext() failed" with the identifier of the cause, an inner exception.
  virtual ICertContext* Clone() const = 0;
  /// GetCertificate and GetPrivateKey lend the object, or null when the context has none.
  virtual ICertificate* GetCertificate() = 0;
  virtual IPrivateKey* GetPrivateKey() = 0;
};

}  // namespace Tavo::Framework

#endif
