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

ByteArray Bytes(const Naive::Octets& octets) { return ByteArray(octets.begin(), octets.end()); }

/// A message of distinct octets whose first is neither 00 nor 01 nor BA.
ByteArray Message(size_t size) {
  ByteArray message(size);
  std::iota(message.begin(), message.end(), static_cast<unsigned char>(0x11));
  return message;
}

/// What libcrypto's functions for a padding take, its opinion on a block, and the block it makes: -1, or lengths.
struct Peer {
  int (*add)(unsigned char* to, int k, const ByteArray& message);
  int (*check)(unsigned char* to, int k, const ByteArray& block);
};

ByteArray WithId(ByteArray hash) {
  hash.push_back(kHashId);
  return hash;
}

int Size(const ByteArray& bytes) { return static_cast<int>(bytes.size()); }

constexpr Peer kType1 = {
    [](unsigned char* to, int k, const ByteArray& m) { return RSA_padding_add_PKCS1_type_1(to, k, m.data(), Size(m)); },
    [](unsigned char* to, int k, const ByteArray& b) {
      return RSA_padding_check_PKCS1_type_1(to, k, b.data(), Size(b), k);
    }};
constexpr Peer kType2 = {
    [](unsigned char* to, int k, const ByteArray& m) { return RSA_padding_add_PKCS1_type_2(to, k, m.data(), Size(m)); },
    [](unsigned char* to, int k, const ByteArray& b) {
      return RSA_padding_check_PKCS1_type_2(to, k, b.data(), Size(b), k);
    }};
constexpr Peer kOaepPeer = {
    [](unsigned char* to, int k, const ByteArray& m) {
      return k < 42 ? -1 : RSA_padding_add_PKCS1_OAEP(to, k, m.data(), Size(m), kLabel.data(), Size(kLabel));
    },
    [](unsigned char* to, int k, const ByteArray& b) {
      return RSA_padding_check_PKCS1_OAEP(to, k, b.data(), Size(b), k, kLabel.data(), Size(kLabel));
    }};
constexpr Peer kX931Peer = {
    [](unsigned char* to, int k, const ByteArray& m) {
      return RSA_padding_add_X931(to, k, WithId(m).data(), Size(m) + 1);
    },
    [](unsigned char* to, int k, const ByteArray& b) { return RSA_padding_check_X931(to, k, b.data(), Size(b), k); }};

/// A padding and its limits: the longest message is k minus `overhead` bytes; one comes back when it has at least
/// `shortestBack` and at most k minus `overheadBack` bytes.
struct Scheme {
  const char* type;
  unsigned char operation;
  const char* className;
  size_t overhead;
  size_t shortestBack;
  size_t overheadBack;
  bool random;  // whether two blocks of one message differ
  const Peer* peer;
};

constexpr Scheme kSign = {"PKCS1", 0, "CPKCS1SignPadding", 11, 0, 11, false, &kType1};
constexpr Scheme kEncrypt = {"PKCS1", 1, "CPKCS1EncryptPadding", 11, 1, 11, true, &kType2};
constexpr Scheme kOaep = {"OAEP", 1, "COAEPPadding", 42, 0, 43, true, &kOaepPeer};
constexpr Scheme kX931 = {"X_931", 0, "CX931Padding", 12, 0, 14, false, &kX931Peer};
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

/// libcrypto's answer on our block: the message that it finds, or "refused".
std::string PeerOpens(const Scheme& scheme, size_t k, const ByteArray& block) {
  ByteArray out(k + 1);
  const int length = scheme.peer->check(out.data(), static_cast<int>(k), block);
  if (length < 0) return "refused";
  out.resize(static_cast<size_t>(length));
  if (&scheme == &kX931) {
    EXPECT_EQ(out.back(), kHashId);
    out.pop_back();
  }
  return ToHex(out);
}

