#include <openssl/engine.h>

#include <climits>

#include "support/caught.h"
#include "support/replaced_random.h"
#include "support/rsa.h"
#include "support/services.h"
#include "support/trace.h"

using namespace Tavo::Framework;

namespace {

const std::string kConstructor = "COpensslRSAKeyPairGenerator::COpensslRSAKeyPairGenerator";
const std::string kDestructor = "COpensslRSAKeyPairGenerator::~COpensslRSAKeyPairGenerator";
const std::string kGenerate = "COpensslRSAKeyPairGenerator::GenerateKeyPair";

struct Generator : Made<KeyPairGenerator> {
  Generator() : Made("RSA") {}
  Owned<KeyPair> Generate(int bits) const { return Own(service->GenerateKeyPair(bits)); }
};

/// Whether the pair says of each key that there is none.
void ExpectNoKeys(KeyPair& pair) {
  EXPECT_THROWS(4003, 0, "Unable to encode public key", pair.GetPublicKey());
  EXPECT_THROWS(4003, 0, "Unable to encode private key", pair.GetPrivateKey());
}

/// An engine of this process, whose key generation is counted and done by libcrypto.
class TestEngine {
 public:
  enum Kind { kWorking, kInitFails, kWithoutRsa };

  explicit TestEngine(Kind kind, const char* id = "keystore")
      : m_engine(ENGINE_new()), m_method(RSA_meth_dup(RSA_PKCS1_OpenSSL())) {
    s_generated = s_destroyed = 0;
    s_initResult = kind == kInitFails ? 0 : 1;
    RSA_meth_set_keygen(m_method, Generate);
    ENGINE_set_id(m_engine, id);
    ENGINE_set_name(m_engine, "test engine");
    ENGINE_set_init_function(m_engine, [](ENGINE*) { return s_initResult; });
    ENGINE_set_destroy_function(m_engine, [](ENGINE*) { return ++s_destroyed; });
    if (kind != kWithoutRsa) ENGINE_set_RSA(m_engine, m_method);
    ENGINE_add(m_engine);
  }
  TestEngine(const TestEngine&) = delete;
  TestEngine& operator=(const TestEngine&) = delete;
  ~TestEngine() {
    Remove();
    RSA_meth_free(m_method);
  }
  /// Gives up what the test holds of it. Returns how many engines libcrypto then destroyed: 1 when nobody else has a
  /// reference left.
  int Remove() {
    if (m_engine == nullptr) return s_destroyed;
    ENGINE_remove(m_engine);
    ENGINE_free(m_engine);
    m_engine = nullptr;
    return s_destroyed;
  }
  static int generated() { return s_generated; }
  ENGINE* engine() const { return m_engine; }

 private:
  static int Generate(RSA* rsa, int bits, BIGNUM* e, BN_GENCB*) {
    ++s_generated;
    const reference::Rsa made = NewRsaWithoutEngine(bits, e);
    if (made == nullptr) return 0;
    const auto copy = [&](auto get) { return BN_dup(get(made.get())); };
    RSA_set0_key(rsa, copy(RSA_get0_n), copy(RSA_get0_e), copy(RSA_get0_d));
    RSA_set0_factors(rsa, copy(RSA_get0_p), copy(RSA_get0_q));
    RSA_set0_crt_params(rsa, copy(RSA_get0_dmp1), copy(RSA_get0_dmq1), copy(RSA_get0_iqmp));
    return 1;
  }
  static reference::Rsa NewRsaWithoutEngine(int bits, BIGNUM* e) {
    reference::Rsa rsa(RSA_new());
    RSA_set_method(rsa.get(), RSA_PKCS1_OpenSSL());
    return RSA_generate_key_ex(rsa.get(), bits, e, nullptr) == 1 ? std::move(rsa) : nullptr;
  }

