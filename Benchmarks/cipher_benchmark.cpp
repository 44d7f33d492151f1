// AES-128 in CBC mode without padding, both ways, beside direct libcrypto with a fetched algorithm, beside the same
// after collecting the message into a wiping vector and into a fresh result (the floor), and beside other libraries.
// Whole lives. Run with --benchmark_repetitions=9 --benchmark_enable_random_interleaving=true and compare the least
// times.

#include "whole_life.h"
#ifdef RZ_HAVE_LIBCRYPTO__
#include <cryptopp/aes.h>
#include <cryptopp/modes.h>
#endif
#ifdef RZ_HAVE_BOTAN_2
#include <botan/cipher_mode.h>
#endif
#ifdef RZ_HAVE_GNUTLS
#include <gnutls/crypto.h>
#endif

using namespace lives;

namespace {

constexpr size_t kBlock = 16;
const unsigned char kIv[kBlock] = {};

template <int Operation>
void RunCipher(const ByteArray& message, unsigned char* out, size_t& length) {
  static const EVP_CIPHER* const cipher = EVP_CIPHER_fetch(nullptr, "AES-128-CBC", nullptr);
  const CipherContext context(EVP_CIPHER_CTX_new());
  int updated = 0;
  int last = 0;
  EVP_CipherInit_ex(context.get(), cipher, nullptr, kKey, kIv, Operation == ENCRYPT_MODE ? 1 : 0);
  EVP_CIPHER_CTX_set_padding(context.get(), 0);
  EVP_CipherUpdate(context.get(), out, &updated, message.data(), static_cast<int>(message.size()));
  EVP_CipherFinal_ex(context.get(), out + updated, &last);
  length = static_cast<size_t>(updated + last);
}

/// Into memory that is there already.
template <int Operation>
void Direct(const ByteArray& message, ByteArray& out) {
  size_t length = 0;
  if (out.size() < message.size() + kBlock) out.resize(message.size() + kBlock);
  RunCipher<Operation>(message, out.data(), length);
}

template <int Operation>
void Floor(const ByteArray& message, ByteArray& out) {
  const ByteArray collected = Collected(message);
  ByteArray result(collected.size() + kBlock);
  size_t length = 0;
  RunCipher<Operation>(collected, result.data(), length);
  result.resize(length);
  out.swap(result);
}

Owned<Cipher> NewCipher() {
  static const auto algorithm = NewAlgorithm("AES");
  static const auto parameters = [] {
    auto map = NewParameters();
    map->SetCipherMode("CBC");
    map->SetPadding("None");
    map->SetIv(ByteArray(kIv, kIv + kBlock));
    return map;
  }();
  return Own(Cipher::Create(algorithm.get(), parameters.get()));
}

template <int Operation>
void Ours(const ByteArray& message, ByteArray& out) {
  const auto cipher = NewCipher();
  cipher->Init(Operation, Key());
  cipher->Update(message);
  cipher->DoFinal(out);
}

template <int Operation>
void OursAtOnce(const ByteArray& message, ByteArray& out) {
  const auto cipher = NewCipher();
  cipher->Init(Operation, Key());
  cipher->DoFinal(message, out);
}

#define RZ_BOTH_WAYS(name, function)                                            \
  BENCHMARK_CAPTURE(Run, encrypt_##name, function<ENCRYPT_MODE>)->Apply(Sizes); \
  BENCHMARK_CAPTURE(Run, decrypt_##name, function<DECRYPT_MODE>)->Apply(Sizes)

RZ_BOTH_WAYS(libcrypto, Direct);
RZ_BOTH_WAYS(floor, Floor);
RZ_BOTH_WAYS(ours, Ours);
RZ_BOTH_WAYS(ours_at_once, OursAtOnce);

#ifdef RZ_HAVE_LIBCRYPTO__
template <int Operation>
void CryptoPP_(const ByteArray& message, ByteArray& out) {
  if (out.size() < message.size()) out.resize(message.size());
  if constexpr (Operation == ENCRYPT_MODE) {
    CryptoPP::CBC_Mode<CryptoPP::AES>::Encryption(kKey, sizeof kKey, kIv)
        .ProcessData(out.data(), message.data(), message.size());
  } else {
    CryptoPP::CBC_Mode<CryptoPP::AES>::Decryption(kKey, sizeof kKey, kIv)
        .ProcessData(out.data(), message.data(), message.size());
  }
}
RZ_BOTH_WAYS(cryptopp, CryptoPP_);
#endif

#ifdef RZ_HAVE_BOTAN_2
template <int Operation>
void Botan_(const ByteArray& message, ByteArray& out) {
  const auto mode = Botan::Cipher_Mode::create("AES-128/CBC/NoPadding",
                                               Operation == ENCRYPT_MODE ? Botan::ENCRYPTION : Botan::DECRYPTION);
  if (out.size() < message.size()) out.resize(message.size());
  std::memcpy(out.data(), message.data(), message.size());  // it works in place only
  mode->set_key(kKey, sizeof kKey);
  mode->start(kIv, kBlock);
  mode->process(out.data(), message.size());
}
RZ_BOTH_WAYS(botan, Botan_);
#endif

#ifdef RZ_HAVE_GNUTLS
template <int Operation>
void GnuTLS(const ByteArray& message, ByteArray& out) {
  gnutls_datum_t key = {const_cast<unsigned char*>(kKey), sizeof kKey};
  gnutls_datum_t iv = {const_cast<unsigned char*>(kIv), kBlock};
  gnutls_cipher_hd_t handle = nullptr;
  if (out.size() < message.size()) out.resize(message.size());
  gnutls_cipher_init(&handle, GNUTLS_CIPHER_AES_128_CBC, &key, &iv);
  (Operation == ENCRYPT_MODE ? gnutls_cipher_encrypt2 : gnutls_cipher_decrypt2)(handle, message.data(), message.size(),
                                                                                out.data(), message.size());
  gnutls_cipher_deinit(handle);
}
RZ_BOTH_WAYS(gnutls, GnuTLS);
#endif

}  // namespace