void BothWays(const Scheme& scheme, size_t k, const ByteArray& message) {
  SCOPED_TRACE(std::string(scheme.className) + ", k " + std::to_string(k) + ", m " + std::to_string(message.size()));
  Padder ours(scheme, k);
  const size_t m = message.size();
  ByteArray theirs(k + 1);
  const bool theyCan = k > 0 && scheme.peer->add(theirs.data(), static_cast<int>(k), message) == 1;
  theirs.resize(k);
  if (m + scheme.overhead > k) {
    EXPECT_THROWS(4000, 0, "Data to Encode Length is invalid", ours.Encode(message));
    EXPECT_TRUE(!theyCan || &scheme == &kX931) << "libcrypto wants less fill in an X9.31 block";
    return;
  }
  const ByteArray block = ours.Encode(message);
  ASSERT_EQ(block.size(), k);
  EXPECT_EQ(PeerOpens(scheme, k, block), ToHex(message));
  ASSERT_TRUE(theyCan);
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
  Padder p(scheme, 128);
  ByteArray data = Message(20);
  p.padding->EncodeData(data, data);
  EXPECT_EQ(PeerOpens(scheme, 128, data), ToHex(Message(20)));
  if (&scheme != &kSign) {
    EXPECT_TRUE(p.padding->DecodeData(data, data));
    EXPECT_EQ(data, Message(20));
  }
  data = Message(128);
  EXPECT_TRUE(Catch([&] { p.padding->EncodeData(data, data); }).thrown);
  EXPECT_TRUE(data.empty()) << "cleared first, so empty after a failure";
  data = Message(128);
  EXPECT_TRUE(Catch([&] { EXPECT_FALSE(p.padding->DecodeData(data, data)); }).thrown == (&scheme == &kSign));
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
  EXPECT_EQ(caught.thrown, scheme.random);
  if (!scheme.random) return;
  EXPECT_EQ(caught.id, 4003UL);
  EXPECT_EQ(caught.line, &scheme == &kOaep ? 245UL : 88UL);
  EXPECT_EQ(caught.message, "GenerateRandom failed");
  EXPECT_TRUE(block.empty());
  EXPECT_EQ(p.Decode(p.Encode(Message(5))), ToHex(Message(5))) << "the object is as good as before";
  EXPECT_NE(p.Encode(Message(5)), p.Encode(Message(5)));
}

INSTANTIATE_TEST_SUITE_P(, PaddingSchemes, testing::ValuesIn(kSchemes),
                         [](const auto& info) { return std::string(info.param->className); });

struct LengthRefusal {
  const Scheme* scheme;
  size_t k, m;
  unsigned long line;  // 0: none is documented
  const char* numbers;
};

TEST(Padding, AMessageThatIsTooLongIsRefusedWithBothNumbers) {
  const LengthRefusal refusals[] = {
      {&kEncrypt, 128, 118, 56, "(118 > 117)"}, {&kEncrypt, 10, 0, 56, "(0 > -1)"},
      {&kEncrypt, 0, 0, 56, "(0 > -11)"},       {&kSign, 128, 118, 52, "(118 > 117)"},
      {&kSign, 2, 0, 52, "(0 > -9)"},           {&kX931, 128, 117, 54, "(117 > 117)"},
      {&kX931, 11, 0, 54, "(0 > 0)"},           {&kOaep, 128, 88, 186, "(88 > 87)"},
      {&kOaep, 40, 0, 186, "(0 > -1)"},         {&kOaep, 128, 87, 0, "(87 > 86)"},
      {&kOaep, 41, 0, 0, "(0 > -1)"},
  };
  for (const auto& refusal : refusals) {
    Padder p(*refusal.scheme, refusal.k);
    const Trace trace(1UL << 1 | 1UL << 16);
    ByteArray block(3, 7);
    const std::string name = std::string(refusal.scheme->className) + "::EncodeData";
    EXPECT_THROWS(4000, refusal.line, "Data to Encode Length is invalid",
                  p.padding->EncodeData(Message(refusal.m), block));
    EXPECT_TRUE(block.empty());
    EXPECT_EQ(trace.lines(),
              (std::vector<std::string>{"1 " + name + " : Data to Encode Length is invalid " + refusal.numbers,
                                        "16 " + name + " Returns Data to Encode Length is invalid"}));
  }
}

/// One block, what comes of it, and the one line of level 0 or 1 that its refusal leaves ("" for none).
struct DecodeCase {
  const char* block;  // hex; "<hex>*<n>" repeats
  const char* result;
  const char* trace;
};

