// HMAC-SHA256 and CMAC over AES-128 beside direct libcrypto with fetched algorithms, beside the same after collecting
// the message into a wiping vector (the floor), and beside other libraries. Whole lives. Run with
// --benchmark_repetitions=9 --benchmark_enable_random_interleaving=true and compare the least times.

#include <openssl/cmac.h>
#include <openssl/hmac.h>

#include "whole_life.h"
#ifdef RZ_HAVE_LIBCRYPTO__
#include <cryptopp/aes.h>
#include <cryptopp/cmac.h>
#include <cryptopp/hmac.h>
#include <cryptopp/sha.h>
#endif
#ifdef RZ_HAVE_BOTAN_2
#include <botan/mac.h>
#endif
#ifdef RZ_HAVE_GNUTLS
#include <gnutls/crypto.h>
#endif

using namespace lives;

namespace {

constexpr size_t kHmacLength = 32;
constexpr size_t kCmacLength = 16;

const auto kParameters = NewParameters();
const auto kHmac = NewAlgorithm("HMAC_SHA256");
const auto kCmac = NewAlgorithm("CMAC");

void Ours(IAlgorithm* algorithm, const ByteArray& message, ByteArray& out) {
  const auto mac = Own(MAC::Create(algorithm, kParameters.get()));
  mac->Init(Key());
  mac->Update(message);
  mac->Mac(out);
}

void OursAtOnce(IAlgorithm* algorithm, const ByteArray& message, ByteArray& out) {
  const auto mac = Own(MAC::Create(algorithm, kParameters.get()));
  mac->Init(Key());
  mac->Mac(message, out);
}

void HmacDirect(const ByteArray& message, ByteArray& out) {
  static const EVP_MD* const digest = EVP_MD_fetch(nullptr, "SHA256", nullptr);
  const std::unique_ptr<HMAC_CTX, Deleter<HMAC_CTX_free>> context(HMAC_CTX_new());
  out.resize(kHmacLength);
  HMAC_Init_ex(context.get(), kKey, sizeof kKey, digest, nullptr);
  HMAC_Update(context.get(), message.data(), message.size());
  HMAC_Final(context.get(), out.data(), nullptr);
}
void HmacFloor(const ByteArray& message, ByteArray& out) { HmacDirect(Collected(message), out); }
void HmacOurs(const ByteArray& message, ByteArray& out) { Ours(kHmac.get(), message, out); }
void HmacOursAtOnce(const ByteArray& message, ByteArray& out) { OursAtOnce(kHmac.get(), message, out); }

/// What no CMAC can do without, and not a life: the CBC pass alone, under a key that is set up already.
void CbcPass(const ByteArray& message, ByteArray& out) {
  static const CipherContext context = [] {
    CipherContext fresh(EVP_CIPHER_CTX_new());
    const unsigned char iv[16] = {};
    EVP_EncryptInit_ex(fresh.get(), EVP_aes_128_cbc(), nullptr, kKey, iv);
    return fresh;
  }();
  out.resize(message.size() + 16);
  int length = 0;
  EVP_EncryptUpdate(context.get(), out.data(), &length, message.data(), static_cast<int>(message.size()));
}
/// What no CMAC of one life that goes through libcrypto's contexts can do without: one context, its key, the pass.
void CbcLife(const ByteArray& message, ByteArray& out) {
  static const EVP_CIPHER* const cipher = EVP_CIPHER_fetch(nullptr, "AES-128-CBC", nullptr);
  const CipherContext context(EVP_CIPHER_CTX_new());
  const unsigned char iv[16] = {};
  out.resize(message.size() + 16);
  int length = 0;
  EVP_EncryptInit_ex(context.get(), cipher, nullptr, kKey, iv);
  EVP_EncryptUpdate(context.get(), out.data(), &length, message.data(), static_cast<int>(message.size()));
}
void CmacDirect(const ByteArray& message, ByteArray& out) {
  static const EVP_CIPHER* const cipher = EVP_CIPHER_fetch(nullptr, "AES-128-CBC", nullptr);
  const std::unique_ptr<CMAC_CTX, Deleter<CMAC_CTX_free>> context(CMAC_CTX_new());
  size_t length = kCmacLength;
  out.resize(length);
  CMAC_Init(context.get(), kKey, sizeof kKey, cipher, nullptr);
  CMAC_Update(context.get(), message.data(), message.size());
  CMAC_Final(context.get(), out.data(), &length);
}
void CmacOurs(const ByteArray& message, ByteArray& out) { Ours(kCmac.get(), message, out); }
void CmacOursAtOnce(const ByteArray& message, ByteArray& out) { OursAtOnce(kCmac.get(), message, out); }

BENCHMARK_CAPTURE(Run, HMAC_libcrypto, HmacDirect)->Apply(Sizes);
BENCHMARK_CAPTURE(Run, HMAC_floor, HmacFloor)->Apply(Sizes);
BENCHMARK_CAPTURE(Run, HMAC_ours, HmacOurs)->Apply(Sizes);
BENCHMARK_CAPTURE(Run, HMAC_ours_at_once, HmacOursAtOnce)->Apply(Sizes);
BENCHMARK_CAPTURE(Run, CBC_pass, CbcPass)->Apply(Sizes);
BENCHMARK_CAPTURE(Run, CBC_life, CbcLife)->Apply(Sizes);
BENCHMARK_CAPTURE(Run, CMAC_libcrypto, CmacDirect)->Apply(Sizes);
BENCHMARK_CAPTURE(Run, CMAC_ours, CmacOurs)->Apply(Sizes);
BENCHMARK_CAPTURE(Run, CMAC_ours_at_once, CmacOursAtOnce)->Apply(Sizes);

#ifdef RZ_HAVE_LIBCRYPTO__
template <class Mac, size_t Length>
void CryptoPP_(const ByteArray& message, ByteArray& out) {
  Mac mac(kKey, sizeof kKey);
  out.resize(Length);
  mac.Update(message.data(), message.size());
  mac.Final(out.data());
}
BENCHMARK_CAPTURE(Run, HMAC_cryptopp, CryptoPP_<CryptoPP::HMAC<CryptoPP::SHA256>, kHmacLength>)->Apply(Sizes);
BENCHMARK_CAPTURE(Run, CMAC_cryptopp, CryptoPP_<CryptoPP::CMAC<CryptoPP::AES>, kCmacLength>)->Apply(Sizes);
#endif

#ifdef RZ_HAVE_BOTAN_2
void Botan_(const char* name, const ByteArray& message, ByteArray& out) {
  const auto mac = Botan::MessageAuthenticationCode::create(name);
  mac->set_key(kKey, sizeof kKey);
  mac->update(message.data(), message.size());
  out.resize(mac->output_length());
  mac->final(out.data());
}
void HmacBotan(const ByteArray& message, ByteArray& out) { Botan_("HMAC(SHA-256)", message, out); }
void CmacBotan(const ByteArray& message, ByteArray& out) { Botan_("CMAC(AES-128)", message, out); }
BENCHMARK_CAPTURE(Run, HMAC_botan, HmacBotan)->Apply(Sizes);
BENCHMARK_CAPTURE(Run, CMAC_botan, CmacBotan)->Apply(Sizes);
#endif

#ifdef RZ_HAVE_GNUTLS
template <gnutls_mac_algorithm_t Algorithm, size_t Length>
void GnuTLS(const ByteArray& message, ByteArray& out) {
  out.resize(Length);
  gnutls_hmac_fast(Algorithm, kKey, sizeof kKey, message.data(), message.size(), out.data());
}
BENCHMARK_CAPTURE(Run, HMAC_gnutls, GnuTLS<GNUTLS_MAC_SHA256, kHmacLength>)->Apply(Sizes);
BENCHMARK_CAPTURE(Run, CMAC_gnutls, GnuTLS<GNUTLS_MAC_AES_CMAC_128, kCmacLength>)->Apply(Sizes);
#endif

}  // namespace
