#include "support/caught.h"
#include "support/doubles.h"
#include "support/rsa.h"
#include "support/services.h"
#include "support/trace.h"
#include "tavo/framework/cipher.h"

using namespace Tavo::Framework;

namespace {

using reference::Pair;
using reference::SmallPair;
using Machine = Made<Cipher>;

/// libcrypto's answer through its other interface.
ByteArray Reference(int operation, EVP_PKEY* pkey, int padding, const ByteArray& in) {
  const reference::Holder<EVP_PKEY_CTX, EVP_PKEY_CTX_free> context(EVP_PKEY_CTX_new(pkey, nullptr));
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
    Machine m("RSA", padding.name);
    const size_t limit = pair.size - padding.overhead;
    for (const size_t size : {size_t{0}, size_t{1}, limit}) {
      const ByteArray message(size, 0x42);
      const ByteArray ours = Crypt(m, ENCRYPT_MODE, *pair.publicKey, message);
      EXPECT_EQ(Reference(DECRYPT_MODE, pair.pkey.get(), padding.number, ours), message) << size;
      const ByteArray theirs = Reference(ENCRYPT_MODE, pair.pkey.get(), padding.number, message);
      EXPECT_EQ(Crypt(m, DECRYPT_MODE, *pair.privateKey, theirs), message) << size;
    }
    EXPECT_THROWS(4003, 466, "Unable to encrypt data", Crypt(m, ENCRYPT_MODE, *pair.publicKey, ByteArray(limit + 1)));
  }
  for (const char* none : {static_cast<const char*>(nullptr), "None"}) {
    Machine m("RSA", none);
    ByteArray block(pair.size, 0x42);
    block[0] = 0;
    const ByteArray cipher = Crypt(m, ENCRYPT_MODE, *pair.publicKey, block);
    EXPECT_EQ(cipher, Reference(ENCRYPT_MODE, pair.pkey.get(), RSA_NO_PADDING, block));
    EXPECT_EQ(Crypt(m, DECRYPT_MODE, *pair.privateKey, cipher), block);
  }
}

// 1025 bits: the modulus begins in the middle of its first octet.
INSTANTIATE_TEST_SUITE_P(Bits, RsaCipher, testing::Values(1024, 1025, 2048, 3072, 4096));

TEST(RsaCipherRefusals, AShorterCiphertextIsANumberWithZerosInFront) {
  Machine m("RSA", "PKCS1");
  ByteArray cipher;
  do {
    cipher = Crypt(m, ENCRYPT_MODE, *SmallPair().publicKey, FromText("short"));
  } while (cipher[0] != 0);
  cipher.erase(cipher.begin());
  EXPECT_EQ(Crypt(m, DECRYPT_MODE, *SmallPair().privateKey, cipher), FromText("short"));
}

TEST(RsaCipherRefusals, AFailureKeepsTheMessageTheOutputAndTheHostsErrors) {
  Machine m("RSA", "PKCS1");
  const ByteArray random(SmallPair().size, 1);
  ByteArray out(3, 9);
  m->Init(DECRYPT_MODE, SmallPair().privateKey.get());
  m->Update(random);
  const Trace trace(1UL << 1);
  LeavesTheHostsErrors([&] { EXPECT_THROWS(4003, 501, "Unable to decrypt data", m->DoFinal(out)); });
  EXPECT_TRUE(trace.Begins("1 COpensslRSACipher::Cipher : RSA_private_decrypt - Unable to decrypt data with error 0x"));
  EXPECT_EQ(out, ByteArray(3, 9));
  m.map->SetPadding("None");
  m->DoFinal(out);
  EXPECT_EQ(out, Reference(DECRYPT_MODE, SmallPair().pkey.get(), RSA_NO_PADDING, random));
  EXPECT_THROWS(4009, 220, "Cipher is not initialized", m->DoFinal(out));
}

TEST(RsaCipherRefusals, TheKeyOfACertificate) {
  Machine m("RSA", "OAEP");
  TestCertificate certificate(SmallPair().publicKey.get());
  ByteArray out = FromText("to the holder");
  m->Init(ENCRYPT_MODE, &certificate);
  m->DoFinal(out, out);
  EXPECT_EQ(Crypt(m, DECRYPT_MODE, *SmallPair().privateKey, out), FromText("to the holder"));

  TestCertificate unreadable(nullptr);
  const Caught caught = Catch([&] { m->Init(ENCRYPT_MODE, &unreadable); });
  EXPECT_EQ(caught.file, "store") << "the certificate's own exception";
  m->Init(DECRYPT_MODE, &certificate);
  EXPECT_THROWS(4002, 482, "Only Openssl RSA Private keys are supported", m->DoFinal(out));
}

}  // namespace