ByteArray Expanded(const std::string& parts) {
  ByteArray bytes;
  std::istringstream words(parts);
  for (std::string word; words >> word;) {
    const size_t star = word.find('*');
    const ByteArray octets = FromHex(word.substr(0, star));
    const size_t count = star == std::string::npos ? 1 : std::stoul(word.substr(star + 1));
    for (size_t i = 0; i < count; ++i) bytes.insert(bytes.end(), octets.begin(), octets.end());
  }
  return bytes;
}

void ExpectDecoding(const Scheme& scheme, size_t k, const DecodeCase& decoding) {
  SCOPED_TRACE(decoding.block);
  Padder p(scheme, k);
  const Trace trace(1UL << 0 | 1UL << 1);
  EXPECT_EQ(p.Decode(Expanded(decoding.block)), decoding.result);
  EXPECT_EQ(trace.lines().empty() ? "" : trace.lines().back(), decoding.trace);
}

TEST(Padding, Pkcs1EncryptionBlocks) {
  const char* const kLength =
      "1 CPKCS1EncryptPadding::DecodeData: invalid decryption : Key Length and MessageToDecode size do not match";
  const char* const kHeader = "1 CPKCS1EncryptPadding::DecodeData: invalid decryption : 2 first bytes are wrong";
  const char* const kSeparator = "1 CPKCS1EncryptPadding::DecodeData: invalid decryption : separator not found";
  const DecodeCase decodings[] = {
      {"0002 ff*7 00 aa*6", "refused", kSeparator},
      {"0002 ff*8 00 aa*5", "aaaaaaaaaa", ""},
      {"0002 ff*8 00 00 00 aa*3", "0000aaaaaa", ""},
      {"0002 01*12 00 aa", "aa", ""},
      {"0002 01*13 00", "refused", kSeparator},
      {"0002 01*14", "refused", kSeparator},
      {"0002 00 ff*8 00 aa*4", "refused", kSeparator},
      {"0002 ff*7 00 00 aa*5", "refused", kSeparator},
      {"0001 ff*8 00 aa*5", "refused", kHeader},
      {"0102 ff*8 00 aa*5", "refused", kHeader},
      {"0000 ff*14", "refused", kHeader},
      {"0202 ff*14", "refused", kHeader},
      {"0002 ff*8 00 aa*4", "refused", kLength},
      {"0002 ff*8 00 aa*6", "refused", kLength},
      {"", "refused", kLength},
  };
  for (auto decoding : decodings) ExpectDecoding(kEncrypt, 16, decoding);
  for (const size_t k : {0, 1}) ExpectDecoding(kEncrypt, k, {k == 0 ? "" : "00", "refused", kHeader});
  for (size_t k = 2; k < 12; ++k) {
    ExpectDecoding(kEncrypt, k, {("0002 ff*" + std::to_string(k - 2)).c_str(), "refused", kSeparator});
    ExpectDecoding(kEncrypt, k, {("0002 00*" + std::to_string(k - 2)).c_str(), "refused", kSeparator});
  }
}

TEST(Padding, X931Blocks) {
  const char* const kLength =
      "1 CX931Padding::DecodeData: invalid decryption : Key Length and MessageToDecode size do not match";
  const char* const kInvalid = "0 CX931Padding::DecodeData : Signature is invalid";
  const DecodeCase decodings[] = {
      {"6b bb*10 ba aa*4 34 cc", "aaaaaaaa", ""},
      {"6b 00*10 ba aa*4 34 cc", "aaaaaaaa", ""},
      {"6b bb*9 ba aa*5 34 cc", "refused", kInvalid},
      {"6b bb*14 ba 34 cc", "", ""},
      {"6b bb*15 ba cc", "refused", kInvalid},
      {"6b bb*16 ba", "refused", kInvalid},
      {"6b bb*16 cc", "refused", kInvalid},
      {"6b ba bb*9 ba aa*4 34 cc", "refused", kInvalid},
      {"6b bb*4 ba bb*5 ba aa*4 34 cc", "refused", kInvalid},
      {"6b bb*10 ba ba*4 34 cc", "babababa", ""},
      {"6a bb*10 ba aa*4 34 cc", "refused", kInvalid},
      {"6b bb*10 ba aa*4 34 cd", "refused", kInvalid},
      {"6b bb*10 ba aa*3 34 cc", "refused", kLength},
  };
  for (auto decoding : decodings) ExpectDecoding(kX931, 18, decoding);
  ExpectDecoding(kX931, 0, {"", "refused", kInvalid});
  ExpectDecoding(kX931, 11, {"6b bb*9 cc", "refused", kInvalid});
  ExpectDecoding(kX931, 14, {"6b bb*10 ba 33 cc", "", ""});
}

