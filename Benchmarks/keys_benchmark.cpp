// Keys: import, generation and the life of a secret key, beside direct libcrypto calls and other libraries.

#include <benchmark/benchmark.h>
#include <openssl/evp.h>
#include <openssl/rand.h>
#include <openssl/rsa.h>
#include <openssl/x509.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>

#include <memory>

#include "tavo/owned.h"

#ifdef RZ_HAVE_GNUTLS
#include <gnutls/x509.h>
#endif
#ifdef RZ_HAVE_BOTAN_2
#include <botan/data_src.h>
#include <botan/pkcs8.h>
#endif
#ifdef RZ_HAVE_LIBCRYPTO__
#include <cryptopp/queue.h>
#include <cryptopp/rsa.h>
#endif

using namespace Tavo::Framework;

namespace {

constexpr int kBits = 2048;

// ---- import of an RSA-2048 key from PKCS #8 ----

const ByteArray& Pkcs8() {
  static const ByteArray encoded = [] {
    const auto algorithm = NewAlgorithm("RSA");
    const auto generator = Own(KeyPairGenerator::Create(algorithm.get(), NewParameters().get()));
    const auto key = Own(Own(generator->GenerateKeyPair(kBits))->GetPrivateKey());
    ByteArray bytes;
    key->GetEncoded(bytes);
    return bytes;
  }();
  return encoded;
}

void ImportOurs(benchmark::State& state) {
  const ByteArray& encoded = Pkcs8();
  const auto algorithm = NewAlgorithm("RSA");
  for (auto _ : state) benchmark::DoNotOptimize(Own(IKey::Create(algorithm.get(), "PKCS8", encoded)).get());
}

void ImportOursAndClone(benchmark::State& state) {
  const auto algorithm = NewAlgorithm("RSA");
  const auto key = Own(IKey::Create(algorithm.get(), "PKCS8", Pkcs8()));
  for (auto _ : state) benchmark::DoNotOptimize(Own(key->Clone()).get());
}

void ImportAutoPrivateKey(benchmark::State& state) {
  const ByteArray& encoded = Pkcs8();
  for (auto _ : state) {
    const unsigned char* at = encoded.data();
    EVP_PKEY* key = d2i_AutoPrivateKey(nullptr, &at, static_cast<long>(encoded.size()));
    benchmark::DoNotOptimize(key);
    EVP_PKEY_free(key);
  }
}

/// Nothing but the key's own parser: the floor of every import that ends in an RSA of libcrypto.
void ImportUnwrappedRsa(benchmark::State& state) {
  const ByteArray& encoded = Pkcs8();
  const unsigned char* begin = encoded.data();
  PKCS8_PRIV_KEY_INFO* info = d2i_PKCS8_PRIV_KEY_INFO(nullptr, &begin, static_cast<long>(encoded.size()));
  const unsigned char* inner = nullptr;
  int size = 0;
  PKCS8_pkey_get0(nullptr, &inner, &size, nullptr, info);
  for (auto _ : state) {
    const unsigned char* at = inner;
    RSA* rsa = d2i_RSAPrivateKey(nullptr, &at, size);
    benchmark::DoNotOptimize(rsa);
    RSA_free(rsa);
  }
  PKCS8_PRIV_KEY_INFO_free(info);
}

#ifdef RZ_HAVE_GNUTLS
void ImportGnuTls(benchmark::State& state) {
  ByteArray encoded = Pkcs8();
  const gnutls_datum_t data{encoded.data(), static_cast<unsigned int>(encoded.size())};
  for (auto _ : state) {
    gnutls_x509_privkey_t key;
    gnutls_x509_privkey_init(&key);
    if (gnutls_x509_privkey_import_pkcs8(key, &data, GNUTLS_X509_FMT_DER, nullptr, GNUTLS_PKCS_PLAIN) != 0) {
      state.SkipWithError("refused");
    }
    gnutls_x509_privkey_deinit(key);
  }
}
BENCHMARK(ImportGnuTls);
#endif

#ifdef RZ_HAVE_BOTAN_2
void ImportBotan(benchmark::State& state) {
  const ByteArray& encoded = Pkcs8();
  for (auto _ : state) {
    Botan::DataSource_Memory source(encoded.data(), encoded.size());
    benchmark::DoNotOptimize(Botan::PKCS8::load_key(source).get());
  }
}
BENCHMARK(ImportBotan);
#endif

#ifdef RZ_HAVE_LIBCRYPTO__
void ImportCryptoPp(benchmark::State& state) {
  const ByteArray& encoded = Pkcs8();
  for (auto _ : state) {
    CryptoPP::ByteQueue queue;
    queue.Put(encoded.data(), encoded.size());
    CryptoPP::RSA::PrivateKey key;
    key.Load(queue);
    benchmark::DoNotOptimize(&key);
  }
}
BENCHMARK(ImportCryptoPp);
#endif

BENCHMARK(ImportOurs);
BENCHMARK(ImportOursAndClone);
BENCHMARK(ImportUnwrappedRsa);
BENCHMARK(ImportAutoPrivateKey);

// ---- generation of RSA-2048 ----

/// The search for primes takes as long as the random bytes will have it. This source starts anew for each benchmark, so
/// that both find the same keys.
class RepeatedRandom {
 public:
  RepeatedRandom() : m_before(RAND_get_rand_method()) {
    s_state = 88172645463325252ULL;
    RAND_set_rand_method(&kMethod);
  }
  RepeatedRandom(const RepeatedRandom&) = delete;
  RepeatedRandom& operator=(const RepeatedRandom&) = delete;
  ~RepeatedRandom() { RAND_set_rand_method(m_before); }

