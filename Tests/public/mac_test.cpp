#include "tavo/framework/mac.h"

#include <gtest/gtest.h>
#include <openssl/cmac.h>
#include <openssl/err.h>
#include <openssl/hmac.h>
#include <openssl/provider.h>

#include <cstdlib>
#include <random>

#include "support/caught.h"
#include "support/doubles.h"
#include "support/trace.h"
#include "support/vectors.h"

using namespace Tavo::Framework;

namespace {

/// One implementation of the interface: its lengths, and the lines of its refusals.
struct Subject {
  const char* name;
  const char* digest;  // null: CMAC
  size_t length;
  const char* file;
  unsigned long nullKey, initTwice, macWith, macWithFailed, mac, update;
  bool keepsMessageOnFailure;
};

#define RZ_HMAC "Sources/openssl/rz.crypto.openssl.hmac", 113, 119, 151, 163, 197, 285, true
const Subject kSubjects[] = {
    {"HMAC_SHA1", "SHA1", 20, RZ_HMAC},
    {"HMAC_SHA224", "SHA224", 28, RZ_HMAC},
    {"HMAC_SHA256", "SHA256", 32, RZ_HMAC},
    {"HMAC_SHA384", "SHA384", 48, RZ_HMAC},
    {"HMAC_SHA512", "SHA512", 64, RZ_HMAC},
    {"CMAC", nullptr, 16, "Sources/common/rz.crypto.cmac", 103, 109, 141, 153, 184, 359, false},
};
#undef RZ_HMAC

void PrintTo(const Subject& subject, std::ostream* out) { *out << subject.name; }

/// A MAC with what it borrows.
struct Maker {
  explicit Maker(const char* name)
      : algorithm(NewAlgorithm(name)), map(NewParameters()), mac(Own(MAC::Create(algorithm.get(), map.get()))) {}
  std::string Code(IKey& key, const ByteArray& message) {
    mac->Init(&key);
    mac->Mac(message, out);
    return ToHex(out);
  }
  Owned<IAlgorithm> algorithm;
  Owned<ICryptoParserParameterMap> map;
  Owned<MAC> mac;
  ByteArray out;
};

ByteArray Part(const ByteArray& bytes, size_t from, size_t to) {
  return ByteArray(bytes.begin() + static_cast<long>(from), bytes.begin() + static_cast<long>(to));
}

class MacVectors : public VectorTest {};

TEST_P(MacVectors, EveryPathGivesTheCode) {
  const Vector& vector = GetParam();
  const ByteArray message = vector.Bytes("message");
  const auto key = Own(IKey::Create(NewAlgorithm("AES").get(), "RAW", vector.Bytes("key")));
  for (const Subject& subject : kSubjects) {
    if (!vector.Has(subject.name)) continue;
    const std::string expected = vector.Text(subject.name);
    Maker m(subject.name);
    m.out.assign(100, 0xaa);  // cut to the length
    EXPECT_EQ(m.Code(*key, message), expected) << subject.name;

    m.out.clear();  // grown to it; byte by byte, on the same object
    m.mac->Init(key.get());
    for (const unsigned char byte : message) m.mac->Update(ByteArray(1, byte));
    m.mac->Mac(m.out);
    EXPECT_EQ(ToHex(m.out), expected) << subject.name;

    const size_t half = message.size() / 2;
    m.mac->Init(key.get());
    m.mac->Update(Part(message, 0, half));
    m.mac->Mac(Part(message, half, message.size()), m.out);
    EXPECT_EQ(ToHex(m.out), expected) << subject.name;

    ByteArray same = message;
    m.mac->Init(key.get());
    m.mac->Mac(same, same);
    EXPECT_EQ(ToHex(same), expected) << subject.name;
  }
}

INSTANTIATE_TEST_SUITE_P(Published, MacVectors, testing::ValuesIn(LoadVectors("mac.txt")));

class MacBehaviour : public testing::TestWithParam<Subject> {
 protected:
  MacBehaviour() : s(GetParam()), m(s.name), key("AES", ByteArray(16, 7)) {}

  std::string Reference(const ByteArray& raw, const ByteArray& message) const {
    unsigned char code[EVP_MAX_MD_SIZE];
    if (s.digest != nullptr) {
      unsigned int length = 0;
      HMAC(EVP_get_digestbyname(s.digest), raw.empty() ? static_cast<const void*>("") : raw.data(),
           static_cast<int>(raw.size()), message.data(), message.size(), code, &length);
      return ToHex(ByteArray(code, code + length));
    }
    size_t length = 0;
    const std::unique_ptr<CMAC_CTX, void (*)(CMAC_CTX*)> context(CMAC_CTX_new(), CMAC_CTX_free);
    CMAC_Init(context.get(), raw.data(), 16, EVP_aes_128_cbc(), nullptr);
    CMAC_Update(context.get(), message.data(), message.size());
    CMAC_Final(context.get(), code, &length);
    return ToHex(ByteArray(code, code + length));
  }