/// DB of a block with k = 64 bytes: 43 octets.
struct OaepCase {
  const char* db;  // after the label's hash
  unsigned char first;
  const char* result;
};

TEST(Padding, OaepBlocks) {
  const OaepCase decodings[] = {
      {"00*10 01 aa*12", 0, "aaaaaaaaaaaaaaaaaaaaaaaa"},
      {"ff 00*9 01 aa*12", 0, "aaaaaaaaaaaaaaaaaaaaaaaa"},  // the octet after the hash is not looked at
      {"00*22 01", 0, ""},
      {"00 01 aa*21", 0, "aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa"},
      {"01 aa*22", 0, "refused"},  // the longest message: its own 01 is not looked at
      {"01 00*3 01 aa*18", 0, "aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa"},  // and only the rest of this one comes back
      {"01 01 aa*21", 0, "aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa"},
      {"00*23", 0, "refused"},
      {"ff 00*22", 0, "refused"},
      {"00*10 02 01 aa*11", 0, "refused"},
      {"00*10 01 aa*12", 1, "refused"},
      {"00*10 01 aa*12", 0x80, "refused"},
  };
  const char* const kRefusal = "0 COAEPPadding::DecodeData Error to decode MessageToDecode indice 0)";
  const Naive::Octets label(kLabel.begin(), kLabel.end());
  const Naive::Octets seed(20, 0x5a);
  for (const auto& decoding : decodings) {
    SCOPED_TRACE(decoding.db);
    Naive::Octets db = Naive::Sha1(label);
    const ByteArray rest = Expanded(decoding.db);
    db.insert(db.end(), rest.begin(), rest.end());
    ASSERT_EQ(db.size(), 43U);
    Padder p(kOaep, 64);
    {
      const Trace trace(1UL << 0 | 1UL << 1);
      EXPECT_EQ(p.Decode(Bytes(Naive::OaepBlock(decoding.first, seed, db))), decoding.result);
      EXPECT_EQ(trace.Has(kRefusal), std::string(decoding.result) == "refused");
    }
    for (const size_t at : {0, 19}) {  // the label's hash, first and last octet
      Naive::Octets wrong = db;
      wrong[at] ^= 1;
      EXPECT_EQ(p.Decode(Bytes(Naive::OaepBlock(decoding.first, seed, wrong))), "refused");
    }
  }
  for (const size_t k : {0, 1, 20, 21, 41}) {
    Padder p(kOaep, k);
    const Trace trace(1UL << 0 | 1UL << 1);
    EXPECT_EQ(p.Decode(ByteArray(k)), "refused");
    EXPECT_EQ(trace.lines().back(), kRefusal);
  }
  Padder p(kOaep, 64);
  const Trace trace(1UL << 1);
  EXPECT_THROWS(4000, 392, "Data to Decode Length is invalid", p.Decode(ByteArray(63)));
  EXPECT_EQ(trace.lines(),
            std::vector<std::string>{"1 COAEPPadding::DecodeData : Data to Encode Length is invalid (63 > 64)"});
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
  oaep.map->clear();
  const Trace trace(1UL << 1);
  EXPECT_THROWS(4000, 169, "EncodingParameters is not set", oaep.Encode(Message(64)));
  EXPECT_THROWS(4000, 375, "EncodingParameters is not set", oaep.Decode(ByteArray(3)));

  Padder x931(kX931, 64);
  x931.map->SetHashAlgoX931(0x34);
  EXPECT_EQ(x931.Encode(Message(4))[62], 0x34);
  x931.map->clear();
  EXPECT_THROWS(4000, 61, "Hash Algo X931 is not set", x931.Encode(Message(4)));
  EXPECT_THROWS(4000, 54, "Data to Encode Length is invalid", x931.Encode(Message(60)));
  EXPECT_EQ(x931.Decode(Expanded("6b bb*20 ba aa*40 33 cc")), ToHex(ByteArray(40, 0xaa)));
  EXPECT_EQ(trace.lines(),
            (std::vector<std::string>{"1 COAEPPadding::EncodeData : EncodingParameters is not set",
                                      "1 COAEPPadding::DecodeData : EncodingParameters is not set",
                                      "1 CX931Padding::EncodeData : Hash Algo X931 is not set",
                                      "1 CX931Padding::EncodeData : Data to Encode Length is invalid (60 > 53)"}));
}

