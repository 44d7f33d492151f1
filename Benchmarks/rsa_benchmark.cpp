// RSA-2048 with PKCS #1 v1.5: encryption, decryption and verification beside direct libcrypto on a key that is parsed
// already, and beside other libraries. A life of ours is a new object each time; the keys are there before, on each
// side. Run with --benchmark_repetitions=9 --benchmark_enable_random_interleaving=true and compare the least times.

#include <openssl/rsa.h>
#include <openssl/x509.h>

#include "whole_life.h"
#ifdef RZ_HAVE_LIBCRYPTO__
#include <cryptopp/osrng.h>
#include <cryptopp/rsa.h>
#endif
#ifdef RZ_HAVE_BOTAN_2
#include <botan/auto_rng.h>
#include <botan/pubkey.h>
#include <botan/rsa.h>
#endif
#ifdef RZ_HAVE_GNUTLS
#include <gnutls/abstract.h>
#endif

using namespace lives;

namespace {

constexpr int kBits = 2048;
constexpr size_t kLength = kBits / 8;

template <class T, class Encode>
ByteArray Encoded(Encode encode, T* object) {
  ByteArray bytes(static_cast<size_t>(encode(object, nullptr)));
  unsigned char* to = bytes.data();
  encode(object, &to);
  return bytes;
}

ByteArray LittleEndian(const BIGNUM* number) {
  ByteArray bytes(static_cast<size_t>(BN_num_bytes(number)));
  BN_bn2lebinpad(number, bytes.data(), static_cast<int>(bytes.size()));
  return bytes;
}

/// One key pair for everybody, with a ciphertext and a signature that it made.
struct Pair {
  std::unique_ptr<RSA, Deleter<RSA_free>> rsa{RSA_new()};
  ByteArray message = ByteArray(51, 0x42);  // the length of a DigestInfo of SHA-256
  ByteArray ciphertext = ByteArray(kLength);
  ByteArray signature = ByteArray(kLength);
  ByteArray pkcs8;
  Owned<IAlgorithm> algorithm = NewAlgorithm("RSA");
  Owned<ICryptoParserParameterMap> parameters = NewParameters();
  Owned<IRSAPublicKey> publicKey;
  Owned<IKey> privateKey;

