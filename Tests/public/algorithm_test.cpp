#include "tavo/framework/algorithm.h"

#include <gtest/gtest.h>
#include <openssl/objects.h>

#include <set>

#include "support/caught.h"
#include "support/trace.h"
#include "support/vectors.h"

using namespace Tavo::Framework;

namespace {

/// The identifier in libcrypto's own object table.
std::string OidOf(const std::string& name) {
  char text[80];
  OBJ_obj2txt(text, sizeof text, OBJ_nid2obj(OBJ_txt2nid(name.c_str())), 1);
  return text;
}

TEST(Registry, AgreesWithLibcryptosObjectTableInBothDirections) {
  const auto parameters = Own(IAlgorithmParameters::Create());
  for (const Vector& known : LoadVectors("algorithms.txt")) {
    const std::string oid = OidOf(known.Text("libcrypto"));
    const SecureString name = known.section().c_str();
    EXPECT_EQ(Own(IAlgorithm::CreateFromFriendlyName(name, parameters.get()))->GetOID().c_str(), oid) << name;
    EXPECT_EQ(Own(IAlgorithm::CreateFromOID(oid.c_str(), parameters.get()))->GetFriendlyName(), name) << oid;
  }
}

TEST(Registry, NamesWithoutAnOidAreFoundByNameOnly) {
  const auto parameters = Own(IAlgorithmParameters::Create());
  for (const char* name : {"CMAC", "FIPS186DSARNG", "800_56A_KDF"}) {
    EXPECT_STREQ(NewAlgorithm(name)->GetOID().c_str(), "Unknown OID");
  }
  EXPECT_THROWS(4006, 0, "Unsupported algorithm", IAlgorithm::CreateFromOID("Unknown OID", parameters.get()));
  size_t count = 0;
  const AlgorithmEntry* entries = ListAlgorithms(count);
  EXPECT_EQ(count, LoadVectors("algorithms.txt").size() + 3);
  std::set<std::string> names;
  for (size_t i = 0; i < count; ++i) names.insert(entries[i].friendlyName);
  EXPECT_EQ(names.size(), count) << "a name stands twice";
}

TEST(Registry, MatchesExactlyOrNotAtAll) {
  const auto parameters = Own(IAlgorithmParameters::Create());
  for (const char* name : {"sha1", "SHA1 ", "SHA", "", "DSA"}) {
    EXPECT_THROWS(4006, 0, "Unsupported algorithm", IAlgorithm::CreateFromFriendlyName(name, parameters.get()));
  }
  for (const char* oid : {"2.16.840.1.101.3.4.1.42", "1.2.840.113549.1.1", "1.2.840.113549.1.1.1.", ""}) {
    EXPECT_THROWS(4006, 0, "Unsupported algorithm", IAlgorithm::CreateFromOID(oid, parameters.get()));
  }
  EXPECT_THROWS(4006, 0, "Unsupported algorithm", IAlgorithm::CreateFromFriendlyName("nope", nullptr));
  EXPECT_THROWS(4000, 0, "pParameters should not be NULL", IAlgorithm::CreateFromFriendlyName("RSA", nullptr));
  EXPECT_THROWS(4000, 0, "pParameters should not be NULL", CAlgorithm("1.2", "x", nullptr));
}

TEST(Algorithm, OwnsACopyOfItsParametersAndSoDoItsClones) {
  auto parameters = Own(IAlgorithmParameters::Create());
  CAlgorithm algorithm("1.2.3", "any name", parameters.get());
  const auto before = Own(algorithm.Clone());
  IAlgorithmParameters* own = algorithm.GetParameters();
  EXPECT_NE(own, parameters.get());
  parameters.reset();
  own->SetEncoded(FromHex("0500"));  // filled in place
  EXPECT_EQ(algorithm.GetParameters(), own);
  const auto after = Own(algorithm.Clone());
  own->SetEncoded(ByteArray());
  ByteArray encoded(2, 2);
  EXPECT_FALSE(before->GetParameters()->GetEncoded(encoded));
  EXPECT_EQ(encoded, ByteArray(2, 2)) << "left alone when there are none";
  EXPECT_TRUE(after->GetParameters()->GetEncoded(encoded));
  EXPECT_EQ(encoded, FromHex("0500"));
  EXPECT_TRUE(algorithm.GetParameters()->GetEncoded(encoded));
  EXPECT_TRUE(encoded.empty());
  EXPECT_EQ(after->GetFriendlyName(), "any name");
}

TEST(Algorithm, GettersTraceUnderTheNameOfClone) {
  const auto algorithm = NewAlgorithm("RSA");
  const Trace trace;
  algorithm->GetOID();
  algorithm->GetFriendlyName();
  algorithm->GetParameters();
  EXPECT_EQ(trace.WithoutAddresses(), LoadParagraph("traces.txt", "getters of an algorithm"));
}

TEST(Registry, TheTraceOfAFailingLookUp) {
  const auto parameters = Own(IAlgorithmParameters::Create());
  const Trace trace;
  Catch([&] { IAlgorithm::CreateFromOID("1.2.3", parameters.get()); });
  EXPECT_EQ(trace.lines(), LoadParagraph("traces.txt", "a look-up that fails"));
}

}  // namespace
