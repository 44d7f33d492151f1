#include <gtest/gtest.h>

#include "common/rz.crypto.padding.oaep.h"
#include "common/rz.crypto.padding.x931.h"
#include "support/caught.h"
#include "support/vectors.h"

using namespace Tavo::Framework;

namespace {

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
