// The readers of PKCS #8 and PKCS #1 keys: whatever they accept has an encoding, clones and components that agree.

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <memory>

#include "openssl/rz.crypto.openssl.rsaprivatecrtkey.h"
#include "openssl/rz.crypto.openssl.rsapublickey.h"
#include "tavo/owned.h"

using namespace Tavo::Framework;

namespace {

void Require(bool condition) {
  if (!condition) std::abort();
}

/// What `make` returned, or nothing; a refusal must be one of the documented ones.
template <class Make>
auto Accepted(Make&& make) -> Owned<std::remove_pointer_t<decltype(make())>> {
  try {
    return Own(make());
  } catch (IException* exception) {
    const auto id = Own(exception)->getID();
    Require(id == CRYPTO_UNKNOWN_ERROR || id == CRYPTO_INTERNAL_ERROR || id == CRYPTO_BAD_PARAM);
    return nullptr;
  }
}

ByteArray Encoded(IKey& key) {
  ByteArray encoded;
  key.GetEncoded(encoded);
  return encoded;
}

constexpr void (IRSAPrivateCRTKey::*kGetters[])(ByteArray&) = {
    &IRSAPrivateCRTKey::GetPFactor,     &IRSAPrivateCRTKey::GetQFactor,        &IRSAPrivateCRTKey::GetPExponent,
    &IRSAPrivateCRTKey::GetQExponent,   &IRSAPrivateCRTKey::GetCRTCoefficient, &IRSAPrivateCRTKey::GetModulus,
    &IRSAPrivateCRTKey::GetPubExponent, &IRSAPrivateCRTKey::GetPrivExponent,
};

std::vector<ByteArray> Components(IRSAPrivateCRTKey& key) {
  std::vector<ByteArray> all;
  for (const auto get : kGetters) (key.*get)(all.emplace_back());
  return all;
}

void CheckPrivate(IAlgorithm* algorithm, COpensslRSAPrivateCRTKey& key) {
  const auto clone = Own(key.Clone());
  Require(Encoded(*clone) == Encoded(key));
  Require(Components(dynamic_cast<IRSAPrivateCRTKey&>(*clone)) == Components(key));
  const auto again = Accepted([&] { return new COpensslRSAPrivateCRTKey(algorithm, Encoded(key), true); });
  Require(again && Encoded(*again) == Encoded(key) && Components(*again) == Components(key));

  std::vector<ByteArray> n = Components(key);
  if (std::any_of(n.begin(), n.end(), [](const ByteArray& number) { return number.empty(); })) return;
  for (auto& number : n) std::reverse(number.begin(), number.end());
  const auto fromNumbers =
      Accepted([&] { return IRSAPrivateCRTKey::Create(algorithm, n[0], n[1], n[2], n[3], n[4], n[5], n[6], n[7]); });
  Require(fromNumbers != nullptr);
  n[3] = n[2];  // GetQExponent answers with dP
  Require(Components(*fromNumbers) == n);
}

void CheckPublic(COpensslRSAPublicKey& key, const ByteArray& encoded) {
  Require(Encoded(key) == encoded);
  ByteArray modulus;
  Accepted([&] { return key.GetModulus(modulus), new int(0); });
  Accepted([&] { return new unsigned int(key.GetExponent()); });
  Require(Encoded(*Own(key.Clone())) == encoded);
}

/// A public key whose encoding is `encoded`: it reads what a certificate holds.
Owned<COpensslRSAPublicKey> PublicKey(const ByteArray& encoded) {
  static X509* const certificate = X509_new();
  ASN1_STRING_set(X509_get0_pubkey_bitstr(certificate), encoded.data(), static_cast<int>(encoded.size()));
  return Accepted([&] { return new COpensslRSAPublicKey(certificate, encoded); });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static IAlgorithm* const algorithm = NewAlgorithm("RSA").release();
  const ByteArray input(data, data + size);
  if (const auto key = Accepted([&] { return new COpensslRSAPrivateCRTKey(algorithm, input, true); })) {
    Require(Encoded(*key) == input);
    CheckPrivate(algorithm, *key);
  }
  if (const auto key = Accepted([&] { return new COpensslRSAPrivateCRTKey(algorithm, input, false); })) {
    CheckPrivate(algorithm, *key);
  }
  if (const auto key = PublicKey(input)) CheckPublic(*key, input);
  return 0;
}
