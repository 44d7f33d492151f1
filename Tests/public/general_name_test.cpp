#include <gtest/gtest.h>

#include "support/trace.h"
#include "support/vectors.h"
#include "tavo/owned.h"

using namespace Tavo::Framework;

namespace {

TEST(GeneralName, ATextIsKeptWithItsZeroOctets) {
  const std::string text("a.org\0.evil", 11);
  const auto name = Own(IGeneralName::Create(SecureString(text.data(), text.size()), "dNSName"));
  EXPECT_EQ(name->GetNameType(), "dNSName");
  EXPECT_EQ(name->GetFormat(), "STRING");
  EXPECT_EQ(name->GetOID(), "");
  EXPECT_EQ(name->GetString().size(), 11U);
  ByteArray encoded(3, 1);
  name->GetEncoded(encoded);
  EXPECT_EQ(encoded, FromText(text));
}

TEST(GeneralName, OctetsHaveNoTextAndAnOidOnlyInAnOtherName) {
  const ByteArray octets = FromHex("c0000201");
  const auto other = Own(IGeneralName::Create(octets, "OtherName", "1.2.3"));
  const auto address = Own(IGeneralName::Create(octets, "IpAddress", "1.2.3"));
  EXPECT_EQ(other->GetOID(), "1.2.3");
  EXPECT_EQ(address->GetOID(), "");
  EXPECT_EQ(address->GetNameType(), "IpAddress");
  EXPECT_EQ(address->GetFormat(), "RAW");
  EXPECT_EQ(address->GetString(), "");
  const Trace trace(1UL);
  ByteArray encoded;
  address->GetEncoded(encoded);
  EXPECT_EQ(encoded, octets);
  ASSERT_FALSE(trace.lines().empty());
  EXPECT_NE(trace.lines().front().find("CGeneralName::GetEncoded : baEncoded:"), std::string::npos);
}

}  // namespace
