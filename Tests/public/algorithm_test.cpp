#include "tavo/framework/algorithm.h"

#include <gtest/gtest.h>
#include <openssl/obj_mac.h>
#include <openssl/objects.h>

#include <set>

#include "support/caught.h"
#include "support/trace.h"
#include "support/vectors.h"

using namespace Tavo::Framework;

namespace {

/// The registry as libcrypto's own object table has it, written down by numeric identifier.
struct Known {
  const char* name;
  int nid;
};
constexpr Known kKnown[] = {{"RSA", NID_rsaEncryption},
                            {"DES", NID_des_cbc},
                            {"3DES", NID_des_ede3_cbc},
                            {"AES", NID_aes_128_cbc},
                            {"SHA1", NID_sha1},
                            {"SHA224", NID_sha224},
                            {"SHA256", NID_sha256},
                            {"SHA384", NID_sha384},
                            {"SHA512", NID_sha512},
                            {"MD2", NID_md2},
                            {"MD4", NID_md4},
                            {"MD5", NID_md5},
                            {"HMAC_SHA1", NID_hmacWithSHA1},
                            {"HMAC_SHA224", NID_hmacWithSHA224},
                            {"HMAC_SHA256", NID_hmacWithSHA256},
                            {"HMAC_SHA384", NID_hmacWithSHA384},
                            {"HMAC_SHA512", NID_hmacWithSHA512},
                            {"ECDH_P224", NID_secp224r1},
                            {"ECDH_P256", NID_X9_62_prime256v1},
                            {"ECDH_P384", NID_secp384r1},
                            {"ECDH_P521", NID_secp521r1}};

std::string OidOf(int nid) {
  char text[80];
  OBJ_obj2txt(text, sizeof text, OBJ_nid2obj(nid), 1);
  return text;
}

TEST(Registry, AgreesWithLibcryptosObjectTableInBothDirections) {
  const auto parameters = Own(IAlgorithmParameters::Create());
  for (const auto& [name, nid] : kKnown) {
    const std::string oid = OidOf(nid);
    EXPECT_STREQ(Own(IAlgorithm::CreateFromFriendlyName(name, parameters.get()))->GetOID().c_str(), oid.c_str())
        << name;
    EXPECT_STREQ(Own(IAlgorithm::CreateFromOID(oid.c_str(), parameters.get()))->GetFriendlyName().c_str(), name) << oid;
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
  EXPECT_EQ(count, std::size(kKnown) + 3);
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
  EXPECT_EQ(trace.WithoutAddresses(),
            (std::vector<std::string>{
                "8 CAlgorithm::Clone", "0 CAlgorithm::Clone : m_sOID=1.2.840.113549.1.1.1", "16 CAlgorithm::Clone",
                "8 CAlgorithm::Clone", "0 CAlgorithm::Clone : m_sFriendlyName=RSA", "16 CAlgorithm::Clone",
                "8 CAlgorithm::Clone", "0 CAlgorithm::Clone : m_pParameters=*", "16 CAlgorithm::Clone"}));
}

TEST(Registry, TheTraceOfAFailingLookUp) {
  const auto parameters = Own(IAlgorithmParameters::Create());
  const Trace trace;
  Catch([&] { IAlgorithm::CreateFromOID("1.2.3", parameters.get()); });
  EXPECT_EQ(trace.lines(), (std::vector<std::string>{"8 IAlgorithm::CreateFromOID",
                                                     "1 IAlgorithm::CreateFromOID : Unsupported algorithm: 1.2.3",
                                                     "16 IAlgorithm::CreateFromOID Returns Unsupported algorithm"}));
}

}  // namespace