 private:
  static int Bytes(unsigned char* out, int count) {
    for (int i = 0; i < count; ++i) {
      s_state ^= s_state << 13;
      s_state ^= s_state >> 7;
      s_state ^= s_state << 17;
      out[i] = static_cast<unsigned char>(s_state >> 32);
    }
    return 1;
  }
  static constexpr RAND_METHOD kMethod = {nullptr, Bytes, nullptr, nullptr, Bytes, [] { return 1; }};
  static inline unsigned long long s_state = 0;
  const RAND_METHOD* m_before;
};

constexpr int kKeys = 40;

void GenerateDirect(benchmark::State& state) {
  const RepeatedRandom source;
  const std::unique_ptr<BIGNUM, void (*)(BIGNUM*)> e(BN_new(), BN_free);
  BN_set_word(e.get(), RSA_F4);
  for (auto _ : state) {
    RSA* rsa = RSA_new();
    benchmark::DoNotOptimize(RSA_generate_key_ex(rsa, kBits, e.get(), nullptr));
    RSA_free(rsa);
  }
}

void GenerateOurs(benchmark::State& state) {
  const RepeatedRandom source;
  const auto algorithm = NewAlgorithm("RSA");
  const auto generator = Own(KeyPairGenerator::Create(algorithm.get(), NewParameters().get()));
  for (auto _ : state) benchmark::DoNotOptimize(Own(generator->GenerateKeyPair(kBits)).get());
}

BENCHMARK(GenerateDirect)->Iterations(kKeys)->Unit(benchmark::kMillisecond);
BENCHMARK(GenerateOurs)->Iterations(kKeys)->Unit(benchmark::kMillisecond);

// ---- the life of a 16-byte secret key ----

constexpr size_t kPage = 4096;

/// The two system calls on a page that stays.
void LockAndUnlock(benchmark::State& state) {
  void* page = valloc(kPage);
  memset(page, 0, kPage);
  for (auto _ : state) {
    benchmark::DoNotOptimize(mlock(page, kPage));
    benchmark::DoNotOptimize(munlock(page, kPage));
  }
  free(page);
}

/// What any implementation of the contract does at least.
void LockedPageFloor(benchmark::State& state) {
  const unsigned char key[16] = {1};
  unsigned char out[16];
  for (auto _ : state) {
    auto* page = static_cast<unsigned char*>(valloc(kPage));
    benchmark::DoNotOptimize(mlock(page, kPage));
    memcpy(page, key, sizeof key);
    memcpy(out, page, sizeof out);
    explicit_bzero(page, kPage);
    benchmark::DoNotOptimize(munlock(page, kPage));
    free(page);
  }
}

/// What keeping the page out of core dumps would add.
void LockedPageFloorWithoutDump(benchmark::State& state) {
  for (auto _ : state) {
    void* page = valloc(kPage);
    benchmark::DoNotOptimize(mlock(page, kPage));
    benchmark::DoNotOptimize(madvise(page, kPage, MADV_DONTDUMP));
    explicit_bzero(page, kPage);
    benchmark::DoNotOptimize(madvise(page, kPage, MADV_DODUMP));
    benchmark::DoNotOptimize(munlock(page, kPage));
    free(page);
  }
}

void SecretKeyOurs(benchmark::State& state) {
  const auto algorithm = NewAlgorithm("AES");
  const ByteArray bytes(16, 1);
  ByteArray out;
  for (auto _ : state) {
    const auto key = Own(IKey::Create(algorithm.get(), "RAW", bytes));
    key->GetEncoded(out);
    benchmark::DoNotOptimize(out.data());
  }
}

void SecretKeyEncode(benchmark::State& state) {
  const auto key = Own(IKey::Create(NewAlgorithm("AES").get(), "RAW", ByteArray(16, 1)));
  ByteArray out;
  for (auto _ : state) {
    key->GetEncoded(out);
    benchmark::DoNotOptimize(out.data());
  }
}

BENCHMARK(LockAndUnlock);
BENCHMARK(LockedPageFloor);
BENCHMARK(LockedPageFloorWithoutDump);
BENCHMARK(SecretKeyOurs);
BENCHMARK(SecretKeyEncode);

// ---- 16 random bytes ----

void RandomDirect(benchmark::State& state) {
  unsigned char out[16];
  for (auto _ : state) benchmark::DoNotOptimize(RAND_bytes(out, sizeof out));
}

void RandomOurs(benchmark::State& state) {
  const auto algorithm = NewAlgorithm("AES");
  const auto generator = Own(RandomGenerator::Create(algorithm.get(), NewParameters().get()));
  ByteArray out;
  for (auto _ : state) generator->GenerateRandom(16, out);
}

BENCHMARK(RandomDirect);
BENCHMARK(RandomOurs);

}  // namespace