TEST(Padding, SignatureBlocksAreNeverDecoded) {
  Padder p(kSign, 64);
  const Trace trace(1UL << 1);
  EXPECT_THROWS(4002, 93, "This function is not supported", p.Decode(p.Encode(Message(4))));
  EXPECT_EQ(trace.lines(),
            std::vector<std::string>{"1 CPKCS1SignPadding::DecodeData : This function is not supported"});
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
  for (const size_t k : {42, 61, 64, 128, 256}) {
    Padder p(kOaep, k);
    for (const size_t m : {size_t{0}, (k - 42) / 2, k - 42}) {
      const ReplacedRandom source(Message(20));
      ByteArray theirs(k);
      ASSERT_EQ(kOaepPeer.add(theirs.data(), static_cast<int>(k), Message(m)), 1);
      EXPECT_EQ(ToHex(p.Encode(Message(m))), ToHex(theirs));
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
  const Trace trace(1UL << 8 | 1UL << 16);
  create("OAEP");  // its label may be set later
  EXPECT_EQ(trace.WithoutAddresses(),
            (std::vector<std::string>{"8 IPadding::Create", "8 COAEPPadding::COAEPPadding : this=*",
                                      "16 COAEPPadding::COAEPPadding", "16 IPadding::Create",
                                      "8 COAEPPadding::~COAEPPadding : this=*", "16 COAEPPadding::~COAEPPadding"}));
}

TEST(Padding, OaepTracesEachStep) {
  Padder p(kOaep, 64);
  const auto stepsOf = [](const Trace& trace) {
    std::vector<std::string> steps;
    for (const auto& line : trace.lines()) {
      if (line.compare(0, 15, "0 COAEPPadding:") == 0) steps.push_back(line.substr(16));
    }
    return steps;
  };
  const std::vector<std::string> kRound = {"RsaOaep_MGF Compute T = Hash(Seed||C))"};
  ByteArray block;
  {
    const Trace trace(1UL);
    block = p.Encode(Message(10));
    EXPECT_EQ(stepsOf(trace), (std::vector<std::string>{
                                  "EncodeData : Len PS = 12 (0xc))", "EncodeData Compute pHash = Hash(P))",
                                  "EncodeData : Compute DB, Len DB = 43 (0x2b))", "EncodeData Compute Seed)", kRound[0],
                                  kRound[0], kRound[0], "EncodeData Compute DBMask = MGF(Seed, k - hlen - 1) )",
                                  "EncodeData Compute maskedDB = DB xor dbMask )", kRound[0],
                                  "EncodeData Compute SeedMask = MGF(maskedDB, hlen ))",
                                  "EncodeData Compute MaskedSeed = Seed xor SeedMask )"}));
  }
  const Trace trace(1UL);
  p.Decode(block);
  EXPECT_EQ(
      stepsOf(trace),
      (std::vector<std::string>{
          "DecodeData Compute pHash = Hash(P))", kRound[0], "DecodeData Compute SeedMask = MGF(maskedDB, hlen ))",
          "DecodeData Compute MaskedSeed = Seed xor SeedMask )", kRound[0], kRound[0], kRound[0],
          "DecodeData Compute DBMask = MGF(Seed, k - hlen - 1) )", "DecodeData Compute DB = maskedDB xor dbMask )"}));
}

}  // namespace
