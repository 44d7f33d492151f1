#include <gtest/gtest.h>
#include <openssl/err.h>

#include "support/caught.h"
#include "support/doubles.h"
#include "support/rsa.h"
#include "support/trace.h"
#include "support/vectors.h"
#include "tavo/framework/cipher.h"
#include "tavo/framework/rsa.h"

using namespace Tavo::Framework;

namespace {

/// A key pair that libcrypto made, as libcrypto's and as the framework's.
struct Pair {
  explicit Pair(int bits)
      : rsa(reference::NewRsa(bits)),
        pkey(reference::PkeyOf(rsa.get())),
        size(static_cast<size_t>(RSA_size(rsa.get()))),
        algorithm(NewAlgorithm("RSA")),
        publicKey(Own(IRSAPublicKey::Create(algorithm.get(), reference::LittleEndian(RSA_get0_n(rsa.get())),
                                            reference::LittleEndian(RSA_get0_e(rsa.get()))))),
        privateKey(Own(IKey::Create(algorithm.get(), "PKCS8", reference::Pkcs8Of(rsa.get())))) {}
  reference::Rsa rsa;
  reference::Key pkey;
  size_t size;  // of the modulus
  Owned<IAlgorithm> algorithm;
  Owned<IRSAPublicKey> publicKey;
  Owned<IKey> privateKey;
};

struct Machine {
  explicit Machine(const char* padding) : algorithm(NewAlgorithm("RSA")), map(NewParameters()) {
    if (padding != nullptr) map->SetPadding(padding);
    cipher = Own(Cipher::Create(algorithm.get(), map.get()));
  }
  ByteArray Run(int operation, IKey& key, const ByteArray& in) {
    ByteArray out(3, 0xaa);
    cipher->Init(operation, &key);
    cipher->DoFinal(in, out);
    return out;
  }
  Owned<IAlgorithm> algorithm;
  Owned<ICryptoParserParameterMap> map;
  Owned<Cipher> cipher;
};

/// libcrypto's answer through its other interface.
ByteArray Reference(int operation, EVP_PKEY* pkey, int padding, const ByteArray& in) {
  const std::unique_ptr<EVP_PKEY_CTX, reference::Deleter<EVP_PKEY_CTX_free>> context(EVP_PKEY_CTX_new(pkey, nullptr));
  size_t size = static_cast<size_t>(EVP_PKEY_size(pkey));
  ByteArray out(size);
  const bool encrypt = operation == ENCRYPT_MODE;
  encrypt ? EVP_PKEY_encrypt_init(context.get()) : EVP_PKEY_decrypt_init(context.get());
  EVP_PKEY_CTX_set_rsa_padding(context.get(), padding);
  const int done =
      (encrypt ? EVP_PKEY_encrypt : EVP_PKEY_decrypt)(context.get(), out.data(), &size, in.data(), in.size());
  EXPECT_EQ(done, 1);
  out.resize(size);
  return out;
}

struct PaddingCase {
  const char* name;  // null: none in the map
  int number;
  size_t overhead;
};
const PaddingCase kPaddings[] = {{"PKCS1", RSA_PKCS1_PADDING, 11}, {"OAEP", RSA_PKCS1_OAEP_PADDING, 42}};

class RsaCipher : public testing::TestWithParam<int> {};

TEST_P(RsaCipher, AgreesWithLibcryptoBothWaysUpToTheLimitOfEachPadding) {
  const Pair pair(GetParam());
  for (const auto& padding : kPaddings) {
    SCOPED_TRACE(padding.name);
    Machine m(padding.name);
    const size_t limit = pair.size - padding.overhead;
    for (const size_t size : {size_t{0}, size_t{1}, limit}) {
      const ByteArray message(size, 0x42);
      const ByteArray ours = m.Run(ENCRYPT_MODE, *pair.publicKey, message);
      EXPECT_EQ(Reference(DECRYPT_MODE, pair.pkey.get(), padding.number, ours), message) << size;
      const ByteArray theirs = Reference(ENCRYPT_MODE, pair.pkey.get(), padding.number, message);
      EXPECT_EQ(m.Run(DECRYPT_MODE, *pair.privateKey, theirs), message) << size;
    }
    EXPECT_THROWS(4003, 466, "Unable to encrypt data", m.Run(ENCRYPT_MODE, *pair.publicKey, ByteArray(limit + 1)));
  }
  for (const char* none : {static_cast<const char*>(nullptr), "None"}) {
    Machine m(none);
    ByteArray block(pair.size, 0x42);
    block[0] = 0;
    const ByteArray cipher = m.Run(ENCRYPT_MODE, *pair.publicKey, block);
    EXPECT_EQ(cipher, Reference(ENCRYPT_MODE, pair.pkey.get(), RSA_NO_PADDING, block));
    EXPECT_EQ(m.Run(DECRYPT_MODE, *pair.privateKey, cipher), block);
  }
}

// 1025 bits: the modulus begins in the middle of its first octet.
INSTANTIATE_TEST_SUITE_P(Bits, RsaCipher, testing::Values(1024, 1025, 2048, 3072, 4096));

class RsaCipherRefusals : public testing::Test {
 protected:
  static const Pair& pair() {
    static const Pair pair(1024);
    return pair;
  }
};

TEST_F(RsaCipherRefusals, LengthsAndValuesOfABlock) {
  struct {
    int operation;
    IKey* key;
    unsigned long sizeLine, line;
    const char* message;
  } const kCases[] = {{ENCRYPT_MODE, pair().publicKey.get(), 458, 466, "Unable to encrypt data"},
                      {DECRYPT_MODE, pair().privateKey.get(), 493, 501, "Unable to decrypt data"}};
  for (const auto& c : kCases) {
    Machine m("None");
    for (const size_t size : {size_t{0}, pair().size - 1, pair().size + 1}) {
      m = Machine("None");
      EXPECT_THROWS(4013, c.sizeLine, "Unsupported padding with this datalen",
                    m.Run(c.operation, *c.key, ByteArray(size)));
    }
    m = Machine("None");
    EXPECT_THROWS(4003, c.line, c.message, m.Run(c.operation, *c.key, ByteArray(pair().size, 0xff)));
  }
  for (const auto& padding : kPaddings) {
    for (const size_t size : {size_t{0}, pair().size + 1}) {
      Machine m(padding.name);
      EXPECT_THROWS(4003, 501, "Unable to decrypt data", m.Run(DECRYPT_MODE, *pair().privateKey, ByteArray(size, 1)));
    }
  }
}

TEST_F(RsaCipherRefusals, AShorterCiphertextIsANumberWithZerosInFront) {
  Machine m("PKCS1");
  ByteArray cipher;
  do {
    cipher = m.Run(ENCRYPT_MODE, *pair().publicKey, FromText("short"));
  } while (cipher[0] != 0);
  cipher.erase(cipher.begin());
  EXPECT_EQ(m.Run(DECRYPT_MODE, *pair().privateKey, cipher), FromText("short"));
}

TEST_F(RsaCipherRefusals, OptionsAreCheckedBeforeTheKey) {
  TestKey stranger("RSA", ByteArray(1));
  for (const int operation : {ENCRYPT_MODE, DECRYPT_MODE}) {
    Machine m("pkcs1");
    EXPECT_THROWS(4007, 422, "Unsupported padding", m.Run(operation, stranger, {}));
    m = Machine("OAEP");
    m.map->SetOaepEncodingParam(ByteArray(1));
    EXPECT_THROWS(4000, 414, "OpenSsl support only RSA OAEP with empty encoding parameter",
                  m.Run(operation, stranger, {}));
  }
  Machine m("OAEP");
  m.map->SetOaepEncodingParam(ByteArray());
  EXPECT_EQ(m.Run(ENCRYPT_MODE, *pair().publicKey, {}).size(), pair().size) << "an empty label is no label";
}

TEST_F(RsaCipherRefusals, KeysOfAnotherClassOrWithoutAModulus) {
  TestKey stranger("RSA", ByteArray(1));
  const auto zero = Own(IRSAPublicKey::Create(pair().algorithm.get(), ByteArray(1), ByteArray(1, 3)));
  for (IKey* key : {static_cast<IKey*>(&stranger), pair().privateKey.get(), static_cast<IKey*>(zero.get())}) {
    Machine m("PKCS1");
    EXPECT_THROWS(4002, 447, "Only Openssl RSA Public keys are supported", m.Run(ENCRYPT_MODE, *key, {}));
  }
  for (IKey* key : {static_cast<IKey*>(&stranger), static_cast<IKey*>(pair().publicKey.get())}) {
    Machine m("PKCS1");
    EXPECT_THROWS(4002, 482, "Only Openssl RSA Private keys are supported", m.Run(DECRYPT_MODE, *key, {}));
  }
}

TEST_F(RsaCipherRefusals, AFailureKeepsTheMessageTheOutputAndTheHostsErrors) {
  Machine m("PKCS1");
  const ByteArray random(pair().size, 1);
  ByteArray out(3, 9);
  ERR_clear_error();
  ERR_raise(ERR_LIB_USER, 42);
  m.cipher->Init(DECRYPT_MODE, pair().privateKey.get());
  m.cipher->Update(random);
  const Trace trace(1UL << 1);
  EXPECT_THROWS(4003, 501, "Unable to decrypt data", m.cipher->DoFinal(out));
  ASSERT_EQ(trace.lines().size(), 1U);
  EXPECT_EQ(trace.lines()[0].rfind("1 COpensslRSACipher::Cipher : RSA_private_decrypt - Unable to decrypt data with "
                                   "error 0x",
                                   0),
            0U)
      << trace.lines()[0];
  EXPECT_EQ(out, ByteArray(3, 9));
  EXPECT_EQ(ERR_GET_REASON(ERR_get_error()), 42);
  EXPECT_EQ(ERR_get_error(), 0UL);
  m.map->SetPadding("None");
  m.cipher->DoFinal(out);
  EXPECT_EQ(out, Reference(DECRYPT_MODE, pair().pkey.get(), RSA_NO_PADDING, random));
  EXPECT_THROWS(4009, 220, "Cipher is not initialized", m.cipher->DoFinal(out));
}

TEST_F(RsaCipherRefusals, TheKeyOfACertificate) {
  Machine m("OAEP");
  TestCertificate certificate(pair().publicKey.get());
  ByteArray out = FromText("to the holder");
  m.cipher->Init(ENCRYPT_MODE, &certificate);
  m.cipher->DoFinal(out, out);
  EXPECT_EQ(m.Run(DECRYPT_MODE, *pair().privateKey, out), FromText("to the holder"));

  TestCertificate unreadable(nullptr);
  const Caught caught = Catch([&] { m.cipher->Init(ENCRYPT_MODE, &unreadable); });
  EXPECT_EQ(caught.file, "store") << "the certificate's own exception";
  m.cipher->Init(DECRYPT_MODE, &certificate);
  EXPECT_THROWS(4002, 482, "Only Openssl RSA Private keys are supported", m.cipher->DoFinal(out));
}

}  // namespace
