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
  for (const unsigned int length : {0U, 1U, 20U, 21U, 5140U}) {
    ByteArray expected(length), mask = FromText("seed and mask");
    ASSERT_EQ(PKCS1_MGF1(expected.data(), length, mask.data(), static_cast<long>(mask.size()), EVP_sha1()), 0);
    const Trace trace(1UL);
    padding.RsaOaep_MGF(mask, length, mask);
    EXPECT_EQ(mask, expected) << length;
    EXPECT_EQ(trace.WithoutAddresses("RsaOaep_MGF Compute T = Hash(Seed||C))").size(),
              std::max(1U, (length + 19) / 20));
  }
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
