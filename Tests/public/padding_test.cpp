#include "tavo/framework/padding.h"

#include <gtest/gtest.h>
#include <openssl/err.h>
#include <openssl/rsa.h>

#include <numeric>

#include "support/caught.h"
#include "support/naive_padding.h"
#include "support/replaced_random.h"
#include "support/trace.h"
#include "support/vectors.h"

using namespace Tavo::Framework;

namespace {

constexpr unsigned char kHashId = 0x33;  // SHA-1 in X9.31
const ByteArray kLabel = FromText("label");

/// A message of distinct octets whose first is neither 00 nor 01 nor BA.
ByteArray Message(size_t size) {
  ByteArray message(size);
  std::iota(message.begin(), message.end(), static_cast<unsigned char>(0x11));
  return message;
}

int Size(const ByteArray& bytes) { return static_cast<int>(bytes.size()); }

// libcrypto's functions for OAEP, with the signatures of those for the other paddings.
int AddOaep(unsigned char* to, int k, const unsigned char* message, int size) {
  return RSA_padding_add_PKCS1_OAEP(to, k, message, size, kLabel.data(), Size(kLabel));
}
int CheckOaep(unsigned char* to, int toSize, const unsigned char* block, int size, int k) {
  return RSA_padding_check_PKCS1_OAEP(to, toSize, block, size, k, kLabel.data(), Size(kLabel));
}

/// A padding and its limits: the longest message is k minus `overhead` bytes; one comes back when it has at least
/// `shortestBack` and at most k minus `overheadBack` bytes. `add` and `check` are libcrypto's.
struct Scheme {
  const char* type;
  unsigned char operation;
  const char* className;
  size_t overhead;
  size_t shortestBack;
  size_t overheadBack;
  bool random;  // whether two blocks of one message differ
  int (*add)(unsigned char* to, int k, const unsigned char* message, int size);
  int (*check)(unsigned char* to, int toSize, const unsigned char* block, int size, int k);
};

constexpr Scheme kSign = {
    "PKCS1", 0, "CPKCS1SignPadding", 11, 0, 11, false, RSA_padding_add_PKCS1_type_1, RSA_padding_check_PKCS1_type_1};
constexpr Scheme kEncrypt = {
    "PKCS1", 1, "CPKCS1EncryptPadding", 11, 1, 11, true, RSA_padding_add_PKCS1_type_2, RSA_padding_check_PKCS1_type_2};
constexpr Scheme kOaep = {"OAEP", 1, "COAEPPadding", 42, 0, 43, true, AddOaep, CheckOaep};
constexpr Scheme kX931 = {"X_931", 0, "CX931Padding", 12, 0, 14, false, RSA_padding_add_X931, RSA_padding_check_X931};
constexpr const Scheme* kSchemes[] = {&kSign, &kEncrypt, &kOaep, &kX931};

void PrintTo(const Scheme* scheme, std::ostream* out) { *out << scheme->className; }

/// A padding with all options set.
struct Padder {
  Padder(const Scheme& scheme, size_t k) : map(NewParameters()) {
    map->SetPkcs1Operation(scheme.operation);
    map->SetHashAlgoX931(kHashId);
    map->SetOaepEncodingParam(kLabel);
    padding = Own(IPadding::Create(scheme.type, static_cast<unsigned int>(k), map.get()));
  }
  ByteArray Encode(const ByteArray& message) {
    ByteArray block(3, 7);
    padding->EncodeData(message, block);
    return block;
  }
  /// "refused" or the message in hex.
  std::string Decode(const ByteArray& block) {
    ByteArray message(3, 7);
    const bool accepted = padding->DecodeData(block, message);
    EXPECT_TRUE(accepted || message.empty());
    return accepted ? ToHex(message) : "refused";
  }
  Owned<ICryptoParserParameterMap> map;
  Owned<IPadding> padding;
};

/// The lengths on both sides of every limit of a block of k bytes.
std::set<size_t> BoundaryLengths(size_t k) {
  std::set<size_t> lengths = {0, 1, k};
  for (const size_t overhead : {44, 43, 42, 41, 40, 15, 14, 13, 12, 11, 10, 9}) {
    if (k >= overhead) lengths.insert(k - overhead);
  }
  return lengths;
}

/// What libcrypto has for a message: with X9.31, the identifier behind the hash.
ByteArray ForPeer(const Scheme& scheme, ByteArray message) {
  if (&scheme == &kX931) message.push_back(kHashId);
  return message;
}

/// The block that libcrypto makes, empty when it makes none.
ByteArray PeerEncodes(const Scheme& scheme, size_t k, const ByteArray& message) {
  const ByteArray theirs = ForPeer(scheme, message);
  ByteArray block(k);
  if (k == 0 || scheme.add(block.data(), static_cast<int>(k), theirs.data(), Size(theirs)) != 1) block.clear();
  return block;
}

bool PeerFinds(const Scheme& scheme, const ByteArray& block, const ByteArray& message) {
  ByteArray out(block.size() + 1);
  const int length = scheme.check(out.data(), Size(block), block.data(), Size(block), Size(block));
  out.resize(static_cast<size_t>(std::max(0, length)));
  return length >= 0 && out == ForPeer(scheme, message);
}

void BothWays(const Scheme& scheme, size_t k, const ByteArray& message) {
  SCOPED_TRACE("k " + std::to_string(k) + ", m " + std::to_string(message.size()));
  Padder ours(scheme, k);
  const size_t m = message.size();
  const ByteArray theirs = PeerEncodes(scheme, k, message);
  if (m + scheme.overhead > k) {
    EXPECT_THROWS(4000, 0, "Data to Encode Length is invalid", ours.Encode(message));
    EXPECT_TRUE(theirs.empty() || &scheme == &kX931) << "libcrypto wants less fill in an X9.31 block";
    return;
  }
  const ByteArray block = ours.Encode(message);
  ASSERT_EQ(block.size(), k);
  EXPECT_TRUE(PeerFinds(scheme, block, message));
  ASSERT_FALSE(theirs.empty());
  EXPECT_TRUE(scheme.random || block == theirs);
  if (&scheme == &kSign) return;
  const bool comesBack = m >= scheme.shortestBack && m + scheme.overheadBack <= k;
  const std::string expected = comesBack ? ToHex(message) : "refused";
  EXPECT_EQ(ours.Decode(block), expected);
  EXPECT_EQ(ours.Decode(theirs), expected);
}

class PaddingSchemes : public testing::TestWithParam<const Scheme*> {};

TEST_P(PaddingSchemes, AgreeWithLibcryptoAtEveryLimitOfEveryLength) {
  for (size_t k = 0; k <= 520; ++k) {
    for (const size_t m : BoundaryLengths(k)) BothWays(*GetParam(), k, Message(m));
    if (HasFailure()) break;
  }
  ERR_clear_error();
}

TEST_P(PaddingSchemes, OneArrayMayBeInputAndOutput) {
  const Scheme& scheme = *GetParam();
  const bool decodes = &scheme != &kSign;
  Padder p(scheme, 128);
  ByteArray data = Message(20);
  p.padding->EncodeData(data, data);
  EXPECT_TRUE(PeerFinds(scheme, data, Message(20)));
  EXPECT_TRUE(!decodes || (p.padding->DecodeData(data, data) && data == Message(20)));
  data = Message(128);
  EXPECT_TRUE(Catch([&] { p.padding->EncodeData(data, data); }).thrown);
  EXPECT_TRUE(data.empty()) << "cleared first, so empty after a failure";
  data = Message(128);
  EXPECT_EQ(Catch([&] { EXPECT_FALSE(p.padding->DecodeData(data, data)); }).thrown, !decodes);
  EXPECT_TRUE(data.empty());
}

TEST_P(PaddingSchemes, NoBlockComesFromAFailingRandomSource) {
  const Scheme& scheme = *GetParam();
  Padder p(scheme, 128);
  ByteArray block(3, 7);
  Caught caught;
  {
    const ReplacedRandom failing;
    caught = Catch([&] { p.padding->EncodeData(Message(5), block); });
  }
  EXPECT_EQ(caught.id, scheme.random ? 4003UL : 0UL);
  if (!scheme.random) return;
  EXPECT_EQ(caught.line, &scheme == &kOaep ? 245UL : 88UL);
  EXPECT_EQ(caught.message, "GenerateRandom failed");
  EXPECT_TRUE(block.empty());
  EXPECT_EQ(p.Decode(p.Encode(Message(5))), ToHex(Message(5))) << "the object is as good as before";
  EXPECT_NE(p.Encode(Message(5)), p.Encode(Message(5)));
}

INSTANTIATE_TEST_SUITE_P(, PaddingSchemes, testing::ValuesIn(kSchemes),
                         [](const auto& info) { return std::string(info.param->className); });

const Scheme& SchemeOf(const Vector& vector) {
  return **std::find_if(std::begin(kSchemes), std::end(kSchemes),
                        [&](const Scheme* each) { return each->className == vector.section(); });
}

/// A vector of padding.txt.
class PaddingVectors : public VectorTest {
 protected:
  const Vector& vector = GetParam();