  Pair() {
    const std::unique_ptr<BIGNUM, Deleter<BN_free>> e(BN_new());
    BN_set_word(e.get(), RSA_F4);
    RSA_generate_key_ex(rsa.get(), kBits, e.get(), nullptr);
    const int size = static_cast<int>(message.size());
    RSA_public_encrypt(size, message.data(), ciphertext.data(), rsa.get(), RSA_PKCS1_PADDING);
    RSA_private_encrypt(size, message.data(), signature.data(), rsa.get(), RSA_PKCS1_PADDING);
    const std::unique_ptr<EVP_PKEY, Deleter<EVP_PKEY_free>> pkey(EVP_PKEY_new());
    EVP_PKEY_set1_RSA(pkey.get(), rsa.get());
    const std::unique_ptr<PKCS8_PRIV_KEY_INFO, Deleter<PKCS8_PRIV_KEY_INFO_free>> info(EVP_PKEY2PKCS8(pkey.get()));
    pkcs8 = Encoded(i2d_PKCS8_PRIV_KEY_INFO, info.get());
    parameters->SetPadding("PKCS1");
    publicKey = Own(IRSAPublicKey::Create(algorithm.get(), LittleEndian(RSA_get0_n(rsa.get())),
                                          LittleEndian(RSA_get0_e(rsa.get()))));
    privateKey = Own(IKey::Create(algorithm.get(), "PKCS8", pkcs8));
  }
};
const Pair& Keys() {
  static const Pair pair;
  return pair;
}

using Operation = void (*)(ByteArray& out);

void Once(benchmark::State& state, Operation operation) {
  ByteArray out(kLength);
  for (auto _ : state) {
    operation(out);
    benchmark::DoNotOptimize(out.data());
  }
}

void EncryptDirect(ByteArray& out) {
  out.resize(kLength);
  RSA_public_encrypt(static_cast<int>(Keys().message.size()), Keys().message.data(), out.data(), Keys().rsa.get(),
                     RSA_PKCS1_PADDING);
}
void DecryptDirect(ByteArray& out) {
  out.resize(kLength);
  RSA_private_decrypt(static_cast<int>(kLength), Keys().ciphertext.data(), out.data(), Keys().rsa.get(),
                      RSA_PKCS1_PADDING);
}
void VerifyDirect(ByteArray& out) {
  out.resize(kLength);
  const int length = RSA_public_decrypt(static_cast<int>(kLength), Keys().signature.data(), out.data(),
                                        Keys().rsa.get(), RSA_PKCS1_PADDING);
  out.resize(static_cast<size_t>(length));
  benchmark::DoNotOptimize(out == Keys().message);
}

void OursCipher(int operation, IKey* key, const ByteArray& in, ByteArray& out) {
  const auto cipher = Own(Cipher::Create(Keys().algorithm.get(), Keys().parameters.get()));
  cipher->Init(operation, key);
  cipher->DoFinal(in, out);
}
void EncryptOurs(ByteArray& out) { OursCipher(ENCRYPT_MODE, Keys().publicKey.get(), Keys().message, out); }
void DecryptOurs(ByteArray& out) { OursCipher(DECRYPT_MODE, Keys().privateKey.get(), Keys().ciphertext, out); }
void VerifyOurs(ByteArray&) {
  const auto signature = Own(Signature::Create(Keys().algorithm.get(), Keys().parameters.get()));
  signature->Init(Keys().publicKey.get());
  benchmark::DoNotOptimize(signature->Verify(Keys().message, Keys().signature));
}

#define RZ_ONCE(name, function) BENCHMARK_CAPTURE(Once, name, function)->Apply(Least)

RZ_ONCE(encrypt_libcrypto, EncryptDirect);
RZ_ONCE(encrypt_ours, EncryptOurs);
RZ_ONCE(decrypt_libcrypto, DecryptDirect);
RZ_ONCE(decrypt_ours, DecryptOurs);
RZ_ONCE(verify_libcrypto, VerifyDirect);
RZ_ONCE(verify_ours, VerifyOurs);

#ifdef RZ_HAVE_LIBCRYPTO__
struct CryptoPPKeys {
  CryptoPP::AutoSeededRandomPool random;
  CryptoPP::RSAES<CryptoPP::PKCS1v15>::Decryptor decryptor;
  CryptoPP::RSAES<CryptoPP::PKCS1v15>::Encryptor encryptor;
  CryptoPPKeys() {
    CryptoPP::RSA::PrivateKey key;
    key.Load(CryptoPP::ArraySource(Keys().pkcs8.data(), Keys().pkcs8.size(), true).Ref());
    decryptor.AccessKey() = key;
    encryptor = CryptoPP::RSAES<CryptoPP::PKCS1v15>::Encryptor(decryptor);
  }
};
CryptoPPKeys& Peer() {
  static CryptoPPKeys keys;
  return keys;
}
void EncryptCryptoPP(ByteArray& out) {
  out.resize(kLength);
  Peer().encryptor.Encrypt(Peer().random, Keys().message.data(), Keys().message.size(), out.data());
}
void DecryptCryptoPP(ByteArray& out) {
  out.resize(kLength);
  Peer().decryptor.Decrypt(Peer().random, Keys().ciphertext.data(), kLength, out.data());
}
RZ_ONCE(encrypt_cryptopp, EncryptCryptoPP);
RZ_ONCE(decrypt_cryptopp, DecryptCryptoPP);
#endif

#ifdef RZ_HAVE_BOTAN_2
struct BotanKeys {
  Botan::AutoSeeded_RNG random;
  Botan::RSA_PrivateKey key{Botan::AlgorithmIdentifier(),
                            Botan::secure_vector<uint8_t>(Pkcs1().begin(), Pkcs1().end())};
  Botan::PK_Encryptor_EME encryptor{key, random, "PKCS1v15"};
  Botan::PK_Decryptor_EME decryptor{key, random, "PKCS1v15"};
  Botan::PK_Verifier verifier{key, "EMSA3(Raw)"};
  static const ByteArray& Pkcs1() {
    static const ByteArray encoded = Encoded(i2d_RSAPrivateKey, Keys().rsa.get());
    return encoded;
  }
};
BotanKeys& BotanPeer() {
  static BotanKeys keys;
  return keys;
}
void EncryptBotan(ByteArray&) {
  benchmark::DoNotOptimize(
      BotanPeer().encryptor.encrypt(Keys().message.data(), Keys().message.size(), BotanPeer().random));
}
void DecryptBotan(ByteArray&) {
  benchmark::DoNotOptimize(BotanPeer().decryptor.decrypt(Keys().ciphertext.data(), kLength));
}
void VerifyBotan(ByteArray&) {
  benchmark::DoNotOptimize(BotanPeer().verifier.verify_message(Keys().message.data(), Keys().message.size(),
                                                               Keys().signature.data(), kLength));
}
RZ_ONCE(encrypt_botan, EncryptBotan);
RZ_ONCE(decrypt_botan, DecryptBotan);
RZ_ONCE(verify_botan, VerifyBotan);
#endif

#ifdef RZ_HAVE_GNUTLS
struct GnuTLSKeys {
  gnutls_privkey_t privateKey = nullptr;
  gnutls_pubkey_t publicKey = nullptr;
  GnuTLSKeys() {
    gnutls_datum_t encoded = {const_cast<unsigned char*>(Keys().pkcs8.data()),
                              static_cast<unsigned int>(Keys().pkcs8.size())};
    gnutls_x509_privkey_t key = nullptr;
    gnutls_x509_privkey_init(&key);
    gnutls_x509_privkey_import_pkcs8(key, &encoded, GNUTLS_X509_FMT_DER, nullptr, GNUTLS_PKCS_PLAIN);
    gnutls_privkey_init(&privateKey);
    gnutls_privkey_import_x509(privateKey, key, GNUTLS_PRIVKEY_IMPORT_AUTO_RELEASE);
    gnutls_pubkey_init(&publicKey);
    gnutls_pubkey_import_privkey(publicKey, privateKey, 0, 0);
  }
};
const GnuTLSKeys& GnuTLSPeer() {
  static const GnuTLSKeys keys;
  return keys;
}
gnutls_datum_t Datum(const ByteArray& bytes) {
  return {const_cast<unsigned char*>(bytes.data()), static_cast<unsigned int>(bytes.size())};
}
void EncryptGnuTLS(ByteArray&) {
  const gnutls_datum_t in = Datum(Keys().message);
  gnutls_datum_t result = {};
  gnutls_pubkey_encrypt_data(GnuTLSPeer().publicKey, 0, &in, &result);
  gnutls_free(result.data);
}
void DecryptGnuTLS(ByteArray&) {
  const gnutls_datum_t in = Datum(Keys().ciphertext);
  gnutls_datum_t result = {};
  gnutls_privkey_decrypt_data(GnuTLSPeer().privateKey, 0, &in, &result);
  gnutls_free(result.data);
}
RZ_ONCE(encrypt_gnutls, EncryptGnuTLS);
RZ_ONCE(decrypt_gnutls, DecryptGnuTLS);
#endif

}  // namespace
