#include "rz.crypto.openssl.keygenerator.h"

#include <new>

#include "../common/rz.crypto.soft.mlocksecretkey.h"
#include "../common/rz.crypto.trace.h"
#include "rz.openssl.random.h"

namespace Tavo::Framework {

namespace {

constexpr Module kModule{"Sources/openssl/rz.crypto.openssl.keygenerator"};

/// The bytes of a key, still zero.
ByteArray NewBlock(int keySize) {
  try {
    if (keySize >= 0) return ByteArray(static_cast<size_t>(keySize));
  } catch (const std::bad_alloc&) {
    LogDetail("COpensslKeyGenerator::GenerateKey : no memory for %d bytes", keySize);
  }
  LogError("COpensslKeyGenerator::GenerateKey : malloc failure");
  throw kModule.Error(92, "malloc failure", CRYPTO_UNKNOWN_ERROR);
}

}  // namespace

COpensslKeyGenerator::COpensslKeyGenerator(IAlgorithm* algorithm, ICryptoParserParameterMap*)
    : m_pAlgorithm(algorithm) {
  Traced("COpensslKeyGenerator::COpensslKeyGenerator", this, [] { SeedUnseededPool(); });
}

COpensslKeyGenerator::~COpensslKeyGenerator() {
  Traced("COpensslKeyGenerator::~COpensslKeyGenerator", this, [] {});
}

ISecretKey* COpensslKeyGenerator::GenerateKey(int keySize) {
  return Traced("COpensslKeyGenerator::GenerateKey", this, [&]() -> ISecretKey* {
    if (keySize == 0) {
      LogError("COpensslKeyGenerator::GenerateKey : nKeySize value is 0");
      return nullptr;
    }
    ByteArray key = NewBlock(keySize);
    if (!FillRandomly(key.data(), keySize, "COpensslKeyGenerator::GenerateKey")) return nullptr;
    return new CMLockSoftSecretKey(m_pAlgorithm, key);
  });
}

ISecretKey* COpensslKeyGenerator::GenerateKey(int, const ByteArray&) {
  return Traced("COpensslKeyGenerator::GenerateKey", this,
                []() -> ISecretKey* { throw kModule.Error(135, "Not Implemented", CRYPTO_NOT_IMPLEMENTED); });
}

}  // namespace Tavo::Framework
