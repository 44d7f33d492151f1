#ifndef TAVO_FRAMEWORK_ALGORITHM_H
#define TAVO_FRAMEWORK_ALGORITHM_H

#include <cstddef>
#include <memory>

#include "rz/cext.h"

namespace Tavo::Framework {

/// IAlgorithmParameters holds the DER encoding of an algorithm's parameters (the parameters field of an
/// AlgorithmIdentifier), uninterpreted.
class RZ_CRYPTO_API IAlgorithmParameters : public DataMap2 {
 public:
  /// Create returns new, empty parameters. The caller deletes them.
  static IAlgorithmParameters* Create();

  ~IAlgorithmParameters() override = default;
  /// Clone returns a copy. The caller deletes it.
  virtual IAlgorithmParameters* Clone() const = 0;
  /// SetEncoded stores `encoded` and replaces what was there.
  virtual void SetEncoded(const ByteArray& encoded) = 0;
  /// GetEncoded assigns the stored bytes and returns true; returns false and leaves `encoded` alone when there are
  /// none.
  virtual bool GetEncoded(ByteArray& encoded) const = 0;
};

/// IAlgorithm names an algorithm by object identifier (dotted decimal) and by friendly name, and carries its
/// parameters. Services choose their implementation by the friendly name.
class RZ_CRYPTO_API IAlgorithm {
 public:
  /// CreateFromOID and CreateFromFriendlyName look the algorithm up in the registry (ListAlgorithms); the match is
  /// exact and case-sensitive. `parameters` is cloned. The caller deletes the result. Throws 4006 "Unsupported
  /// algorithm" for one that is not registered, 4000 "pParameters should not be NULL" for null parameters.
  static IAlgorithm* CreateFromOID(const SecureString& oid, IAlgorithmParameters* parameters);
  static IAlgorithm* CreateFromFriendlyName(const SecureString& name, IAlgorithmParameters* parameters);

  virtual ~IAlgorithm() = default;
  /// Clone returns a copy with its own parameters. The caller deletes it.
  virtual IAlgorithm* Clone() const = 0;
  /// GetOID returns the dotted object identifier, or "Unknown OID" for an algorithm that has none.
  virtual SecureString GetOID() = 0;
  virtual SecureString GetFriendlyName() = 0;
  /// GetParameters lends the parameters, which may be changed in place as long as the algorithm lives.
  virtual IAlgorithmParameters* GetParameters() = 0;
};

/// CAlgorithm is the one implementation; its constructor takes any name, registered or not.
class RZ_CRYPTO_API CAlgorithm : public IAlgorithm {
 public:
  /// The constructor clones `parameters`. Throws 4000 "pParameters should not be NULL".
  CAlgorithm(const SecureString& oid, const SecureString& friendlyName, IAlgorithmParameters* parameters);
  CAlgorithm(const CAlgorithm& other);
  CAlgorithm& operator=(const CAlgorithm&) = delete;
  ~CAlgorithm() override;

  IAlgorithm* Clone() const override;
  SecureString GetOID() override;
  SecureString GetFriendlyName() override;
  IAlgorithmParameters* GetParameters() override;

 private:
  SecureString m_sOID;
  SecureString m_sFriendlyName;
  std::unique_ptr<IAlgorithmParameters> m_pParameters;  // null: empty, and not asked for yet
};

/// AlgorithmEntry is one row of the registry. The texts live as long as the library is loaded.
struct AlgorithmEntry {
  const char* friendlyName;
  const char* oid;     ///< dotted decimal, or "Unknown OID"
  const char* family;  ///< "digest", "MAC", "block cipher", ...
  bool fromOID;        ///< whether CreateFromOID knows it
};

/// ListAlgorithms returns the rows of the registry, in the order in which they are searched, and sets `count` to their
/// number.
RZ_CRYPTO_API const AlgorithmEntry* ListAlgorithms(std::size_t& count);

}  // namespace Tavo::Framework

#endif
