#include "tavo/framework/digest.h"

#include <openssl/evp.h>

#include "support/caught.h"
#include "support/services.h"
#include "support/trace.h"

using namespace Tavo::Framework;

namespace {

class DigestVectors : public VectorTest {};

TEST_P(DigestVectors, EveryPathGivesTheHash) {
  const std::string expected = ToHex(GetParam().Bytes("digest"));
  const Made<MessageDigest> digest(GetParam().section().c_str());
  EXPECT_EQ(digest->GetDigestLength(), expected.size() / 2);
  EveryPath(
      *digest.service, &MessageDigest::Digest, &MessageDigest::Digest, [] {}, GetParam().Bytes("message"), expected);
}

INSTANTIATE_TEST_SUITE_P(Fips180, DigestVectors, testing::ValuesIn(LoadVectors("digest.txt")));

TEST(Digest, AgreesWithLibcryptoAcrossBlockAndBufferEdges) {
  std::mt19937 random(20240228);
  for (const char* name : {"SHA1", "SHA224", "SHA256", "SHA384", "SHA512", "MD5"}) {
    const Made<MessageDigest> digest(name);
    for (const size_t size : {0UL, 1UL, 55UL, 56UL, 63UL, 64UL, 65UL, 111UL, 112UL, 128UL, 4096UL, 70000UL}) {
      const ByteArray message = Octets(random, size);
      unsigned char expected[EVP_MAX_MD_SIZE];
      unsigned int length = 0;
      ASSERT_EQ(EVP_Digest(message.data(), size, expected, &length, EVP_get_digestbyname(name), nullptr), 1);
      ByteArray out;
      digest->Digest(message, out);
      EXPECT_EQ(out, ByteArray(expected, expected + length)) << name << " of " << size;
    }
  }
}

TEST(Digest, TheTraceOfAnAlgorithmThatIsNone) {
  const Made<MessageDigest> digest("MD2");
  ByteArray out;
  const Trace trace(1UL << 1 | 1UL << 8 | 1UL << 16);
  Catch([&] { digest->Digest(out); });
  EXPECT_EQ(trace.WithoutAddresses(), LoadParagraph("traces.txt", "a digest of MD2"));
}

}  // namespace
