#include "tavo/framework/mac.h"

#include <openssl/cmac.h>
#include <openssl/hmac.h>

#include "support/caught.h"
#include "support/doubles.h"
#include "support/services.h"
#include "support/trace.h"

using namespace Tavo::Framework;

namespace {

/// One implementation of the interface: its lengths, and the lines of its refusals.
struct Subject {
  const char* name;
  const char* digest;  // null: CMAC
  size_t length;
  const char* file;
  unsigned long nullKey, initTwice, macWith, macWithFailed, mac, update;
};

#define RZ_HMAC "Sources/openssl/rz.crypto.openssl.hmac", 113, 119, 151, 163, 197, 285
const Subject kSubjects[] = {
    {"HMAC_SHA1", "SHA1", 20, RZ_HMAC},
    {"HMAC_SHA224", "SHA224", 28, RZ_HMAC},
    {"HMAC_SHA256", "SHA256", 32, RZ_HMAC},
    {"HMAC_SHA384", "SHA384", 48, RZ_HMAC},
    {"HMAC_SHA512", "SHA512", 64, RZ_HMAC},
    {"CMAC", nullptr, 16, "Sources/common/rz.crypto.cmac", 103, 109, 141, 153, 184, 359},
};
#undef RZ_HMAC

void PrintTo(const Subject& subject, std::ostream* out) { *out << subject.name; }

std::string Code(const Made<MAC>& mac, IKey& key, const ByteArray& message) {
  ByteArray out;
  mac->Init(&key);
  mac->Mac(message, out);
  return ToHex(out);
}

class MacVectors : public VectorTest {};

TEST_P(MacVectors, EveryPathGivesTheCode) {
  const auto key = Own(IKey::Create(NewAlgorithm("AES").get(), "RAW", GetParam().Bytes("key")));
  for (const Subject& subject : kSubjects) {
    if (!GetParam().Has(subject.name)) continue;
    const Made<MAC> mac(subject.name);
    EveryPath(
        *mac.service, &MAC::Mac, &MAC::Mac, [&] { mac->Init(key.get()); }, GetParam().Bytes("message"),
        GetParam().Text(subject.name));
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
  Made<MAC> m;
  TestKey key;
  ByteArray out = ByteArray(2, 9);
};

TEST_P(MacBehaviour, StatesAndTheirRefusals) {
  const ByteArray data(3, 1);
  const auto refusesWhileAtRest = [&](const char* when) {
    SCOPED_TRACE(when);
    EXPECT_EQ(m->GetMacLength(), s.length);
    EXPECT_THROWS(4009, s.update, "MAC is not initialized", m->Update(data));
    EXPECT_THROWS(4009, s.macWith, "MAC is not initialized", m->Mac(data, out));
    EXPECT_THROWS(4009, s.mac, "MAC is not initialized", m->Mac(out));
  };
  refusesWhileAtRest("before Init");
  EXPECT_EQ(out, ByteArray(2, 9));
  EXPECT_THROWS(4000, s.nullKey, "pKey should not be NULL", m->Init(nullptr));

  m->Init(&key);
  m->Update(data);
  EXPECT_THROWS(4000, s.nullKey, "pKey should not be NULL", m->Init(nullptr));
  EXPECT_THROWS(4009, s.initTwice, "MAC is already initialized", m->Init(&key));
  EXPECT_EQ(m->GetMacLength(), s.length);
  m->Mac(out);  // the refused Inits have left the message alone
  EXPECT_EQ(ToHex(out), Reference(key.bytes, data));

  refusesWhileAtRest("after Mac");
  EXPECT_EQ(Code(m, key, {}), Reference(key.bytes, {})) << "a new message begins empty";
}

// HMAC keeps the message of a code that failed; CMAC is at rest again.
TEST_P(MacBehaviour, AFailedMac) {
  const bool keeps = s.digest != nullptr;
  key.format = "PKCS8";
  m->Init(&key);
  m->Update(FromText("ab"));
  const Caught caught = Catch([&] { m->Mac(FromText("cd"), out); });
  EXPECT_EQ(caught.file, s.file);
  EXPECT_EQ(caught.line, s.macWithFailed);
  EXPECT_EQ(caught.message, "Mac failed");
  EXPECT_EQ(caught.id, 4002UL);
  EXPECT_EQ(caught.causes, (keeps ? "" : std::string("4002 Cipher failed < 4002 Cipher failed < ")) +
                               "4002 Only raw key format is supported");
  EXPECT_EQ(out, ByteArray(2, 9)) << "an output is written on success only";
  key.format = "RAW";
  if (keeps) {
    EXPECT_THROWS(4009, s.initTwice, "MAC is already initialized", m->Init(&key));
    m->Update(FromText("e"));
    m->Mac(out);
    EXPECT_EQ(ToHex(out), Reference(key.bytes, FromText("abcde")));
  } else {
    EXPECT_THROWS(4009, s.mac, "MAC is not initialized", m->Mac(out));
    EXPECT_EQ(Code(m, key, FromText("e")), Reference(key.bytes, FromText("e")));
  }
}

TEST_P(MacBehaviour, AgreesWithLibcryptoForAnyKeyLengthAndSplit) {
  std::mt19937 random(20240229);
  for (size_t round = 0; round <= 303; ++round) {
    const size_t size = round <= 300 ? round : (size_t{1} << 18) + round;  // beyond every buffer that could be inside
    const ByteArray message = Octets(random, size);
    key.bytes = Octets(random, s.digest != nullptr ? random() % 200 : 16);
    const std::string expected = Reference(key.bytes, message);
    const size_t first = random() % (size + 1);
    const size_t second = first + random() % (size - first + 1);
    m->Init(&key);
    m->Update(Part(message, 0, first));
    m->Update(Part(message, first, second));
    m->Mac(Part(message, second, size), out);
    EXPECT_EQ(ToHex(out), expected) << size << " split at " << first << " and " << second;
    EXPECT_EQ(Code(m, key, message), expected) << size;
  }
}

INSTANTIATE_TEST_SUITE_P(All, MacBehaviour, testing::ValuesIn(kSubjects),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(Mac, HmacBorrowsTheAlgorithmAndCmacClonesIt) {
  const Made<MAC> hmac("HMAC_SHA256"), cmac("CMAC");
  EXPECT_EQ(hmac->GetAlgorithm(), hmac.algorithm.get());
  EXPECT_NE(cmac->GetAlgorithm(), cmac.algorithm.get());
  EXPECT_EQ(cmac->GetAlgorithm()->GetFriendlyName(), "CMAC");
}

TEST(Cmac, TakesTheFirst16BytesOfAnAesKeyAndNoOtherKey) {
  const Made<MAC> m("CMAC");
  TestKey key("AES", ByteArray(32, 1)), head("AES", ByteArray(16, 1));
  std::fill(key.bytes.begin() + 16, key.bytes.end(), static_cast<unsigned char>(2));
  EXPECT_EQ(Code(m, key, FromText("x")), Code(m, head, FromText("x")));

  const auto fails = [&](unsigned long id, const char* causes) {
    ByteArray out;
    m->Init(&key);
    const Caught caught = Catch([&] { m->Mac(out); });
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
  const Made<MAC> m("HMAC_SHA1");
  TestKey key("AES", ByteArray(16, 1));
  key.format = "X";
  m->Init(&key);
  const Trace trace(1UL << 1 | 1UL << 8 | 1UL << 16);
  ByteArray out;
  Catch([&] { m->Mac(ByteArray(), out); });
  EXPECT_EQ(
      trace.WithoutAddresses(),
      (std::vector<std::string>{"8 COpensslHMAC::Mac : this=*", "8 COpensslHMAC::Mac : this=*", "8 CAlgorithm::Clone",
                                "16 CAlgorithm::Clone", "1 COpensslHMAC::Mac : Only raw key format is supported",
                                "16 COpensslHMAC::Mac Returns Only raw key format is supported",
                                "16 COpensslHMAC::Mac Returns Mac failed"}));
}

TEST(HmacDeathTest, AFailingLibcryptoGivesNoCode) {
  HoldsWithoutAlgorithms([] {
    const Made<MAC> m("HMAC_SHA256");
    TestKey key("AES", ByteArray(16, 1));
    ByteArray out;
    m->Init(&key);
    const Caught caught = Catch([&] { m->Mac(out); });
    return caught.id == 4003 && caught.message == "HMAC failure" && out.empty();
  });
}

}  // namespace