  const Subject& s;
  Maker m;
  TestKey key;
};

TEST_P(MacBehaviour, StatesAndTheirRefusals) {
  const ByteArray data(3, 1);
  ByteArray out(2, 9);
  EXPECT_EQ(m.mac->GetMacLength(), s.length);
  const auto refusesWhileAtRest = [&](const char* when) {
    SCOPED_TRACE(when);
    EXPECT_THROWS(4009, s.update, "MAC is not initialized", m.mac->Update(data));
    EXPECT_THROWS(4009, s.macWith, "MAC is not initialized", m.mac->Mac(data, out));
    EXPECT_THROWS(4009, s.mac, "MAC is not initialized", m.mac->Mac(out));
  };
  refusesWhileAtRest("before Init");
  EXPECT_EQ(out, ByteArray(2, 9));
  EXPECT_THROWS(4000, s.nullKey, "pKey should not be NULL", m.mac->Init(nullptr));
  EXPECT_EQ(Catch([&] { m.mac->Init(nullptr); }).file, s.file);

  m.mac->Init(&key);
  m.mac->Update(data);
  EXPECT_THROWS(4000, s.nullKey, "pKey should not be NULL", m.mac->Init(nullptr));
  EXPECT_THROWS(4009, s.initTwice, "MAC is already initialized", m.mac->Init(&key));
  EXPECT_EQ(m.mac->GetMacLength(), s.length);
  m.mac->Mac(out);  // the refused Inits have left the message alone
  EXPECT_EQ(ToHex(out), Reference(key.bytes, data));

  refusesWhileAtRest("after Mac");
  EXPECT_EQ(m.Code(key, {}), Reference(key.bytes, {})) << "a new message begins empty";
}

TEST_P(MacBehaviour, AFailedMac) {
  ByteArray out(2, 9);
  key.format = "PKCS8";
  m.mac->Init(&key);
  m.mac->Update(FromText("ab"));
  const Caught caught = Catch([&] { m.mac->Mac(FromText("cd"), out); });
  EXPECT_EQ(caught.file, s.file);
  EXPECT_EQ(caught.line, s.macWithFailed);
  EXPECT_EQ(caught.message, "Mac failed");
  EXPECT_EQ(caught.id, 4002UL);
  EXPECT_EQ(caught.causes, s.keepsMessageOnFailure
                               ? "4002 Only raw key format is supported"
                               : "4002 Cipher failed < 4002 Cipher failed < 4002 Only raw key format is supported");
  EXPECT_EQ(out, ByteArray(2, 9)) << "an output is written on success only";
  key.format = "RAW";
  if (s.keepsMessageOnFailure) {
    EXPECT_THROWS(4009, s.initTwice, "MAC is already initialized", m.mac->Init(&key));
    m.mac->Update(FromText("e"));
    m.mac->Mac(out);
    EXPECT_EQ(ToHex(out), Reference(key.bytes, FromText("abcde")));
  } else {
    EXPECT_THROWS(4009, s.mac, "MAC is not initialized", m.mac->Mac(out));
    EXPECT_EQ(m.Code(key, FromText("e")), Reference(key.bytes, FromText("e")));
  }
}

TEST_P(MacBehaviour, AgreesWithLibcryptoForAnyKeyLengthAndSplit) {
  std::mt19937 random(20240229);
  const auto bytes = [&](size_t size) {
    ByteArray out(size);
    for (auto& byte : out) byte = static_cast<unsigned char>(random());
    return out;
  };
  for (size_t size = 0; size <= 300; ++size) {
    const ByteArray message = bytes(size);
    key.bytes = bytes(s.digest != nullptr ? random() % 200 : 16);
    const std::string expected = Reference(key.bytes, message);
    const size_t first = random() % (size + 1);
    const size_t second = first + random() % (size - first + 1);
    m.mac->Init(&key);
    m.mac->Update(Part(message, 0, first));
    m.mac->Update(Part(message, first, second));
    m.mac->Mac(Part(message, second, size), m.out);
    EXPECT_EQ(ToHex(m.out), expected) << size << " split at " << first << " and " << second;
    EXPECT_EQ(m.Code(key, message), expected) << size;
  }
  // Beyond every buffer that could be inside: at once, and in updates that end anywhere.
  const ByteArray large = bytes((size_t{1} << 18) + 5);
  const std::string expected = Reference(key.bytes, large);
  EXPECT_EQ(m.Code(key, large), expected);
  m.mac->Init(&key);
  size_t at = 0;
  for (const size_t next : {1UL, 4097UL, 32767UL, 40001UL, 100000UL}) {
    m.mac->Update(Part(large, at, next));
    at = next;
  }
  m.mac->Mac(Part(large, at, large.size()), m.out);
  EXPECT_EQ(ToHex(m.out), expected);
}

TEST_P(MacBehaviour, TheFactoryChecksItsArgumentsInOrder) {
  m.map->SetFIPSMode(true);
  EXPECT_THROWS(4000, 945, "pAlgorithm should not be NULL", MAC::Create(nullptr, m.map.get()));
  EXPECT_THROWS(4000, 0, "Bad Parameters", MAC::Create(m.algorithm.get(), nullptr));
  EXPECT_THROWS(4011, 951, "FIPS Mode is not supported on linux", MAC::Create(m.algorithm.get(), m.map.get()));
}

INSTANTIATE_TEST_SUITE_P(All, MacBehaviour, testing::ValuesIn(kSubjects),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(Mac, TheFactoryKnowsNoOtherName) {
  for (const char* name : {"SHA1", "AES", "RSA"}) {
    const auto algorithm = NewAlgorithm(name);
    EXPECT_THROWS(4006, 970, "Unknown algorithm", MAC::Create(algorithm.get(), NewParameters().get()));
  }
}

TEST(Mac, HmacBorrowsTheAlgorithmAndCmacClonesIt) {
  const Maker hmac("HMAC_SHA256");
  EXPECT_EQ(hmac.mac->GetAlgorithm(), hmac.algorithm.get());
  const Maker cmac("CMAC");
  EXPECT_NE(cmac.mac->GetAlgorithm(), cmac.algorithm.get());
  EXPECT_EQ(cmac.mac->GetAlgorithm()->GetFriendlyName(), "CMAC");
}

TEST(Cmac, TakesTheFirst16BytesOfAnAesKeyAndNoOtherKey) {
  Maker m("CMAC");
  TestKey key("AES", ByteArray(32, 1));
  std::fill(key.bytes.begin() + 16, key.bytes.end(), static_cast<unsigned char>(2));
  TestKey head("AES", ByteArray(16, 1));
  EXPECT_EQ(m.Code(key, FromText("x")), m.Code(head, FromText("x")));

  const auto fails = [&](unsigned long id, const char* causes) {
    m.mac->Init(&key);
    const Caught caught = Catch([&] { m.mac->Mac(m.out); });
    EXPECT_EQ(caught.id, id) << causes;
    EXPECT_EQ(caught.message, "Cipher failed");
    EXPECT_EQ(caught.line, 316UL);
    EXPECT_EQ(caught.causes, causes);
  };
  key.bytes.resize(15);
  fails(4010, "4010 Cipher failed < 4010 Invalid key size");
  for (const char* name : {"3DES", "DES", "RSA", "SHA256"}) {
    key.algorithm = NewAlgorithm(name);
    fails(4006, "4006 Unsupported algorithm");
  }
  key.algorithm.reset();
  fails(4000, "4000 pAlgorithm should not be NULL");
}

TEST(Cmac, AMapThatCannotBeReadKeepsTheMessage) {
  const auto algorithm = NewAlgorithm("CMAC");
  BrokenMap map;
  const auto mac = Own(MAC::Create(algorithm.get(), &map));
  TestKey key("AES", ByteArray(16, 1));
  mac->Init(&key);
  ByteArray out;
  EXPECT_THROWS(4004, 208, "Error while parsing parameters", mac->Mac(out));
  EXPECT_EQ(Catch([&] { mac->Mac(out); }).causes, "4002 no store");
  EXPECT_THROWS(4009, 109, "MAC is already initialized", mac->Init(&key));
}

TEST(Hmac, TheTraceOfMacOverData) {
  Maker m("HMAC_SHA1");
  TestKey key("AES", ByteArray(16, 1));
  key.format = "X";
  m.mac->Init(&key);
  const Trace trace(1UL << 1 | 1UL << 8 | 1UL << 16);
  Catch([&] { m.mac->Mac(ByteArray(), m.out); });
  EXPECT_EQ(
      trace.WithoutAddresses(),
      (std::vector<std::string>{"8 COpensslHMAC::Mac : this=*", "8 COpensslHMAC::Mac : this=*", "8 CAlgorithm::Clone",
                                "16 CAlgorithm::Clone", "1 COpensslHMAC::Mac : Only raw key format is supported",
                                "16 COpensslHMAC::Mac Returns Only raw key format is supported",
                                "16 COpensslHMAC::Mac Returns Mac failed"}));
}

/// In a process whose libcrypto has no digests at all, as after loading the legacy provider alone.
void MacWithoutDigests() {
  if (OSSL_PROVIDER_load(nullptr, "legacy") == nullptr) std::exit(2);
  ERR_clear_error();
  Maker m("HMAC_SHA256");
  TestKey key("AES", ByteArray(16, 1));
  m.mac->Init(&key);
  const Caught caught = Catch([&] { m.mac->Mac(m.out); });
  std::exit(caught.id == 4003 && caught.message == "HMAC failure" && m.out.empty() && ERR_peek_error() == 0 ? 0 : 1);
}

TEST(HmacDeathTest, AFailingLibcryptoGivesNoCode) {
  testing::FLAGS_gtest_death_test_style = "threadsafe";
  EXPECT_EXIT(MacWithoutDigests(), testing::ExitedWithCode(0), "");
}

}  // namespace
