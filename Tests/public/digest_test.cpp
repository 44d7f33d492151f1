#include "tavo/framework/digest.h"

#include <gtest/gtest.h>
#include <openssl/evp.h>

#include "support/caught.h"
#include "support/trace.h"
#include "support/vectors.h"

using namespace Tavo::Framework;

namespace {

struct Digester {
  explicit Digester(const char* name)
      : map(NewParameters()), digest(Own(MessageDigest::Create(NewAlgorithm(name).get(), map.get()))) {}
  Owned<ICryptoParserParameterMap> map;
  Owned<MessageDigest> digest;
  ByteArray out;
};

class DigestVectors : public VectorTest {};

TEST_P(DigestVectors, EveryPathGivesTheHash) {
  const Vector& vector = GetParam();
  const ByteArray message = vector.Bytes("message");
  const std::string expected = ToHex(vector.Bytes("digest"));
  Digester d(vector.section().c_str());
  EXPECT_EQ(d.digest->GetDigestLength(), expected.size() / 2);

  d.out.assign(100, 0xaa);  // cut to the length
  d.digest->Digest(message, d.out);
  EXPECT_EQ(ToHex(d.out), expected);

  d.out.clear();  // grown to it, in pieces; the object starts anew after each Digest
  for (const unsigned char byte : message) d.digest->Update(ByteArray(1, byte));
  d.digest->Digest(d.out);
  EXPECT_EQ(ToHex(d.out), expected);

  const size_t half = message.size() / 2;
  d.digest->Update(ByteArray(message.begin(), message.begin() + static_cast<long>(half)));
  d.digest->Digest(ByteArray(message.begin() + static_cast<long>(half), message.end()), d.out);
  EXPECT_EQ(ToHex(d.out), expected);

  ByteArray same = message;
  d.digest->Digest(same, same);
  EXPECT_EQ(ToHex(same), expected);
}

INSTANTIATE_TEST_SUITE_P(Fips180, DigestVectors, testing::ValuesIn(LoadVectors("digest.txt")));

TEST(Digest, AgreesWithLibcryptoAcrossBlockAndBufferEdges) {
  for (const char* name : {"SHA1", "SHA224", "SHA256", "SHA384", "SHA512", "MD5"}) {
    Digester d(name);
    for (const size_t size : {0UL, 1UL, 55UL, 56UL, 63UL, 64UL, 65UL, 111UL, 112UL, 128UL, 4096UL, 70000UL}) {
      ByteArray message(size);
      for (size_t i = 0; i < size; ++i) message[i] = static_cast<unsigned char>(i * 131 + size);
      unsigned char expected[EVP_MAX_MD_SIZE];
      unsigned int length = 0;
      ASSERT_EQ(EVP_Digest(message.data(), size, expected, &length, EVP_get_digestbyname(name), nullptr), 1);
      d.digest->Digest(message, d.out);
      EXPECT_EQ(d.out, ByteArray(expected, expected + length)) << name << " of " << size;
    }
  }
}

TEST(Digest, RegisteredAlgorithmsThatAreNoDigestsFailLateAndKeepTheMessage) {
  for (const char* name : {"MD2", "MD4", "AES", "CMAC"}) {
    Digester d(name);
    ByteArray out(3, 7);
    EXPECT_THROWS(4006, 98, "Unsupported algorithm", d.digest->GetDigestLength());
    EXPECT_THROWS(4006, 227, "Unsupported algorithm", d.digest->Digest(out));
    const Caught caught = Catch([&] { d.digest->Digest(FromText("abc"), out); });
    EXPECT_EQ(caught.line, 133UL);
    EXPECT_EQ(caught.message, "Digest failed");
    EXPECT_EQ(caught.id, 4006UL);
    EXPECT_EQ(caught.file, "Sources/openssl/rz.crypto.openssl.digest");
    EXPECT_EQ(caught.causes, "4006 Unsupported algorithm");
    EXPECT_EQ(out, ByteArray(3, 7)) << "an output is written on success only";
  }
}

TEST(Digest, FactoryChecksItsArgumentsInOrder) {
  const auto algorithm = NewAlgorithm("SHA1");
  const auto map = NewParameters();
  map->SetFIPSMode(true);
  EXPECT_THROWS(4000, 0, "pAlgorithm should not be NULL", MessageDigest::Create(nullptr, map.get()));
  EXPECT_THROWS(4000, 0, "Bad Parameters", MessageDigest::Create(algorithm.get(), nullptr));
  EXPECT_THROWS(4011, 0, "FIPS Mode is not supported on linux", MessageDigest::Create(algorithm.get(), map.get()));
}

TEST(Digest, TheTraceOfOneFailingCall) {
  Digester d("MD2");
  const Trace trace(1UL << 1 | 1UL << 8 | 1UL << 16);
  Catch([&] { d.digest->Digest(d.out); });
  EXPECT_EQ(
      trace.WithoutAddresses(),
      (std::vector<std::string>{"8 COpensslMessageDigest::Digest : this=*", "8 CAlgorithm::Clone",
                                "16 CAlgorithm::Clone", "1 COpensslMessageDigest::Digest : Unsupported algorithm: MD2",
                                "16 COpensslMessageDigest::Digest Returns Unsupported algorithm"}));
}

}  // namespace
