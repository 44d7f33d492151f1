#include <gtest/gtest.h>
#include <openssl/des.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/provider.h>

#include <cstdlib>
#include <random>

#include "support/caught.h"
#include "support/doubles.h"
#include "support/trace.h"
#include "support/vectors.h"
#include "tavo/framework/cipher.h"

using namespace Tavo::Framework;

namespace {

constexpr const char* kFile = "Sources/openssl/rz.crypto.openssl.SymmetricCipher";

struct Machine {
  explicit Machine(const char* name)
      : algorithm(NewAlgorithm(name)), map(NewParameters()), cipher(Own(Cipher::Create(algorithm.get(), map.get()))) {}
  Machine(const char* name, const char* mode, const char* padding) : Machine(name) {
    map->SetCipherMode(mode);
    map->SetPadding(padding);
  }
  ByteArray Run(int operation, IKey& key, const ByteArray& in) {
    ByteArray out;
    cipher->Init(operation, &key);
    cipher->DoFinal(in, out);
    return out;
  }
  Owned<IAlgorithm> algorithm;
  Owned<ICryptoParserParameterMap> map;
  Owned<Cipher> cipher;
};

ByteArray Part(const ByteArray& bytes, size_t from, size_t to) {
  return ByteArray(bytes.begin() + static_cast<long>(from), bytes.begin() + static_cast<long>(to));
}

class CipherVectors : public VectorTest {};

TEST_P(CipherVectors, EveryPathBothWays) {
  const Vector& vector = GetParam();
  Machine m(vector.section().c_str(), vector.Text("mode").c_str(), vector.Text("padding").c_str());
  if (vector.Has("iv")) m.map->SetIv(vector.Bytes("iv"));
  const auto key = Own(IKey::Create(NewAlgorithm("AES").get(), "RAW", vector.Bytes("key")));
  const ByteArray texts[2] = {vector.Bytes("plaintext"), vector.Bytes("ciphertext")};
  for (const int operation : {ENCRYPT_MODE, DECRYPT_MODE}) {
    const ByteArray& in = texts[operation];
    const std::string expected = ToHex(texts[1 - operation]);
    EXPECT_EQ(ToHex(m.Run(operation, *key, in)), expected);

    ByteArray out(100, 0xaa);
    m.cipher->Init(operation, key.get());
    for (const unsigned char byte : in) m.cipher->Update(ByteArray(1, byte));
    m.cipher->DoFinal(out);
    EXPECT_EQ(ToHex(out), expected);

    m.cipher->Init(operation, key.get());
    m.cipher->Update(Part(in, 0, in.size() / 3));
    m.cipher->DoFinal(Part(in, in.size() / 3, in.size()), out);
    EXPECT_EQ(ToHex(out), expected);

    ByteArray same = in;
    m.cipher->Init(operation, key.get());
    m.cipher->DoFinal(same, same);
    EXPECT_EQ(ToHex(same), expected);
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
  const auto bytes = [&](size_t size) {
    ByteArray out(size);
    for (auto& byte : out) byte = static_cast<unsigned char>(random());
    return out;
  };
  for (size_t size = 0; size <= 300; ++size) {
    const char* name = size % 3 == 0 ? "DES" : size % 3 == 1 ? "3DES" : "AES";
    const size_t block = size % 3 == 2 ? 16 : 8;
    const bool cbc = random() % 2 == 0;
    Machine m(name, cbc ? "CBC" : "ECB", "PKCS7");
    TestKey key("AES", bytes(24));
    const ByteArray iv = bytes(16);
    m.map->SetIv(iv);
    const ByteArray message = bytes(size);
    ByteArray padded = message;
    padded.resize((size / block + 1) * block, static_cast<unsigned char>(block - size % block));
    const ByteArray expected = Reference(name, cbc, key.bytes, iv, padded);

    const size_t split = random() % (size + 1);
    ByteArray out;
    m.cipher->Init(ENCRYPT_MODE, &key);
    m.cipher->Update(Part(message, 0, split));
    m.cipher->DoFinal(Part(message, split, size), out);
    EXPECT_EQ(out, expected) << name << (cbc ? " CBC " : " ECB ") << size << " split at " << split;
    EXPECT_EQ(m.Run(DECRYPT_MODE, key, expected), message) << name << (cbc ? " CBC " : " ECB ") << size;
    m.map->SetPadding("None");
    EXPECT_EQ(m.Run(ENCRYPT_MODE, key, padded), expected) << name << (cbc ? " CBC " : " ECB ") << size;
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
    m.cipher->Init(ENCRYPT_MODE, &key);
    m.cipher->Update(FromText("abc"));

    ByteArray out(2, 9);
    const Caught with = Catch([&] { m.cipher->DoFinal(FromText("def"), out); });
    EXPECT_EQ(with.line, 188UL);
    EXPECT_EQ(with.message, "Cipher failed");
    EXPECT_EQ(with.causes, "4000 No cipher mode in params");
    const auto fails = [&](unsigned long innerLine, const char* cause) {
      try {
        m.cipher->DoFinal(out);
        ADD_FAILURE() << c.name << ": no failure, expected " << cause;
      } catch (IException* exception) {
        const auto owner = Own(exception);
        EXPECT_EQ(exception->getLineNumber(), 234UL);
        IException* inner = exception->getInnerException();
        ASSERT_NE(inner, nullptr);
        EXPECT_EQ(innerLine != 0 ? inner->getLineNumber() : 0, innerLine);
        EXPECT_EQ(inner->getFilename(), kFile);
        EXPECT_EQ(std::to_string(inner->getID()) + " " + inner->what(), cause);
        EXPECT_EQ(exception->getID(), inner->getID());
      }
      EXPECT_EQ(out, ByteArray(2, 9));
      EXPECT_THROWS(4009, 66, "Cipher is already initialized", m.cipher->Init(ENCRYPT_MODE, &key));
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
    m.cipher->DoFinal(out);
    EXPECT_EQ(m.Run(DECRYPT_MODE, key, out), FromText("abcdef"));
  }
}

TEST(SymmetricCipher, DecryptionOfWhatIsNoCiphertext) {
  TestKey key("AES", ByteArray(16, 1));
  for (const char* padding : {"PKCS7", "None"}) {
    for (const size_t size : {0UL, 1UL, 15UL, 16UL, 17UL, 48UL}) {
      Machine m("AES", "ECB", padding);
      ByteArray out(2, 9);
      const bool fails = padding == std::string("PKCS7") || size % 16 != 0;  // 16 random octets end in no padding
      m.cipher->Init(DECRYPT_MODE, &key);
      const Caught caught = Catch([&] { m.cipher->DoFinal(ByteArray(size, 0x5a), out); });
      EXPECT_EQ(caught.thrown, fails) << padding << " " << size;
      EXPECT_EQ(caught.causes, fails ? "4003 EVP_DecryptFinal failure" : "") << padding << " " << size;
      EXPECT_EQ(out.size(), fails ? 2 : size) << "no unverified plaintext comes out";
    }
  }
}

TEST(SymmetricCipher, AFailureLeavesTheHostsErrorQueueAlone) {
  Machine m("AES", "CBC", "PKCS7");
  TestKey key("AES", ByteArray(16, 1));
  ERR_clear_error();
  for (const unsigned long sentinel : {0UL, 1UL}) {
    if (sentinel != 0) ERR_raise(ERR_LIB_USER, 42);
    m.cipher = Own(Cipher::Create(m.algorithm.get(), m.map.get()));
    EXPECT_TRUE(Catch([&] { m.Run(DECRYPT_MODE, key, ByteArray(16, 3)); }).thrown);
    const unsigned long left = ERR_get_error();
    EXPECT_EQ(left == 0 ? 0 : 1, sentinel);
    EXPECT_EQ(ERR_get_error(), 0UL);
  }
}

TEST(SymmetricCipher, HowMuchOfKeyAndIvIsUsed) {
  TestKey key("AES", FromHex("000102030405060708090a0b0c0d0e0f ff"));
  Machine m("AES", "CBC", "None");
  const ByteArray block(16, 0x11);
  m.map->SetIv(FromHex("000102030405060708090a0b0c0d0e0f ffff"));
  const ByteArray longer = m.Run(ENCRYPT_MODE, key, block);
  m.map->SetIv(FromHex("000102030405060708090a0b0c0d0e0f"));
  key.bytes.resize(16);
  EXPECT_EQ(m.Run(ENCRYPT_MODE, key, block), longer);
  m.map->SetIv(ByteArray());
  const ByteArray empty = m.Run(ENCRYPT_MODE, key, block);
  m.map->SetIv(ByteArray(16));
  EXPECT_EQ(m.Run(ENCRYPT_MODE, key, block), empty);
  EXPECT_NE(longer, empty);

  Machine ecb("AES", "ECB", "None");
  const ByteArray plain = ecb.Run(ENCRYPT_MODE, key, block);
  ecb.map->SetIv(ByteArray(3, 1));
  EXPECT_EQ(ecb.Run(ENCRYPT_MODE, key, block), plain) << "ECB looks at no IV";
}

TEST(SymmetricCipher, PaddingIsOffWhenTheMapSaysNothing) {
  Machine m("AES");
  m.map->SetCipherMode("ECB");
  TestKey key("AES", ByteArray(16, 1));
  EXPECT_EQ(m.Run(ENCRYPT_MODE, key, ByteArray(32, 1)).size(), 32UL);
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
  Machine m("AES", "ECB", "None");
  TestKey key("RSA", ByteArray(16, 1));
  key.format = "X509";
  TestCertificate unreadable(nullptr);
  TestCertificate certificate(&key);
  EXPECT_THROWS(4002, 139, "Unable to retrieve the certificate public key", m.cipher->Init(ENCRYPT_MODE, &unreadable));
  EXPECT_EQ(Catch([&] { m.cipher->Init(ENCRYPT_MODE, &unreadable); }).causes, "4002 no store");
  struct : TestCertificate {
    using TestCertificate::TestCertificate;
    IPublicKey* GetPublicKey() override { return key; }
  } keyless(nullptr);
  for (TestCertificate* refused : {&certificate, static_cast<TestCertificate*>(&keyless)}) {
    Machine other("AES", "ECB", "None");
    other.cipher->Init(ENCRYPT_MODE, refused);
    ByteArray out;
    EXPECT_EQ(Catch([&] { other.cipher->DoFinal(out); }).causes, "4002 Only raw key format is supported");
  }
}

TEST(SymmetricCipher, TheTraceOfARun) {
  Machine m("3DES", "CBC", "None");
  TestKey key("AES", ByteArray(16, 1));
  m.cipher->Init(DECRYPT_MODE, &key);
  ByteArray out;
  const Trace trace(1UL << 0 | 1UL << 1 | 1UL << 2 | 1UL << 8 | 1UL << 16);
  EXPECT_TRUE(Catch([&] { m.cipher->DoFinal(ByteArray(3), out); }).thrown);
  std::vector<std::string> own;
  for (const auto& line : trace.WithoutAddresses()) {
    if (line.find("COpensslSymmetricCipher") != std::string::npos) own.push_back(line);
  }
  EXPECT_EQ(own, (std::vector<std::string>{
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

/// In a process whose libcrypto has no AES, as after loading the legacy provider alone.
void RunWithoutAes() {
  if (OSSL_PROVIDER_load(nullptr, "legacy") == nullptr) std::exit(2);
  ERR_clear_error();
  TestKey key("AES", ByteArray(16, 1));
  const char* const kExpected[] = {"4003 EVP_EncryptInit failure", "4003 EVP_DecryptInit failure"};
  bool right = true;
  for (const int operation : {ENCRYPT_MODE, DECRYPT_MODE}) {
    Machine m("AES", "CBC", "PKCS7");
    right = right && Catch([&] { m.Run(operation, key, ByteArray(16)); }).causes == kExpected[operation];
  }
  std::exit(right && ERR_peek_error() == 0 ? 0 : 1);
}

TEST(SymmetricCipherDeathTest, AFailingLibcrypto) {
  testing::FLAGS_gtest_death_test_style = "threadsafe";
  EXPECT_EXIT(RunWithoutAes(), testing::ExitedWithCode(0), "");
}

}  // namespace