  const Scheme& scheme() const { return SchemeOf(vector); }
  ByteArray Block() const {
    if (vector.Has("block")) return vector.Bytes("block");
    Naive::Octets db = Naive::Sha1(Naive::Octets(kLabel.begin(), kLabel.end()));
    if (vector.Has("damaged")) db[vector.Number("damaged")] ^= 1;
    const ByteArray rest = vector.Bytes("db");
    db.insert(db.end(), rest.begin(), rest.end());
    const auto first = static_cast<unsigned char>(vector.Has("first") ? vector.Number("first") : 0);
    const Naive::Octets block = Naive::OaepBlock(first, Naive::Octets(20, 0x5a), db);
    return ByteArray(block.begin(), block.end());
  }
  void Throws() const {
    const bool encodes = vector.Has("m");
    Padder p(scheme(), vector.Has("k") ? vector.Number("k") : Block().size());
    if (vector.Has("options") && vector.Text("options") == "none") p.map->clear();
    const std::string message = vector.Text("throws");
    const Trace trace(1UL << 1 | 1UL << 16);
    ByteArray out(3, 7);
    EXPECT_THROWS(vector.Number("id"), vector.Number("line"), message,
                  encodes ? p.padding->EncodeData(Message(vector.Number("m")), out)
                          : static_cast<void>(p.padding->DecodeData(Block(), out)));
    EXPECT_TRUE(out.empty());
    const std::string name = vector.section() + (encodes ? "::EncodeData" : "::DecodeData");
    EXPECT_EQ(trace.lines(), (std::vector<std::string>{vector.Text("trace"), "16 " + name + " Returns " + message}));
  }
  void Decodes() const {
    const ByteArray block = Block();
    Padder p(scheme(), vector.Has("k") ? vector.Number("k") : block.size());
    const Trace trace(1UL << 0 | 1UL << 1);
    const bool accepted = vector.Has("message");
    EXPECT_EQ(p.Decode(block), accepted ? ToHex(vector.Bytes("message")) : "refused");
    if (!accepted) {
      EXPECT_EQ(trace.lines().back(), vector.Text("trace"));
    } else {
      EXPECT_TRUE(trace.lines().empty() || &scheme() == &kOaep);
    }
  }
};

TEST_P(PaddingVectors, DoWhatTheySay) { vector.Has("throws") ? Throws() : Decodes(); }

INSTANTIATE_TEST_SUITE_P(, PaddingVectors, testing::ValuesIn(LoadVectors("padding.txt")));

TEST(Padding, EachOperationAndEachStepOfOaepIsTraced) {
  for (const Scheme* scheme : kSchemes) {
    const Trace trace;
    {
      Padder p(*scheme, 64);
      const ByteArray block = p.Encode(Message(10));
      Catch([&] { p.Decode(block); });
    }
    EXPECT_EQ(trace.WithoutAddresses("Padding::"), LoadParagraph("padding_trace.txt", scheme->className));
  }
}

TEST(Padding, OptionsAreReadAtEachCall) {
  Padder oaep(kOaep, 64);
  const ByteArray block = oaep.Encode(Message(4));
  oaep.map->SetOaepEncodingParam(ByteArray());
  EXPECT_EQ(oaep.Decode(block), "refused");
  const ByteArray withEmptyLabel = oaep.Encode(Message(4));
  EXPECT_EQ(oaep.Decode(withEmptyLabel), ToHex(Message(4)));
  oaep.map->SetOaepEncodingParam(kLabel);
  EXPECT_EQ(oaep.Decode(block), ToHex(Message(4)));

  Padder x931(kX931, 64);
  x931.map->SetHashAlgoX931(0x34);
  EXPECT_EQ(x931.Encode(Message(4))[62], 0x34);
  x931.map->clear();
  EXPECT_EQ(x931.Decode(Padder(kX931, 64).Encode(Message(40))), ToHex(Message(40)));
}

TEST(Padding, RandomOctetsBecomePaddingWithoutZeros) {
  ByteArray every(256);
  std::iota(every.begin(), every.end(), static_cast<unsigned char>(0));
  Padder p(kEncrypt, 256 + 3 + 1);
  ByteArray block;
  {
    const ReplacedRandom source(every);
    block = p.Encode(ByteArray(1, 0xaa));
  }
  for (size_t b = 0; b < 256; ++b) {
    EXPECT_EQ(block[2 + b], b < 0xfe ? b + 1 : b - 0xfd) << "random octet " << b;
  }
}

TEST(Padding, OaepBlocksAreThoseOfLibcryptoForTheSameSeed) {
  for (const size_t k : {42, 61, 64, 128, 256, 5202}) {
    for (const size_t m : {size_t{0}, (k - 42) / 2, k - 42}) {
      const ReplacedRandom source(Message(20));
      EXPECT_EQ(ToHex(Padder(kOaep, k).Encode(Message(m))), ToHex(PeerEncodes(kOaep, k, Message(m))));
    }
  }
}

TEST(Padding, FactoryRefusesWhatIsNotSet) {
  const auto map = NewParameters();
  const auto create = [&](const char* type) { return Own(IPadding::Create(type, 128, map.get())); };
  EXPECT_THROWS(4000, 613, "Bad Parameters", Own(IPadding::Create("other", 128, nullptr)));
  EXPECT_THROWS(4000, 623, "Hash alogo Padding type is not set", create("X_931"));
  EXPECT_THROWS(4000, 632, "Pkcs1 operation parameter is not set", create("PKCS1"));
  map->SetPkcs1Operation(2);
  EXPECT_THROWS(4000, 641, "Pkcs1 operation parameter is invalid", create("PKCS1"));
  for (const char* type : {"pkcs1", "PKCS1 ", "X931", "", "None"}) {
    EXPECT_THROWS(4007, 647, "Padding type is not supported", create(type));
  }
  create("OAEP");  // its label may be set later
  const Trace trace(1UL << 16);
  EXPECT_THROWS(4007, 647, "Padding type is not supported", create("oaep"));
  EXPECT_EQ(trace.lines(), std::vector<std::string>{"16 IPadding::Create Returns Padding type is not supported"});
}

}  // namespace
