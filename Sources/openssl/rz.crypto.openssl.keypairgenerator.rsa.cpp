#include "rz.crypto.openssl.keypairgenerator.rsa.h"

#include <ctime>

#include "../common/rz.crypto.trace.h"
#include "rz.crypto.openssl.rsakeypair.h"
#include "rz.openssl.errors.h"

namespace Tavo::Framework {

namespace {

constexpr Module kModule{"Sources/openssl/rz.crypto.openssl.keypairgenerator.rsa"};
constexpr const char* kGenerate = "COpensslRSAKeyPairGenerator::GenerateKeyPair";

double Seconds() {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
}

}  // namespace

COpensslRSAKeyPairGenerator::COpensslRSAKeyPairGenerator(IAlgorithm* algorithm, ICryptoParserParameterMap*)
    : m_pAlgorithm(algorithm) {
  Traced("COpensslRSAKeyPairGenerator::COpensslRSAKeyPairGenerator", this, [&] { m_engine.Select(); });
}

COpensslRSAKeyPairGenerator::~COpensslRSAKeyPairGenerator() {
  Traced("COpensslRSAKeyPairGenerator::~COpensslRSAKeyPairGenerator", this, [&] { m_engine.Release(); });
}

KeyPair* COpensslRSAKeyPairGenerator::GenerateKeyPair(int bits) {
  return Traced(kGenerate, [&] {
    const OpensslFence errors;
    const OpensslBignum exponent(BN_new());
    OpensslRSA rsa(RSA_new());
    if (!exponent || !rsa || BN_set_word(exponent.get(), RSA_F4) != 1) {
      throw kModule.Error(__LINE__, "malloc failure", CRYPTO_UNKNOWN_ERROR);
    }
    const double begin = Seconds();
    const int result = RSA_generate_key_ex(rsa.get(), bits, exponent.get(), nullptr);
    const double end = Seconds();
    if (result == -1) {
      const OpensslError error = errors.First();
      LogError("%s : RSA_generate_key_ex failed with error 0x%x (%s)", kGenerate, error.code, error.text);
      throw kModule.Error(165, "RSA_generate_key_ex failure", CRYPTO_UNKNOWN_ERROR);
    }
    LogDetail("%s : RSA_generate_key_ex took %f sec.", kGenerate, end - begin);
    // 0, as for a size that libcrypto refuses, makes a pair all the same, whose getters throw. When the random source
    // failed the key has numbers, all zero, which nobody may take for a key.
    if (result <= 0) rsa.reset(RSA_new());
    return new COpensslRSAKeyPair(rsa.release());
  });
}

KeyPair* COpensslRSAKeyPairGenerator::GenerateKeyPair(int, const ByteArray&) {
  return Traced(kGenerate, []() -> KeyPair* { throw kModule.Error(200, "Not Implemented", CRYPTO_NOT_IMPLEMENTED); });
}

}  // namespace Tavo::Framework
