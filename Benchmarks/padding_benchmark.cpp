// Blocks of 256 bytes through the paddings beside libcrypto's padding functions and Crypto++, and where the time of
// OAEP goes: the hashing that any implementation does, and the objects that each round makes.

#include <benchmark/benchmark.h>
#include <openssl/rsa.h>
#include <openssl/sha.h>

#ifdef RZ_HAVE_LIBCRYPTO__
#include <cryptopp/oaep.h>
#include <cryptopp/osrng.h>
#include <cryptopp/pkcspad.h>
#include <cryptopp/sha.h>
#endif

#include <cstdlib>

#include "tavo/owned.h"

using namespace Tavo::Framework;

namespace {

constexpr int kKeyLength = 256;  // bytes
constexpr int kKeySecret = 32;   // the message, an AES-256 key

const ByteArray& Message() {
  static const ByteArray message(kKeySecret, 0x5a);
  return message;
}

void Require(bool condition) {
  if (!condition) std::abort();
}

struct Scheme {
  explicit Scheme(const char* type) : map(NewParameters()) {
    map->SetPkcs1Operation(1);
    map->SetHashAlgoX931(0x33);
    map->SetOaepEncodingParam(ByteArray());
    padding = Own(IPadding::Create(type, kKeyLength, map.get()));
  }
  ByteArray Block() const {
    ByteArray block;
    padding->EncodeData(Message(), block);
    return block;
  }
  Owned<ICryptoParserParameterMap> map;
  Owned<IPadding> padding;
};

void OursEncode(benchmark::State& state, const char* type) {
  const Scheme scheme(type);
  ByteArray block;
  for (auto _ : state) {
    scheme.padding->EncodeData(Message(), block);
    benchmark::DoNotOptimize(block.data());
  }
}

void OursDecode(benchmark::State& state, const char* type) {
  const Scheme scheme(type);
  const ByteArray block = scheme.Block();
  ByteArray message;
  for (auto _ : state) Require(scheme.padding->DecodeData(block, message));
  Require(message == Message());
}

using Add = int (*)(unsigned char* to, int k, const unsigned char* message, int size);
using Check = int (*)(unsigned char* to, int size, const unsigned char* block, int blockSize, int k);

int AddOaep(unsigned char* to, int k, const unsigned char* message, int size) {
  return RSA_padding_add_PKCS1_OAEP(to, k, message, size, nullptr, 0);
}

int CheckOaep(unsigned char* to, int size, const unsigned char* block, int blockSize, int k) {
  return RSA_padding_check_PKCS1_OAEP(to, size, block, blockSize, k, nullptr, 0);
}

void DirectEncode(benchmark::State& state, Add add) {
  ByteArray block(kKeyLength);
  for (auto _ : state) Require(add(block.data(), kKeyLength, Message().data(), kKeySecret) == 1);
}

void DirectDecode(benchmark::State& state, Add add, Check check) {
  ByteArray block(kKeyLength);
  Require(add(block.data(), kKeyLength, Message().data(), kKeySecret) == 1);
  ByteArray message(kKeyLength);
  for (auto _ : state) {
    Require(check(message.data(), kKeyLength, block.data(), kKeyLength, kKeyLength) == kKeySecret);
  }
}

#ifdef RZ_HAVE_LIBCRYPTO__
// Crypto++ counts in bits and leaves the first octet, which is 0, to its caller.
constexpr size_t kCryptoPpBits = 8 * kKeyLength - 1;

template <class Padding>
void CryptoPpEncode(benchmark::State& state) {
  Padding padding;
  CryptoPP::AutoSeededRandomPool random;
  ByteArray block(kKeyLength);
  for (auto _ : state) {
    padding.Pad(random, Message().data(), kKeySecret, block.data(), kCryptoPpBits, CryptoPP::g_nullNameValuePairs);
    benchmark::DoNotOptimize(block.data());
  }
}

template <class Padding>
void CryptoPpDecode(benchmark::State& state) {
  Padding padding;
  CryptoPP::AutoSeededRandomPool random;
  ByteArray block(kKeyLength);
  padding.Pad(random, Message().data(), kKeySecret, block.data(), kCryptoPpBits, CryptoPP::g_nullNameValuePairs);
  ByteArray message(kKeyLength);
  for (auto _ : state) {
    Require(padding.Unpad(block.data(), kCryptoPpBits, message.data(), CryptoPP::g_nullNameValuePairs).isValidCoding);
  }
}
#endif

/// The hashing of one OAEP block: the label, twelve rounds over the seed, one over the masked data.
constexpr size_t kHashed[] = {0, 24, 24, 24, 24, 24, 24, 24, 24, 24, 24, 24, 24, 239};

void OaepHashing(benchmark::State& state) {
  const ByteArray data(256, 0x5a);
  unsigned char hash[SHA_DIGEST_LENGTH];
  for (auto _ : state) {
    for (const size_t size : kHashed) {
      SHA_CTX context;
      SHA1_Init(&context);
      SHA1_Update(&context, data.data(), size);
      SHA1_Final(hash, &context);
      benchmark::DoNotOptimize(hash);
    }
  }
}

/// The same through a fresh algorithm, parameter map and digest each time.
void OaepHashingThroughObjects(benchmark::State& state) {
  ByteArray hash;
  for (auto _ : state) {
    for (const size_t size : kHashed) {
      const auto algorithm = NewAlgorithm("SHA1");
      const auto parameters = NewParameters();
      Own(MessageDigest::Create(algorithm.get(), parameters.get()))->Digest(ByteArray(size), hash);
      benchmark::DoNotOptimize(hash.data());
    }
  }
}

/// The objects alone.
void OaepObjects(benchmark::State& state) {
  for (auto _ : state) {
    for (size_t i = 0; i < std::size(kHashed); ++i) {
      const auto algorithm = NewAlgorithm("SHA1");
      const auto parameters = NewParameters();
      const auto digest = Own(MessageDigest::Create(algorithm.get(), parameters.get()));
      benchmark::DoNotOptimize(digest.get());
    }
  }
}

BENCHMARK_CAPTURE(DirectEncode, Oaep, AddOaep);
BENCHMARK_CAPTURE(OursEncode, Oaep, "OAEP");
BENCHMARK_CAPTURE(DirectDecode, Oaep, AddOaep, CheckOaep);
BENCHMARK_CAPTURE(OursDecode, Oaep, "OAEP");
#ifdef RZ_HAVE_LIBCRYPTO__
BENCHMARK_TEMPLATE(CryptoPpEncode, CryptoPP::OAEP<CryptoPP::SHA1>);
BENCHMARK_TEMPLATE(CryptoPpDecode, CryptoPP::OAEP<CryptoPP::SHA1>);
#endif
BENCHMARK(OaepHashing);
BENCHMARK(OaepHashingThroughObjects);
BENCHMARK(OaepObjects);
BENCHMARK_CAPTURE(DirectEncode, Pkcs1, RSA_padding_add_PKCS1_type_2);
BENCHMARK_CAPTURE(OursEncode, Pkcs1, "PKCS1");
BENCHMARK_CAPTURE(DirectDecode, Pkcs1, RSA_padding_add_PKCS1_type_2, RSA_padding_check_PKCS1_type_2);
BENCHMARK_CAPTURE(OursDecode, Pkcs1, "PKCS1");
#ifdef RZ_HAVE_LIBCRYPTO__
BENCHMARK_TEMPLATE(CryptoPpEncode, CryptoPP::PKCS_EncryptionPaddingScheme);
BENCHMARK_TEMPLATE(CryptoPpDecode, CryptoPP::PKCS_EncryptionPaddingScheme);
#endif
BENCHMARK_CAPTURE(DirectEncode, X931, RSA_padding_add_X931);
BENCHMARK_CAPTURE(OursEncode, X931, "X_931");
BENCHMARK_CAPTURE(OursDecode, X931, "X_931");

}  // namespace