  static inline int s_generated = 0, s_destroyed = 0, s_initResult = 1;
  ENGINE* m_engine;
  RSA_METHOD* m_method;
};

bool HasDefaultEngine() {
  ENGINE* engine = ENGINE_get_default_RSA();
  if (engine != nullptr) ENGINE_finish(engine);
  return engine != nullptr;
}

TEST(RsaGenerator, WithoutAnEngineLibcryptoGeneratesAKey) {
  ERR_clear_error();
  const Trace trace;
  Generator g;
  EXPECT_EQ(g->GetAlgorithm(), g.algorithm.get());
  EXPECT_TRUE(trace.Has("0 " + kConstructor + " : OpenSSL 'keystore' engine not available"));
  EXPECT_TRUE(trace.Has("0 " + kConstructor + " : OpenSSL 'default' engine will be used for RSA crypto"));
  EXPECT_EQ(ERR_peek_error(), 0UL) << "the search for the engine left something";

  const auto pair = g.Generate(1024);
  const auto publicKey = Own(dynamic_cast<IRSAPublicKey*>(pair->GetPublicKey()));
  const auto privateKey = Own(dynamic_cast<IRSAPrivateCRTKey*>(pair->GetPrivateKey()));
  ASSERT_TRUE(publicKey && privateKey);
  EXPECT_EQ(publicKey->GetExponent(), 65537U);
  ByteArray encoded, modulus, same;
  privateKey->GetEncoded(encoded);
  const reference::Key read = reference::ParsedKey(encoded);
  ASSERT_NE(read, nullptr);
  EXPECT_EQ(EVP_PKEY_bits(read.get()), 1024);
  EXPECT_EQ(RSA_check_key(EVP_PKEY_get0_RSA(read.get())), 1);
  publicKey->GetModulus(modulus);
  privateKey->GetModulus(same);
  EXPECT_EQ(ByteArray(modulus.rbegin(), modulus.rend()), same);
  EXPECT_TRUE(trace.Has("8 " + kGenerate) && trace.Has("16 " + kGenerate));
  EXPECT_TRUE(trace.Begins("0 " + kGenerate + " : RSA_generate_key_ex took "));
  EXPECT_THROWS(4001, 200, "Not Implemented", g->GenerateKeyPair(2048, ByteArray(3, 1)));
}

TEST(RsaGenerator, WhatCannotBeGeneratedIsAPairWithoutKeys) {
  const Generator g;
  LeavesTheHostsErrors([&] {
    for (const int bits : {0, 1, 511, -1, INT_MIN, INT_MAX}) ExpectNoKeys(*g.Generate(bits));
  });
  LeavesTheHostsErrors([&] { EXPECT_NE(Own(g.Generate(512)->GetPublicKey()), nullptr); });
  const ReplacedRandom failing;
  ExpectNoKeys(*g.Generate(512));
}

TEST(RsaGenerator, ABreakdownIsThrown) {
  static bool s_silent;
  RSA_METHOD* method = RSA_meth_dup(RSA_PKCS1_OpenSSL());
  RSA_meth_set_keygen(method, [](RSA*, int, BIGNUM*, BN_GENCB*) {
    if (s_silent) return -1;
    ERR_put_error(ERR_LIB_RSA, 0, RSA_R_KEY_SIZE_TOO_SMALL, "test", 1);
    ERR_put_error(ERR_LIB_RSA, 0, RSA_R_MODULUS_TOO_LARGE, "test", 1);
    return -1;
  });
  RSA_set_default_method(method);
  const std::string failed = "1 " + kGenerate + " : RSA_generate_key_ex failed with error 0x";
  for (const bool silent : {false, true}) {
    s_silent = silent;
    const Trace trace;
    Generator g;
    LeavesTheHostsErrors([&] { EXPECT_THROWS(4003, 165, "RSA_generate_key_ex failure", g->GenerateKeyPair(1024)); });
    // The first error of a queue that was empty, the last one above the host's.
    const bool first = trace.Has(failed + "2000078 (error:02000078:rsa routines::key size too small)");
    const bool last = trace.Has(failed + "2000069 (error:02000069:rsa routines::modulus too large)");
    EXPECT_TRUE(first == !silent && last == !silent);
    EXPECT_EQ(trace.Has(failed + "0 (error:00000000:lib(0)::reason(0))"), silent);
    EXPECT_TRUE(trace.Has("16 " + kGenerate + " Returns RSA_generate_key_ex failure"));
  }
  RSA_set_default_method(RSA_PKCS1_OpenSSL());
  RSA_meth_free(method);
}

TEST(RsaGenerator, TheKeystoreEngineGeneratesWhileTheGeneratorLives) {
  TestEngine engine(TestEngine::kWorking);
  Owned<KeyPair> pair;
  {
    const Trace trace;
    {
      Generator g;
      EXPECT_TRUE(trace.Has("0 " + kConstructor + " : OpenSSL 'keystore' engine will be used for RSA crypto"));
      EXPECT_TRUE(HasDefaultEngine());
      pair = g.Generate(512);
      EXPECT_EQ(TestEngine::generated(), 1);
    }
    EXPECT_TRUE(trace.Has("0 " + kDestructor + " : OpenSSL 'default' engine will be used for RSA crypto"));
  }
  EXPECT_FALSE(HasDefaultEngine());
  EXPECT_NE(reference::NewRsa(512), nullptr);
  EXPECT_EQ(TestEngine::generated(), 1) << "libcrypto's own again";
  EXPECT_NE(Own(pair->GetPrivateKey()), nullptr);
  pair.reset();
  EXPECT_EQ(engine.Remove(), 1) << "no reference to the engine was kept";
}

TEST(RsaGenerator, OfTwoTheFirstToEndRestoresTheDefaultForBoth) {
  TestEngine engine(TestEngine::kWorking);
  auto first = std::make_unique<Generator>();
  auto second = std::make_unique<Generator>();
  first.reset();
  EXPECT_FALSE(HasDefaultEngine());
  EXPECT_NE(second->Generate(512), nullptr);
  EXPECT_EQ(TestEngine::generated(), 0);
  second.reset();
  EXPECT_EQ(engine.Remove(), 1);
}

TEST(RsaGenerator, AnEngineThatDoesNotWorkIsGivenBack) {
  const std::pair<TestEngine::Kind, const char*> cases[] = {
      {TestEngine::kInitFails, "unexpected error: ENGINE_init failed!!!!"},
      {TestEngine::kWithoutRsa, "unexpected behavior: ENGINE_get_default_RSA not set!!!!!"}};
  for (const auto& [kind, error] : cases) {
    TestEngine engine(kind);
    for (int round = 0; round < 2; ++round) {  // a reference too few would free the engine under the second one
      const Trace trace;
      Generator g;
      EXPECT_TRUE(trace.Has("1 " + kConstructor + " : " + error));
      EXPECT_TRUE(trace.Has("0 " + kConstructor + " : OpenSSL 'keystore' engine not available"));
      EXPECT_TRUE(trace.Has("0 " + kConstructor + " : OpenSSL 'default' engine will be used for RSA crypto"));
      EXPECT_NE(Own(g.Generate(512)->GetPublicKey()), nullptr);
      EXPECT_EQ(TestEngine::generated(), 0);
    }
    EXPECT_EQ(engine.Remove(), 1) << error;
  }
}

TEST(RsaGenerator, TheHostsOwnDefaultEngineComesBack) {
  const TestEngine host(TestEngine::kWorking, "host");
  ENGINE_set_default_RSA(host.engine());
  {
    const TestEngine engine(TestEngine::kWorking);
    const Trace trace;
    Generator();
    EXPECT_TRUE(trace.Has("1 " + kDestructor + " : unexpected behavior: ENGINE_get_default_RSA still set!!!!"));
  }
  ENGINE* now = ENGINE_get_default_RSA();
  EXPECT_EQ(now, host.engine());
  ENGINE_finish(now);
  ENGINE_unregister_RSA(host.engine());
}

}  // namespace
