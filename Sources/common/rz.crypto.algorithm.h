#ifndef RZ_CRYPTO_ALGORITHM_H
#define RZ_CRYPTO_ALGORITHM_H

#include <memory>

#include "tavo/framework/algorithm.h"

namespace Tavo::Framework {

class CAlgorithmParameters final : public IAlgorithmParameters {
 public:
  IAlgorithmParameters* Clone() const override;
  void SetEncoded(const ByteArray& encoded) override;
  bool GetEncoded(ByteArray& encoded) const override;
  /// Encoded lends the stored bytes, or returns null when there are none.
  const ByteArray* Encoded() const;
};

/// FindAlgorithmByName and FindAlgorithmByOID return the registry's row, or null.
const AlgorithmEntry* FindAlgorithmByName(const SecureString& name);
const AlgorithmEntry* FindAlgorithmByOID(const SecureString& oid);

/// CloneOrNull returns a copy of `algorithm`, nothing for null: for the constructors that check for null only after
/// their entry line.
inline std::unique_ptr<IAlgorithm> CloneOrNull(const IAlgorithm* algorithm) {
  return std::unique_ptr<IAlgorithm>(algorithm != nullptr ? algorithm->Clone() : nullptr);
}

}  // namespace Tavo::Framework

#endif
