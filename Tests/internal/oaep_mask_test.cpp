#include <gtest/gtest.h>
#include <openssl/evp.h>
#include <openssl/rsa.h>

#include "common/rz.crypto.padding.oaep.h"
#include "common/rz.crypto.padding.x931.h"
#include "support/caught.h"
#include "support/trace.h"
#include "support/vectors.h"

using namespace Tavo::Framework;

namespace {

TEST(OaepMask, IsMgf1WithARoundForEachTwentyBytesAndAtLeastOne) {
  COAEPPadding padding(128, nullptr);  // the mask needs no options
  for (const size_t seedLength : {0U, 20U, 107U}) {
    const ByteArray seed(seedLength, 0xa5);
    for (const unsigned int length : {0U, 1U, 19U, 20U, 21U, 107U, 5140U}) {
      ByteArray expected(length);
      ASSERT_EQ(PKCS1_MGF1(expected.data(), length, seed.data(), static_cast<long>(seedLength), EVP_sha1()), 0);
      const Trace trace(1UL);
      ByteArray mask(3, 7);
      padding.RsaOaep_MGF(seed, length, mask);
      EXPECT_EQ(mask, expected) << length << " from " << seedLength;
      const std::string round = "0 COAEPPadding::RsaOaep_MGF Compute T = Hash(Seed||C))";
      EXPECT_EQ(std::count(trace.lines().begin(), trace.lines().end(), round),
                length == 0 ? 1 : static_cast<long>((length + 19) / 20));
    }
  }
  ByteArray both = FromText("seed and mask");
  ByteArray mask;
  padding.RsaOaep_MGF(both, 40, mask);
  padding.RsaOaep_MGF(both, 40, both);
  EXPECT_EQ(both, mask);
  const Trace trace(1UL << 8 | 1UL << 16);
  padding.RsaOaep_MGF(both, 1, mask);
  EXPECT_EQ(trace.lines().front(), "8 COAEPPadding::RsaOaep_MGF");
  EXPECT_EQ(trace.lines().back(), "16 COAEPPadding::RsaOaep_MGF");
}

// The factory refuses a null map; a class that is made without it does so when it needs an option.
TEST(PaddingWithoutAMap, FailsWhereAnOptionIsRead) {
  ByteArray out;
  COAEPPadding oaep(64, nullptr);
  EXPECT_THROWS(4000, 0, "Bad Parameters", oaep.EncodeData(out, out));
  EXPECT_THROWS(4000, 0, "Bad Parameters", oaep.DecodeData(ByteArray(64), out));
  CX931Padding x931(14, nullptr);
  EXPECT_THROWS(4000, 0, "Bad Parameters", x931.EncodeData(out, out));
  EXPECT_TRUE(x931.DecodeData(FromHex("6bbbbbbbbbbbbbbbbbbbbbba33cc"), out));
}

}  // namespace
