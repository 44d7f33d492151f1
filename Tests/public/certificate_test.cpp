#include <gtest/gtest.h>
#include <openssl/x509v3.h>

#include <algorithm>

#include "support/caught.h"
#include "support/certificates.h"
#include "support/trace.h"
#include "support/vectors.h"
#include "tavo/der_owned.h"

using namespace Tavo::Framework;

namespace {

Owned<IX509Certificate> Open(const ByteArray& encoded) {
  return Own(dynamic_cast<IX509Certificate*>(ICertificate::Create("X509", encoded)));
}

Owned<IX509Certificate> Open(const CertificateRecipe& recipe) { return Open(MakeCertificate(recipe)); }

/// A certificate whose only extension has this identifier and value.
Owned<IX509Certificate> WithExtension(const std::string& oid, const std::string& hex) {
  CertificateRecipe recipe;
  recipe.extensions = {{oid, hex}};
  return Open(recipe);
}

/// The certificate re-encoded after `change` had its way with the decoded TBSCertificate; the signature no longer fits.
template <class Change>
ByteArray Changed(const ByteArray& encoded, Change&& change) {
  DerOwned<CSCertificate_Delete> certificate;
  CSTBSCertificate* tbs = nullptr;
  std::uint64_t length = encoded.size();
  EXPECT_EQ(CSCertificate_DERDecodeTLV(encoded.data(), &length, 0, Out(certificate)), 0U);
  EXPECT_EQ(CSCertificate_GetTbsCertificate(certificate.get(), &tbs), 0U);
  change(tbs);
  DerBuffer buffer;
  EXPECT_EQ(CSCertificate_DEREncodeTLV(certificate.get(), Out(buffer), &length, 1, 1, 1), 0U);
  return ByteArray(buffer.get(), buffer.get() + length);
}

std::string Purposes(IX509Certificate& certificate) {
  std::string text;
  for (const auto& oid : certificate.GetExtendedKeyUsage()) text += std::string(oid.c_str()) + " ";
  return text;
}

/// "kind:oid:text or hex" of each name.
std::string Names(IX509Certificate& certificate) {
  std::string text;
  const OwnedNames names(certificate.GetSubjectAlternativeNames());
  for (IGeneralName* name : names) {
    ByteArray octets;
    name->GetEncoded(octets);
    const std::string value = name->GetFormat() == "STRING" ? name->GetString().c_str() : ToHex(octets);
    text += std::string(name->GetNameType().c_str()) + ":" + name->GetOID().c_str() + ":" + value + " ";
  }
  return text;
}

TEST(Certificate, TheFactoryRefuses) {
  const ByteArray good = MakeCertificate({});
  for (const char* format : {"x509", "X509 ", "", "PKCS7"}) {
    const Trace trace(1UL << 1);
    EXPECT_THROWS(4002, 0, "Unsupported format", ICertificate::Create(format, good));
    EXPECT_TRUE(trace.Has(std::string("1 ICertificate::Create : Unsupported format: ") + format));
  }
  EXPECT_THROWS(4000, 0, "X509 encoded buffer should not be empty", ICertificate::Create("X509", ByteArray()));
  EXPECT_THROWS(4004, 0, "d2i_X509() failed", ICertificate::Create("X509", FromHex("3003020105")));
  EXPECT_EQ(Catch([] { ICertificate::Create("X509", FromHex("30")); }).file,
            "Sources/openssl/rz.crypto.openssl.rsacertificate");
}

/// What libcrypto reads and this library does not: the certificate is refused by the second reader. An identifier of
/// several octets is in no type of the DER library.
TEST(Certificate, BothParsersMustBeContent) {
  CertificateRecipe recipe;
  recipe.keyUsage = "digitalSignature";
  ByteArray encoded = MakeCertificate(recipe);
  const ByteArray critical = FromHex("0603551d0f0404");  // extnID, then extnValue without `critical`
  const auto at = std::search(encoded.begin(), encoded.end(), critical.begin(), critical.end());
  ASSERT_NE(at, encoded.end());
  *(at + 7) = 0x1f;  // the BIT STRING inside
  EXPECT_THROWS(4004, 0, "CSKeyUsage_DERDecode() failed", ICertificate::Create("X509", encoded));
}

TEST(Certificate, FieldsOfACommonCertificate) {
  CertificateRecipe recipe = LogonRecipe();
  recipe.serial = "7F00FF";
  const ByteArray encoded = MakeCertificate(recipe);
  const auto certificate = Open(encoded);
  EXPECT_EQ(certificate->GetFormat(), "X509");
  EXPECT_EQ(certificate->GetVersion(), 2);
  EXPECT_EQ(ToHex(certificate->GetSerialNumber()), "7f00ff");
  EXPECT_EQ(certificate->GetNotBefore(), "2024-01-01 00-00-00");
  EXPECT_EQ(certificate->GetNotAfter(), "2049-12-31 23-59-59");
  EXPECT_EQ(Own(certificate->GetSubjectDN())->GetName(0), "CN=Ada Lehmann,O=Example,C=DE");
  EXPECT_EQ(Own(certificate->GetIssuerDN())->GetName(1), "C=DE,O=Example,CN=Ada Lehmann");
  EXPECT_EQ(ToHex(certificate->GetKeyUsage()), "80");
  EXPECT_EQ(Purposes(*certificate), "1.3.6.1.4.1.311.20.2.2 1.3.6.1.5.5.7.3.2 ");
  EXPECT_EQ(Names(*certificate),
            "OtherName:1.3.6.1.4.1.311.20.2.3:616461406578616d706c652e6f7267 rfc822Name::ada@example.org ");
  EXPECT_THROWS(4004, 0, "CSTBSCertificate_GetIssuerUniqueID() failed", certificate->GetIssuerUniqueID());
  EXPECT_THROWS(4004, 0, "CSTBSCertificate_GetSubjectUniqueID() failed", certificate->GetSubjectUniqueID());

  ByteArray copy;
  certificate->GetEncoded(copy);
  EXPECT_EQ(copy, encoded);
  const auto clone = Own(certificate->Clone());
  clone->GetEncoded(copy);
  EXPECT_EQ(copy, encoded);
}

TEST(Certificate, TheTbsComesWithoutItsHeader) {
  const ByteArray encoded = MakeCertificate(LogonRecipe());
  const unsigned char* cursor = encoded.data();
  X509* parsed = d2i_X509(nullptr, &cursor, static_cast<long>(encoded.size()));
  unsigned char* tbs = nullptr;
  const int length = i2d_re_X509_tbs(parsed, &tbs);
  ASSERT_GT(length, 260);  // so the header has four octets
  ByteArray contents;
  Open(encoded)->GetTBSCertificate(contents);
  EXPECT_EQ(contents, ByteArray(tbs + 4, tbs + length));
  OPENSSL_free(tbs);
  X509_free(parsed);
}

TEST(Certificate, VersionOneHasNoVersionAndNoExtensions) {
  CertificateRecipe recipe;
  recipe.version = 0;
  const auto certificate = Open(recipe);
  EXPECT_THROWS(4004, 0, "CSTBSCertificate_GetVersion() failed", certificate->GetVersion());
  EXPECT_EQ(certificate->GetKeyUsage(), ByteArray());
  EXPECT_EQ(Purposes(*certificate), "");
  EXPECT_EQ(Names(*certificate), "");
  EXPECT_FALSE(certificate->IsDigitalSignature());
  EXPECT_FALSE(certificate->IsDecipherOnly());
}

TEST(Certificate, SerialNumbersOfAnySizeAndSign) {
  CertificateRecipe recipe;
  const std::string huge(80, 'a');
  recipe.serial = huge;
  EXPECT_EQ(ToHex(Open(recipe)->GetSerialNumber()), "00" + huge);
  recipe.serial = "-80";
  EXPECT_EQ(ToHex(Open(recipe)->GetSerialNumber()), "80");
  recipe.serial = "-0100";
  EXPECT_EQ(ToHex(Open(recipe)->GetSerialNumber()), "ff00");
}

TEST(Certificate, UniqueIdentifiers) {
  const ByteArray octets = FromHex("01020380");
  const auto certificate = Open(Changed(MakeCertificate({}), [&](CSTBSCertificate* tbs) {
    for (const auto set : {CSTBSCertificate_SetIssuerUniqueID, CSTBSCertificate_SetSubjectUniqueID}) {
      CSASNBitString* bits = nullptr;
      ASSERT_EQ(CSASNBitString_FromBytes(octets.data(), octets.size(), &bits), 0U);
      ASSERT_EQ(set(tbs, bits, nullptr), 0U);
    }
  }));
  EXPECT_EQ(certificate->GetIssuerUniqueID(), octets);
  EXPECT_EQ(certificate->GetSubjectUniqueID(), octets);
}

/// Each key usage bit by its place (RFC 5280, 4.2.1.3).
TEST(Certificate, KeyUsageBits) {
  using Is = bool (IX509Certificate::*)();
  const std::pair<const char*, Is> bits[] = {{"digitalSignature", &IX509Certificate::IsDigitalSignature},
                                             {"nonRepudiation", &IX509Certificate::IsNonRepudiation},
                                             {"keyEncipherment", &IX509Certificate::IsKeyEncipherment},
                                             {"dataEncipherment", &IX509Certificate::IsDataEncipherment},
                                             {"keyAgreement", &IX509Certificate::IsKeyAgreement},
                                             {"keyCertSign", &IX509Certificate::IsKeyCertSign},
                                             {"cRLSign", &IX509Certificate::IsCRLSign},
                                             {"encipherOnly", &IX509Certificate::IsEncipherOnly},
                                             {"decipherOnly", &IX509Certificate::IsDecipherOnly}};
  for (const auto& [name, ignored] : bits) {
    CertificateRecipe recipe;
    recipe.keyUsage = name;
    const auto certificate = Open(recipe);
    for (const auto& [other, is] : bits) EXPECT_EQ((certificate.get()->*is)(), std::string(name) == other) << other;
  }
}

TEST(Certificate, KeyUsageEncodings) {
  const auto usage = [](const char* hex) { return ToHex(WithExtension("2.5.29.15", hex)->GetKeyUsage()); };
  EXPECT_EQ(usage("030205a0"), "a0");
  EXPECT_EQ(usage("030100"), "") << "no octet, all false";
  EXPECT_EQ(usage("0304070080ff"), "0080ff") << "octets behind the known bits are kept";
  EXPECT_TRUE(WithExtension("2.5.29.15", "030207a0")->IsKeyEncipherment())
      << "the number of unused bits does not matter";
  EXPECT_TRUE(WithExtension("2.5.29.15", "0303070080")->IsDecipherOnly());
  EXPECT_FALSE(WithExtension("2.5.29.15", "030100")->IsDigitalSignature());
  for (const char* broken : {"0300", "0402a0", "", "03"}) {
    EXPECT_THROWS(4004, 0, "CSKeyUsage_DERDecode() failed", WithExtension("2.5.29.15", broken));
  }
}

TEST(Certificate, ExtendedKeyUsageEncodings) {
  const auto purposes = [](const std::string& hex) { return Purposes(*WithExtension("2.5.29.37", hex)); };
  EXPECT_EQ(purposes("3000"), "");
  EXPECT_EQ(purposes("300a 0603551d25 0603551d25"), "2.5.29.37 2.5.29.37 ");
  EXPECT_EQ(purposes("3006 0604551d2500 ff"), "2.5.29.37.0 ") << "octets behind the list are not looked at";
  const char* broken[] = {"",
                          "3003 060355",
                          "3103 060155",
                          "3006 0603551d25 02",
                          "3006 0604551d8025",        // an alias of 2.5.29.37
                          "3009 0607551d9080808025",  // the same by an arc of 33 bits
                          "3006 0604551d2580",        // an arc that is not finished
                          "308105 0603551d25"};       // a length that is not DER
  for (const char* hex : broken) {
    const auto certificate = WithExtension("2.5.29.37", hex);
    EXPECT_THROWS(4004, 0, "CSExtKeyUsageSyntax_DERDecode() failed", certificate->GetExtendedKeyUsage());
  }
}

TEST(Certificate, AlternativeNameEncodings) {
  const auto names = [](const std::string& hex) { return Names(*WithExtension("2.5.29.17", DerHex(0x30, hex))); };
  EXPECT_EQ(names(""), "");
  EXPECT_EQ(names("a00b 06022a03 a005 0c03 616263"), "OtherName:1.2.3:616263 ");
  EXPECT_EQ(names("8103 614062 8201 61 8601 75"), "rfc822Name::a@b dNSName::a uniformResourceIdentifier::u ");
  EXPECT_EQ(names("a304 0c02 6869 a503 040107"), "x400Address::6869 ediPartyName::07 ");
  EXPECT_EQ(names("8704 c0000201 8701 05 8803 551d25"), "IpAddress::c0000201 IpAddress::05 registeredID::2.5.29.37 ");
  EXPECT_EQ(names("a402 3000 8201 61"), "dNSName::a ") << "a directory name gives no object";
  EXPECT_EQ(names("8201 61 8201 61"), "dNSName::a dNSName::a ");
  EXPECT_EQ(names("a080 06022a03 a080 0c0161 0000 0000 8201 62"), "OtherName:1.2.3:61 dNSName::b ") << "BER";
  for (const char* broken : {"8201", "a100", "8900", "0c0161", "a000", "8201 61 8a00", "a503 0401", "a300"}) {
    const auto certificate = WithExtension("2.5.29.17", DerHex(0x30, broken));
    EXPECT_THROWS(4004, 0, "CSGeneralNames_DERDecode() failed", certificate->GetSubjectAlternativeNames());
  }
  const auto aliased = WithExtension("2.5.29.17", DerHex(0x30, "8201 61 a009 0603 2a8003 a002 0c00"));
  EXPECT_THROWS(4004, 0, "CSGeneralNames_DERDecode() failed", aliased->GetSubjectAlternativeNames());
}

TEST(Certificate, ATextMayHoldAZeroOctet) {
  const auto certificate = WithExtension("2.5.29.17", DerHex(0x30, DerHex(0x82, "612e6f7267002e6576696c")));
  const OwnedNames names(certificate->GetSubjectAlternativeNames());
  EXPECT_EQ((*names.begin())->GetString(), SecureString("a.org\0.evil", 11));
}

TEST(Certificate, TheObsoleteAlternativeNameCountsOnlyAlone) {
  const std::string a = DerHex(0x30, "8201 61");
  const std::string b = DerHex(0x30, "8201 62");
  CertificateRecipe recipe;
  recipe.extensions = {{"2.5.29.7", b}};
  EXPECT_EQ(Names(*Open(recipe)), "dNSName::b ");
  recipe.extensions = {{"2.5.29.7", b}, {"2.5.29.17", a}};
  EXPECT_EQ(Names(*Open(recipe)), "dNSName::a ");
  recipe.extensions = {{"2.5.29.7", b}, {"2.5.29.17", "0500"}};
  EXPECT_THROWS(4004, 0, "CSGeneralNames_DERDecode() failed", Open(recipe)->GetSubjectAlternativeNames());
}

TEST(Certificate, OfADoubledExtensionTheFirstCounts) {
  CertificateRecipe recipe;
  recipe.extensions = {{"2.5.29.15", "03020780"},
                       {"2.5.29.15", "03020640"},
                       {"2.5.29.17", DerHex(0x30, "8201 61")},
                       {"2.5.29.17", "0500"}};
  const auto certificate = Open(recipe);
  EXPECT_EQ(ToHex(certificate->GetKeyUsage()), "80");
  EXPECT_EQ(Names(*certificate), "dNSName::a ");
}

TEST(Certificate, ThePublicKeyIsMadeOnceAndLent) {
  for (const char* kind : {"RSA:2048", "RSA-PSS:2048"}) {
    CertificateRecipe recipe;
    recipe.key = kind;
    const ByteArray encoded = MakeCertificate(recipe);
    const unsigned char* cursor = encoded.data();
    X509* parsed = d2i_X509(nullptr, &cursor, static_cast<long>(encoded.size()));
    const ASN1_BIT_STRING* bits = X509_get0_pubkey_bitstr(parsed);
    const auto certificate = Open(encoded);
    IPublicKey* key = certificate->GetPublicKey();
    ByteArray octets;
    key->GetEncoded(octets);
    EXPECT_EQ(octets, ByteArray(bits->data, bits->data + bits->length));
    EXPECT_EQ(certificate->GetPublicKey(), key);
    EXPECT_EQ(key->GetAlgorithm()->GetFriendlyName(), "RSA");
    X509_free(parsed);
  }
}

TEST(Certificate, OtherKeysAreRefusedOnlyWhenAskedFor) {
  for (const char* kind : {"EC:P-256", "ED25519"}) {
    CertificateRecipe recipe;
    recipe.key = kind;
    const auto certificate = Open(recipe);
    for (int i = 0; i < 2; ++i) {
      const Caught caught = Catch([&] { certificate->GetPublicKey(); });
      EXPECT_EQ(caught.message, "Error while creating Public Key") << kind;
      EXPECT_EQ(caught.causes.substr(0, 5), std::to_string(caught.id) + " ") << "the identifier is that of the cause";
    }
  }
}

TEST(Certificate, WhatIsNotProvided) {
  const auto certificate = Open(CertificateRecipe());
  ByteArray octets;
  EXPECT_THROWS(4001, 0, "Not Implemented", certificate->Compare(certificate.get()));
  EXPECT_THROWS(4001, 0, "Not Implemented", certificate->GetExtensionValue("2.5.29.15", octets));
  EXPECT_THROWS(4001, 0, "Not Implemented", certificate->ListExtensions(nullptr));
  EXPECT_THROWS(4001, 0, "Not Implemented", certificate->GetHash());
  EXPECT_THROWS(4001, 0, "Not Implemented", certificate->GetSignature());
  EXPECT_THROWS(4001, 0, "Not Implemented", certificate->VerifyTrust(nullptr));
  EXPECT_THROWS(4001, 0, "Not Implemented", certificate->VerifySignature(nullptr));
}

TEST(Certificate, TheTraceOfAFailingGetter) {
  const auto certificate = WithExtension("2.5.29.37", "0500");
  const Trace trace(1UL << 1 | 1UL << 8 | 1UL << 16);
  Catch([&] { certificate->GetExtendedKeyUsage(); });
  EXPECT_EQ(trace.WithoutAddresses(),
            (std::vector<std::string>{
                "8 COpensslRSACertificate::GetExtendedKeyUsage : this=*",
                "8 COpensslRSACertificate::GetExtension : this=*", "16 COpensslRSACertificate::GetExtension",
                "1 COpensslRSACertificate::GetExtendedKeyUsage : CSExtKeyUsageSyntax_DERDecode (err = 412)",
                "16 COpensslRSACertificate::GetExtendedKeyUsage Returns CSExtKeyUsageSyntax_DERDecode() failed"}));
}

}  // namespace
