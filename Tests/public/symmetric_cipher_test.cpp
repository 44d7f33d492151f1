#include <openssl/des.h>
#include <openssl/evp.h>

#include "support/caught.h"
#include "support/doubles.h"
#include "support/services.h"
#include "support/trace.h"
#include "tavo/framework/cipher.h"

using namespace Tavo::Framework;

namespace {

using Machine = Made<Cipher>;

class CipherVectors : public VectorTest {};

TEST_P(CipherVectors, EveryPathBothWays) {
  const Vector& vector = GetParam();
  const Machine m(vector.section().c_str(), vector.Text("padding").c_str(), vector.Text("mode").c_str());
  if (vector.Has("iv")) m.map->SetIv(vector.Bytes("iv"));
  const auto key = Own(IKey::Create(NewAlgorithm("AES").get(), "RAW", vector.Bytes("key")));
  const ByteArray texts[2] = {vector.Bytes("plaintext"), vector.Bytes("ciphertext")};
  for (const int operation : {ENCRYPT_MODE, DECRYPT_MODE}) {
    EveryPath(
        *m.service, &Cipher::DoFinal, &Cipher::DoFinal, [&] { m->Init(operation, key.get()); }, texts[operation],
        ToHex(texts[1 - operation]));
  }
}

INSTANTIATE_TEST_SUITE_P(Published, CipherVectors, testing::ValuesIn(LoadVectors("cipher.txt")));

/// libcrypto's answer, without its padding: EVP, and the one-algorithm functions for DES.
ByteArray Reference(const std::string& name, bool cbc, const ByteArray& key, const ByteArray& iv, ByteArray data) {
  ByteArray out(data.size());
  if (name == "DES") {
    DES_key_schedule schedule;
    DES_cblock raw;
    DES_cblock chain = {};
    std::copy_n(key.begin(), 8, raw);
    if (cbc) std::copy_n(iv.begin(), 8, chain);
    DES_set_key_unchecked(&raw, &schedule);
    for (size_t i = 0; i < data.size(); i += 8) {
      DES_ncbc_encrypt(&data[i], &out[i], 8, &schedule, &chain, DES_ENCRYPT);
      if (!cbc) std::fill_n(chain, 8, static_cast<unsigned char>(0));
    }
    return out;
  }
  const EVP_CIPHER* cipher =
      name == "AES" ? (cbc ? EVP_aes_128_cbc() : EVP_aes_128_ecb()) : (cbc ? EVP_des_ede3_cbc() : EVP_des_ede3_ecb());
  const std::unique_ptr<EVP_CIPHER_CTX, void (*)(EVP_CIPHER_CTX*)> context(EVP_CIPHER_CTX_new(), EVP_CIPHER_CTX_free);
  EVP_EncryptInit_ex(context.get(), cipher, nullptr, key.data(), iv.data());
  EVP_CIPHER_CTX_set_padding(context.get(), 0);
  int length = 0;
  EVP_EncryptUpdate(context.get(), out.data(), &length, data.data(), static_cast<int>(data.size()));
  return out;
}

TEST(SymmetricCipher, AgreesWithLibcryptoForAnyKeyLengthAndSplit) {
  std::mt19937 random(20240301);
  for (size_t size = 0; size <= 300; ++size) {
    const char* name = size % 3 == 0 ? "DES" : size % 3 == 1 ? "3DES" : "AES";
    const size_t block = size % 3 == 2 ? 16 : 8;
    const bool cbc = random() % 2 == 0;
    Machine m(name, "PKCS7", cbc ? "CBC" : "ECB");
    TestKey key("AES", Octets(random, 24));
    const ByteArray iv = Octets(random, 16);
    m.map->SetIv(iv);
    const ByteArray message = Octets(random, size);
    ByteArray padded = message;
    padded.resize((size / block + 1) * block, static_cast<unsigned char>(block - size % block));
    const ByteArray expected = Reference(name, cbc, key.bytes, iv, padded);

    const size_t split = random() % (size + 1);
    ByteArray out;
    m->Init(ENCRYPT_MODE, &key);
    m->Update(Part(message, 0, split));
    m->DoFinal(Part(message, split, size), out);
    EXPECT_EQ(out, expected) << name << (cbc ? " CBC " : " ECB ") << size << " split at " << split;
    EXPECT_EQ(Crypt(m, DECRYPT_MODE, key, expected), message) << name << (cbc ? " CBC " : " ECB ") << size;
    m.map->SetPadding("None");
    EXPECT_EQ(Crypt(m, ENCRYPT_MODE, key, padded), expected) << name << (cbc ? " CBC " : " ECB ") << size;
  }
}

TEST(SymmetricCipher, AFailureLeavesTheHostsErrorQueueAlone) {
  TestKey key("AES", ByteArray(16, 1));
  LeavesTheHostsErrors([&] {
    const Machine m("AES", "PKCS7", "CBC");
    EXPECT_TRUE(Catch([&] { Crypt(m, DECRYPT_MODE, key, ByteArray(16, 3)); }).thrown);
  });
}

TEST(SymmetricCipher, AMapThatCannotBeRead) {
  const auto algorithm = NewAlgorithm("AES");
  BrokenMap map;
  const auto cipher = Own(Cipher::Create(algorithm.get(), &map));
  TestKey key("AES", ByteArray(16, 1));
  ByteArray out;
  cipher->Init(ENCRYPT_MODE, &key);
  const Caught caught = Catch([&] { cipher->DoFinal(out); });
  EXPECT_EQ(caught.causes, "4004 Error while parsing parameters < 4002 no store");
}

TEST(SymmetricCipher, TheKeyOfACertificateIsTakenAtInitAndRefusedAtDoFinal) {
  Machine m("AES", "None", "ECB");
  TestKey key("RSA", ByteArray(16, 1));
  key.format = "X509";
  TestCertificate unreadable(nullptr);
  TestCertificate certificate(&key);
  EXPECT_THROWS(4002, 139, "Unable to retrieve the certificate public key", m->Init(ENCRYPT_MODE, &unreadable));
  EXPECT_EQ(Catch([&] { m->Init(ENCRYPT_MODE, &unreadable); }).causes, "4002 no store");
  struct : TestCertificate {
    using TestCertificate::TestCertificate;
    IPublicKey* GetPublicKey() override { return key; }
  } keyless(nullptr);
  for (TestCertificate* refused : {&certificate, static_cast<TestCertificate*>(&keyless)}) {
    const Machine other("AES", "None", "ECB");
    other->Init(ENCRYPT_MODE, refused);
    ByteArray out;
    EXPECT_EQ(Catch([&] { other->DoFinal(out); }).causes, "4002 Only raw key format is supported");
  }
}

TEST(SymmetricCipher, TheTraceOfARun) {
  Machine m("3DES", "None", "CBC");
  TestKey key("AES", ByteArray(16, 1));
  m->Init(DECRYPT_MODE, &key);
  ByteArray out;
  const Trace trace(1UL << 0 | 1UL << 1 | 1UL << 2 | 1UL << 8 | 1UL << 16);
  EXPECT_TRUE(Catch([&] { m->DoFinal(ByteArray(3), out); }).thrown);
  EXPECT_EQ(trace.WithoutAddresses("COpensslSymmetricCipher"), LoadParagraph("traces.txt", "a decryption that fails"));
}

TEST(SymmetricCipherDeathTest, AFailingLibcrypto) {
  HoldsWithoutAlgorithms([] {
    TestKey key("AES", ByteArray(16, 1));
    const auto causes = [&](int operation) {
      return Catch([&] { Crypt(Machine("AES", "PKCS7", "CBC"), operation, key, ByteArray(16)); }).causes;
    };
    return causes(ENCRYPT_MODE) == "4003 EVP_EncryptInit failure" &&
           causes(DECRYPT_MODE) == "4003 EVP_DecryptInit failure";
  });
}

}  // namespace
