// What comes from outside to be decrypted or verified: padded blocks. A ciphertext that is accepted comes back from its
// plaintext, one that is refused leaves everything as it was, and only documented refusals are given.
//
// Input: one octet for the case and the place where the message is split, then the ciphertext or signature.

#include <cstdint>
#include <cstdlib>

#include "tavo/owned.h"

using namespace Tavo::Framework;

namespace {

/// An RSA key of 512 bits as PKCS #8, made by openssl genrsa for this purpose.
constexpr unsigned char kRsaKey[] = {
    0x30, 0x82, 0x01, 0x54, 0x02, 0x01, 0x00, 0x30, 0x0d, 0x06, 0x09, 0x2a, 0x86, 0x48, 0x86, 0xf7, 0x0d, 0x01, 0x01,
    0x01, 0x05, 0x00, 0x04, 0x82, 0x01, 0x3e, 0x30, 0x82, 0x01, 0x3a, 0x02, 0x01, 0x00, 0x02, 0x41, 0x00, 0x9f, 0x78,
    0x94, 0x7c, 0x1e, 0xc7, 0x2e, 0x3d, 0xb0, 0x1d, 0x63, 0xdd, 0x65, 0xa1, 0xcf, 0x6e, 0x30, 0x14, 0x12, 0xa2, 0x55,
    0x9b, 0xbd, 0x9a, 0x48, 0x7c, 0x8a, 0x82, 0x4b, 0x3b, 0xd1, 0x84, 0x48, 0x7b, 0x9d, 0xf3, 0x12, 0x03, 0x81, 0x35,
    0x3e, 0xc5, 0x6a, 0x2c, 0xdc, 0x70, 0x2e, 0xc7, 0xae, 0x83, 0x12, 0xa6, 0x7b, 0x4f, 0xd1, 0x43, 0x87, 0x7b, 0x8a,
    0x45, 0x7b, 0xe5, 0xc8, 0xff, 0x02, 0x03, 0x01, 0x00, 0x01, 0x02, 0x40, 0x70, 0x70, 0x14, 0x41, 0x6f, 0x72, 0x00,
    0xa8, 0x7e, 0x04, 0x3a, 0xe5, 0x5f, 0x43, 0x37, 0x7d, 0xf9, 0x68, 0x2d, 0xbb, 0x47, 0xa1, 0x07, 0x8e, 0x40, 0x8d,
    0x8f, 0x1b, 0x4e, 0xf0, 0x5e, 0x48, 0x49, 0xa1, 0x67, 0x3b, 0x3f, 0x79, 0xc1, 0x2c, 0x26, 0x4d, 0x01, 0x67, 0x4f,
    0x17, 0x03, 0xb1, 0xf2, 0x7c, 0xe1, 0xaf, 0x3c, 0x9f, 0x57, 0xe8, 0x54, 0x13, 0xce, 0xdb, 0xfa, 0x7f, 0x94, 0x01,
    0x02, 0x21, 0x00, 0xd3, 0x09, 0xc0, 0xee, 0x49, 0xe4, 0x21, 0xfa, 0x2f, 0xb6, 0xbd, 0x0d, 0x21, 0xbc, 0xb3, 0xaa,
    0x1d, 0x9d, 0x8e, 0x51, 0xf2, 0x25, 0x52, 0x56, 0xf0, 0xa9, 0x38, 0x27, 0x86, 0xf6, 0xe7, 0xb5, 0x02, 0x21, 0x00,
    0xc1, 0x72, 0x4d, 0x42, 0x43, 0x38, 0x30, 0x37, 0xa6, 0x24, 0x70, 0x8e, 0x9e, 0x58, 0x40, 0x8f, 0xca, 0xc9, 0x64,
    0xe2, 0x32, 0x37, 0x25, 0x87, 0xa5, 0xbc, 0x24, 0xd2, 0x61, 0xa2, 0x36, 0x63, 0x02, 0x21, 0x00, 0xc9, 0xe4, 0x95,
    0xdf, 0x21, 0x6f, 0x8f, 0x95, 0xd2, 0x99, 0xc6, 0xe8, 0xce, 0x32, 0xc1, 0xca, 0xe8, 0x44, 0x37, 0xc8, 0x6b, 0x98,
    0x8a, 0xda, 0x43, 0xa8, 0x0f, 0xe1, 0xb8, 0xbb, 0x72, 0xd5, 0x02, 0x20, 0x19, 0xa8, 0xc4, 0xb0, 0xb6, 0x63, 0xdc,
    0x99, 0x75, 0x13, 0x3e, 0x4e, 0xdc, 0x98, 0x0e, 0x30, 0x44, 0x90, 0xc4, 0x2d, 0xf0, 0xc5, 0x39, 0xd8, 0x2d, 0x56,
    0xb0, 0x77, 0xab, 0x75, 0xad, 0xcb, 0x02, 0x20, 0x06, 0x57, 0x81, 0xd9, 0xbe, 0x8b, 0x1f, 0xd1, 0xc9, 0x33, 0x3f,
    0x31, 0x1d, 0x04, 0xe0, 0x91, 0x0e, 0x1d, 0x37, 0x47, 0xc7, 0x07, 0xe2, 0x46, 0x59, 0x01, 0x5d, 0x0d, 0xa0, 0xb6,
    0x8b, 0x51,
};
constexpr size_t kRsaLength = 64;  // of its modulus in bytes

void Require(bool condition) {
  if (!condition) std::abort();
}

struct Case {
  const char* algorithm;
  const char* mode;
  const char* padding;
};
constexpr Case kCases[] = {
    {"AES", "CBC", "PKCS7"},  {"AES", "ECB", "PKCS7"},  {"AES", "CBC", "None"},       {"3DES", "CBC", "PKCS7"},
    {"3DES", "ECB", "None"},  {"DES", "CBC", "PKCS7"},  {"DES", "ECB", "PKCS7"},      {"RSA", nullptr, "PKCS1"},
    {"RSA", nullptr, "OAEP"}, {"RSA", nullptr, "None"}, {"verify", nullptr, "PKCS1"}, {"verify", nullptr, "None"},
};
constexpr size_t kCaseCount = sizeof kCases / sizeof *kCases;

/// The keys, made once.
struct Keys {
  Owned<IAlgorithm> rsa = NewAlgorithm("RSA");
  Owned<IKey> secret = Own(IKey::Create(NewAlgorithm("3DES").get(), "RAW", ByteArray(24, 0x31)));
  Owned<IKey> privateKey = Own(IKey::Create(rsa.get(), "PKCS8", ByteArray(kRsaKey, kRsaKey + sizeof kRsaKey)));
  Owned<IRSAPublicKey> publicKey;
  Keys() {
    auto& key = dynamic_cast<IRSAPrivateCRTKey&>(*privateKey);
    ByteArray modulus, exponent;
    key.GetModulus(modulus);
    key.GetPubExponent(exponent);
    publicKey = Own(IRSAPublicKey::Create(rsa.get(), ByteArray(modulus.rbegin(), modulus.rend()),
                                          ByteArray(exponent.rbegin(), exponent.rend())));
  }
};
const Keys& AllKeys() {
  static const Keys keys;
  return keys;
}

struct Input {
  ByteArray bytes;
  size_t split;
  ByteArray Head() const { return ByteArray(bytes.begin(), bytes.begin() + static_cast<long>(split)); }
  ByteArray Tail() const { return ByteArray(bytes.begin() + static_cast<long>(split), bytes.end()); }
};

/// Runs `operation` and returns 0, or the identifier of its refusal.
template <class Operation>
unsigned long IdOf(Operation&& operation) {
  try {
    operation();
  } catch (IException* exception) {
    return Own(exception)->getID();
  }
  return 0;
}

void FuzzCipher(const Case& c, const Input& input) {
  const bool rsa = c.mode == nullptr;
  const auto algorithm = NewAlgorithm(c.algorithm);
  const auto map = NewParameters();
  map->SetPadding(c.padding);
  if (!rsa) map->SetCipherMode(c.mode);
  const auto cipher = Own(Cipher::Create(algorithm.get(), map.get()));
  const ByteArray untouched(3, 7);
  ByteArray plain = untouched;
  cipher->Init(DECRYPT_MODE, rsa ? AllKeys().privateKey.get() : AllKeys().secret.get());
  cipher->Update(input.Head());
  const unsigned long id = IdOf([&] { cipher->DoFinal(input.Tail(), plain); });
  if (id != 0) {
    Require(id == CRYPTO_UNKNOWN_ERROR || (rsa && id == CRYPTO_INVALID_DATA_SIZE));
    Require(plain == untouched);
    Require(IdOf([&] { cipher->DoFinal(plain); }) == id);  // the message is still there, whole
    return;
  }
  Require(plain.size() <= input.bytes.size());
  if (rsa && SecureString(c.padding) != "None") return;  // its padding is random
  ByteArray again;
  cipher->Init(ENCRYPT_MODE, rsa ? static_cast<IKey*>(AllKeys().publicKey.get()) : AllKeys().secret.get());
  cipher->DoFinal(plain, again);
  Require(again == input.bytes);
}

void FuzzVerify(const Case& c, const Input& input) {
  const auto map = NewParameters();
  ByteArray block;
  const auto cipher = Own(Cipher::Create(AllKeys().rsa.get(), map.get()));
  cipher->Init(ENCRYPT_MODE, AllKeys().publicKey.get());
  const bool opens = IdOf([&] { cipher->DoFinal(input.bytes, block); }) == 0;
  Require(!opens || block.size() == kRsaLength);
  map->SetPadding(c.padding);
  const auto signature = Own(Signature::Create(AllKeys().rsa.get(), map.get()));
  signature->Init(AllKeys().publicKey.get());
  const bool valid = signature->Verify(block, input.bytes);
  // Without padding the whole block is the payload; under PKCS #1 it never is, for its beginning is missing.
  Require(valid == (opens && SecureString(c.padding) == "None"));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  const Case& c = kCases[data[0] % kCaseCount];
  const Input input{ByteArray(data + 1, data + size), (size - 1) * (data[0] / kCaseCount) / 22};
  SecureString(c.algorithm) == "verify" ? FuzzVerify(c, input) : FuzzCipher(c, input);
  return 0;
}
