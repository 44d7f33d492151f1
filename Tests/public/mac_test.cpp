#include "tavo/framework/mac.h"

#include <openssl/cmac.h>
#include <openssl/hmac.h>

#include <numeric>

#include "support/caught.h"
#include "support/doubles.h"
#include "support/services.h"
#include "support/trace.h"

using namespace Tavo::Framework;

namespace {

struct Subject {
  const char* name;
  const char* digest;  // null: CMAC
};
const Subject kSubjects[] = {{"HMAC_SHA1", "SHA1"},     {"HMAC_SHA224", "SHA224"}, {"HMAC_SHA256", "SHA256"},
                             {"HMAC_SHA384", "SHA384"}, {"HMAC_SHA512", "SHA512"}, {"CMAC", nullptr}};

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
    EXPECT_EQ(mac->GetMacLength(), GetParam().Bytes(subject.name).size());
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

TEST_P(MacBehaviour, AgreesWithLibcryptoForAnyKeyLengthAndSplit) {
  std::mt19937 random(20240229);
  std::vector<size_t> sizes(301);
  std::iota(sizes.begin(), sizes.end(), size_t{0});
  for (size_t piece = size_t{1} << 15; piece <= size_t{1} << 18; piece *= 2) {  // where a message may be cut inside
    for (const size_t size : {piece - 1, piece, piece + 1, piece + 16}) sizes.push_back(size);
  }
  for (const size_t size : sizes) {
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
  key.format = "PKCS8";
  m->Init(&key);
  const Trace trace(1UL << 1 | 1UL << 8 | 1UL << 16);
  ByteArray out;
  Catch([&] { m->Mac(ByteArray(), out); });
  EXPECT_EQ(trace.WithoutAddresses(), LoadParagraph("traces.txt", "an HMAC under a key that is not raw"));
}

TEST(MacDeathTest, AFailingLibcryptoGivesNoCode) {
  HoldsWithoutAlgorithms([] {
    bool right = true;
    for (const auto& [name, message] : {std::pair("HMAC_SHA256", "HMAC failure"), std::pair("CMAC", "Cipher failed")}) {
      const Made<MAC> m(name);
      TestKey key("AES", ByteArray(16, 1));
      ByteArray out;
      m->Init(&key);
      const Caught caught = Catch([&] { m->Mac(out); });
      right = right && caught.id == 4003 && caught.message == message && out.empty();
    }
    return right;
  });
}

}  // namespace
