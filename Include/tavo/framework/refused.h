#ifndef TAVO_FRAMEWORK_REFUSED_H
#define TAVO_FRAMEWORK_REFUSED_H

#include "rz/cext.h"

namespace Tavo::Framework {

class IAlgorithm;
class ICryptoParserParameterMap;

/// The services below do not exist on this platform. Their factories are here so that callers compile and fail
/// cleanly; none ever returns an object.

class RZ_CRYPTO_API KeyDerivation {
 public:
  /// Create throws 4000 "pAlgorithm should not be NULL" or "Bad Parameters" for a null argument, 4011 in FIPS mode,
  /// else 4001 "Not Implemented".
  static KeyDerivation* Create(IAlgorithm* algorithm, ICryptoParserParameterMap* parameters);
  virtual ~KeyDerivation() = 0;
};
inline KeyDerivation::~KeyDerivation() = default;

class RZ_CRYPTO_API KeyAgreement {
 public:
  /// Create throws what KeyDerivation::Create throws.
  static KeyAgreement* Create(IAlgorithm* algorithm, ICryptoParserParameterMap* parameters);
  virtual ~KeyAgreement() = 0;
};
inline KeyAgreement::~KeyAgreement() = default;

class RZ_CRYPTO_API IECDomainParameters {
 public:
  /// Create throws 4001 "Not Implemented".
  static IECDomainParameters* Create();
  virtual ~IECDomainParameters() = 0;
};
inline IECDomainParameters::~IECDomainParameters() = default;

class RZ_CRYPTO_API ICertSystemStore {
 public:
  /// Load throws 4000 "Not supported on linux".
  static ICertSystemStore* Load(const SecureString& name);
  virtual ~ICertSystemStore() = 0;
};
inline ICertSystemStore::~ICertSystemStore() = default;

}  // namespace Tavo::Framework

#endif
