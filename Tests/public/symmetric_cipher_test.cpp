#include <openssl/des.h>
#include <openssl/evp.h>

#include "support/caught.h"
#include "support/doubles.h"
#include "support/services.h"
#include "support/trace.h"
#include "tavo/framework/cipher.h"

using namespace Tavo::Framework;

namespace {

constexpr const char* kFile = "Sources/openssl/rz.crypto.openssl.SymmetricCipher";

using Machine = Made<Cipher>;

ByteArray Crypt(const Machine& m, int operation, IKey& key, const ByteArray& in) {
  ByteArray out;
  m->Init(operation, &key);
  m->DoFinal(in, out);
  return out;
}

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

// Everything is wrong at first. Each failure is the first in the order of checks and leaves the message alone, so that
// after the last repair the whole message is encrypted, `in` of the one DoFinal that had it included.
TEST(SymmetricCipher, FailuresInTheOrderOfTheirChecksKeepTheMessage) {
  struct {
    const char* name;
    unsigned long modeLine;
    size_t shortKey, enoughKey;
    size_t block;
  } const kCases[] = {{"DES", 439, 7, 8, 8}, {"3DES", 456, 23, 16, 8}, {"AES", 473, 15, 16, 16}};
  for (const auto& c : kCases) {
    Machine m(c.name);
    TestKey key("AES", ByteArray(c.shortKey, 5));
    key.format = "PKCS8";
    m.map->SetPadding("PKCS5");
    m.map->SetIv(ByteArray(c.block - 1, 3));
    m->Init(ENCRYPT_MODE, &key);
    m->Update(FromText("abc"));

    ByteArray out(2, 9);
    const Caught with = Catch([&] { m->DoFinal(FromText("def"), out); });
    EXPECT_EQ(with.line, 188UL);
    EXPECT_EQ(with.message, "Cipher failed");
    EXPECT_EQ(with.causes, "4000 No cipher mode in params");
    const auto fails = [&](unsigned long innerLine, const char* cause) {
      const Caught caught = Catch([&] { m->DoFinal(out); });
      EXPECT_EQ(caught.line, 234UL);
      EXPECT_EQ(caught.file, kFile);
      EXPECT_EQ(caught.causes, cause) << c.name;
      EXPECT_EQ(std::to_string(caught.id), std::string(cause, 4));
      EXPECT_EQ(innerLine == 0 ? 0 : caught.causeLine, innerLine) << c.name << " " << cause;
      EXPECT_EQ(out, ByteArray(2, 9));
      EXPECT_THROWS(4009, 66, "Cipher is already initialized", m->Init(ENCRYPT_MODE, &key));
    };
    fails(415, "4000 No cipher mode in params");
    m.map->SetCipherMode("CFB");
    fails(c.modeLine, "4002 Unsupported cipher mode");
    m.map->SetCipherMode("CBC");
    fails(495, "4007 Unsupported padding");
    m.map->SetPadding("None");
    fails(502, "4002 Only raw key format is supported");
    key.format = "RAW";
    fails(0, "4010 Invalid key size");
    key.bytes.resize(c.enoughKey);
    fails(0, "4000 Invalid IV length");
    m.map->SetIv(ByteArray(c.block, 3));
    fails(587, "4003 EVP_EncryptFinal failure");
    m.map->SetPadding("PKCS7");
    m->DoFinal(out);
    EXPECT_EQ(Crypt(m, DECRYPT_MODE, key, out), FromText("abcdef"));
  }
}

TEST(SymmetricCipher, DecryptionOfWhatIsNoCiphertext) {
  TestKey key("AES", ByteArray(16, 1));
  for (const char* padding : {"PKCS7", "None"}) {
    for (const size_t size : {0UL, 1UL, 15UL, 16UL, 17UL, 48UL}) {
      Machine m("AES", padding, "ECB");
      ByteArray out(2, 9);
      const bool fails = padding == std::string("PKCS7") || size % 16 != 0;  // 16 random octets end in no padding
      m->Init(DECRYPT_MODE, &key);
      const Caught caught = Catch([&] { m->DoFinal(ByteArray(size, 0x5a), out); });
      EXPECT_EQ(caught.thrown, fails) << padding << " " << size;
      EXPECT_EQ(caught.causes, fails ? "4003 EVP_DecryptFinal failure" : "") << padding << " " << size;
      EXPECT_EQ(out.size(), fails ? 2 : size) << "no unverified plaintext comes out";
    }
  }
}

TEST(SymmetricCipher, AFailureLeavesTheHostsErrorQueueAlone) {
  TestKey key("AES", ByteArray(16, 1));
  LeavesTheHostsErrors([&] {
    const Machine m("AES", "PKCS7", "CBC");
    EXPECT_TRUE(Catch([&] { Crypt(m, DECRYPT_MODE, key, ByteArray(16, 3)); }).thrown);
  });
}

TEST(SymmetricCipher, HowMuchOfKeyAndIvIsUsed) {
  TestKey key("AES", FromHex("000102030405060708090a0b0c0d0e0f ff"));
  Machine m("AES", "None", "CBC");
  const ByteArray block(16, 0x11);
  m.map->SetIv(FromHex("000102030405060708090a0b0c0d0e0f ffff"));
  const ByteArray longer = Crypt(m, ENCRYPT_MODE, key, block);
  m.map->SetIv(FromHex("000102030405060708090a0b0c0d0e0f"));
  key.bytes.resize(16);
  EXPECT_EQ(Crypt(m, ENCRYPT_MODE, key, block), longer);
  m.map->SetIv(ByteArray());
  const ByteArray empty = Crypt(m, ENCRYPT_MODE, key, block);
  m.map->SetIv(ByteArray(16));
  EXPECT_EQ(Crypt(m, ENCRYPT_MODE, key, block), empty);
  EXPECT_NE(longer, empty);

  Machine ecb("AES", "None", "ECB");
  const ByteArray plain = Crypt(ecb, ENCRYPT_MODE, key, block);
  ecb.map->SetIv(ByteArray(3, 1));
  EXPECT_EQ(Crypt(ecb, ENCRYPT_MODE, key, block), plain) << "ECB looks at no IV";
}

TEST(SymmetricCipher, PaddingIsOffWhenTheMapSaysNothing) {
  Machine m("AES");
  m.map->SetCipherMode("ECB");
  TestKey key("AES", ByteArray(16, 1));
  EXPECT_EQ(Crypt(m, ENCRYPT_MODE, key, ByteArray(32, 1)).size(), 32UL);
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
  EXPECT_EQ(trace.WithoutAddresses("COpensslSymmetricCipher"),
            (std::vector<std::string>{
                "8 COpensslSymmetricCipher::DoFinal : this=*",
                "8 COpensslSymmetricCipher::Cipher : this=*",
                "2 COpensslSymmetricCipher::Cipher: No Padding",
                "2 COpensslSymmetricCipher::Cipher: EVP_Cipher block size is 8",
                "0 COpensslSymmetricCipher::Cipher: calling EVP_DecryptInit",
                "0 COpensslSymmetricCipher::Cipher: calling EVP_DecryptUpdate",
                "0 COpensslSymmetricCipher::Cipher: calling EVP_DecryptFinal",
                "1 COpensslSymmetricCipher::Cipher: EVP_DecryptFinal failure",
                "16 COpensslSymmetricCipher::Cipher Returns EVP_DecryptFinal failure",
                "16 COpensslSymmetricCipher::DoFinal Returns Cipher failed",
            }));
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
